#include "hooks/HookBackups.h"

#include "hooks/SafeWriter.h"

#include <QRegularExpression>

#include <algorithm>
#include <utility>

namespace nibbo {
namespace {

/// The time, and the place within its second.
std::pair<QString, int> order(const QString& set)
{
    return {set.left(15), set.size() > 16 ? set.mid(16).toInt() : 1};
}

bool isSetName(const QString& name)
{
    static const QRegularExpression pattern(QStringLiteral("^\\d{8}-\\d{6}(-\\d+)?$"));
    return pattern.match(name).hasMatch();
}

} // namespace

HookBackups::HookBackups(FileSystem& files, SafeWriter& writer, const Clock& clock, QString directory)
    : m_files(files)
    , m_writer(writer)
    , m_clock(clock)
    , m_directory(std::move(directory))
{}

Result<void> HookBackups::begin()
{
    const QString stamp = m_clock.wallNow().toLocalTime().toString(QStringLiteral("yyyyMMdd-HHmmss"));
    QString name = stamp;
    for (int place = 2; m_files.facts(setPath(name)); ++place)
        name = stamp + QLatin1Char('-') + QString::number(place);
    if (Result<void> made = m_files.makeDirectory(setPath(name)); !made)
        return made;
    m_set = name;
    return {};
}

Result<QString> HookBackups::store(const ProviderSpec& spec, const QByteArray& content, mode_t mode)
{
    if (m_set.isEmpty()) {
        if (Result<void> begun = begin(); !begun)
            return begun.failure();
    }
    const QString path = pathIn(m_set, spec);
    if (Result<void> stored = m_writer.replace(path, content, mode); !stored)
        return stored.failure();
    return path;
}

QString HookBackups::backupName(const ProviderSpec& spec)
{
    return spec.id + QLatin1Char('-') +
           spec.configRelativePath.mid(spec.configRelativePath.lastIndexOf(QLatin1Char('/')) + 1);
}

QString HookBackups::pathIn(const QString& set, const ProviderSpec& spec) const
{
    return setPath(set) + QLatin1Char('/') + backupName(spec);
}

QStringList HookBackups::sets() const
{
    QStringList result = m_files.names(m_directory);
    result.removeIf([](const QString& name) { return !isSetName(name); });
    std::sort(result.begin(), result.end(),
              [](const QString& a, const QString& b) { return order(a) > order(b); });
    return result;
}

std::optional<QString> HookBackups::latest() const
{
    const Result<QByteArray> content = m_files.read(m_directory + QStringLiteral("/latest.txt"));
    if (!content)
        return std::nullopt;
    const QString name = QString::fromUtf8(*content).trimmed();
    // A name that is no name of ours could lead anywhere.
    return isSetName(name) ? std::optional(name) : std::nullopt;
}

Result<void> HookBackups::makeLatest()
{
    return m_writer.replace(m_directory + QStringLiteral("/latest.txt"), m_set.toUtf8(), 0600);
}

bool HookBackups::isRestored(const QString& set) const
{
    return m_files.facts(setPath(set) + QStringLiteral("/.restored")).has_value();
}

Result<void> HookBackups::markRestored(const QString& set)
{
    if (isRestored(set) || !m_files.facts(setPath(set)))
        return {};
    return m_files.create(setPath(set) + QStringLiteral("/.restored"), {}, 0600);
}

} // namespace nibbo
