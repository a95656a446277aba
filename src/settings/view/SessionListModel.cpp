#include "settings/view/SessionListModel.h"

#include "pet/PetState.h"

#include <algorithm>

namespace nibbo {

QString ageText(qint64 seconds, AppLanguage language)
{
    seconds = std::max<qint64>(seconds, 0);
    if (seconds < 60)
        return text(language, u"%1 s", u"%1 秒").arg(seconds);
    if (seconds < 3600)
        return text(language, u"%1 min", u"%1 分钟").arg(seconds / 60);
    return text(language, u"%1 h %2 min", u"%1 小时 %2 分钟").arg(seconds / 3600).arg(seconds / 60 % 60);
}

void SessionListModel::setRows(std::vector<AgentSessionStore::Row> rows)
{
    const auto key = [](const AgentSessionStore::Row& row) { return row.key; };
    const bool sameSessions = std::ranges::equal(rows, m_rows, {}, key, key);
    if (!sameSessions) {
        beginResetModel();
        m_rows = std::move(rows);
        endResetModel();
        return;
    }
    m_rows = std::move(rows);
    if (!m_rows.empty())
        Q_EMIT dataChanged(index(0), index(rowCount() - 1));
}

void SessionListModel::setPresent(const QDateTime& now, AppLanguage language)
{
    m_now = now;
    m_language = language;
    if (!m_rows.empty())
        Q_EMIT dataChanged(index(0), index(rowCount() - 1));
}

int SessionListModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_rows.size());
}

QVariant SessionListModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid())
        return {};
    const AgentSessionStore::Row& row = m_rows.at(static_cast<std::size_t>(index.row()));
    switch (role) {
    case Qt::DisplayRole:
        return row.provider.displayName();
    case Qt::AccessibleTextRole: {
        QStringList parts{row.provider.displayName(), row.folder, bubbleText(row.state, m_language),
                          row.words, ageText(row.since.secsTo(m_now), m_language)};
        parts.removeAll(QString());
        return parts.join(QStringLiteral(", "));
    }
    case Qt::ToolTipRole:
        // Told apart from markup, which a tool tip would read.
        return QStringLiteral("<p style='white-space:pre-wrap'>%1</p>")
            .arg((row.cwd.isEmpty() ? row.words : row.cwd + QLatin1Char('\n') + row.words).toHtmlEscaped());
    case keyRole:
        return row.key;
    case providerRole:
        return row.provider.rawValue();
    case placeRole:
        return row.folder;
    case stateRole:
        return bubbleText(row.state, m_language);
    case wordsRole:
        return row.words.simplified();
    case ageRole:
        return ageText(row.since.secsTo(m_now), m_language);
    case waitingRole:
        return row.waiting;
    default:
        return {};
    }
}

QModelIndex SessionListModel::indexOf(const QString& key) const
{
    const auto row = std::ranges::find(m_rows, key, &AgentSessionStore::Row::key);
    return row == m_rows.end() ? QModelIndex() : index(static_cast<int>(row - m_rows.begin()));
}

} // namespace nibbo
