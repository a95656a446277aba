#pragma once

#include "base/Language.h"
#include "sessions/AgentSessionStore.h"

#include <QAbstractListModel>

namespace nibbo {

/// The live sessions, the strongest first, in the words of a language.
class SessionListModel final : public QAbstractListModel
{
    Q_OBJECT
public:
    enum Role
    {
        keyRole = Qt::UserRole,
        providerRole,
        placeRole,
        stateRole,
        wordsRole,
        ageRole,
        waitingRole
    };

    using QAbstractListModel::QAbstractListModel;

    void setRows(std::vector<AgentSessionStore::Row> rows);
    /// Ages are counted up to `now`.
    void setPresent(const QDateTime& now, AppLanguage language);

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QModelIndex indexOf(const QString& key) const;

private:
    std::vector<AgentSessionStore::Row> m_rows;
    QDateTime m_now;
    AppLanguage m_language = AppLanguage::en;
};

/// "12 s", "3 min", "2 h 5 min", and the same in Chinese.
QString ageText(qint64 seconds, AppLanguage language);

} // namespace nibbo
