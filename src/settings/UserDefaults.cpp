#include "settings/UserDefaults.h"

#include "base/AtomicFile.h"
#include "base/NibboLog.h"
#include "base/ThreadCheck.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QLockFile>

#include <cmath>

namespace nibbo {
namespace {

/// A name beside the file that nothing has yet.
QString freeNameFor(const QString& path)
{
    const QString stem = path + QStringLiteral(".broken-") +
                         QDateTime::currentDateTimeUtc().toString(QStringLiteral("yyyyMMdd-HHmmss"));
    QString name = stem;
    for (int number = 2; QFileInfo::exists(name); ++number)
        name = stem + QLatin1Char('-') + QString::number(number);
    return name;
}

} // namespace

UserDefaults::UserDefaults(QString path)
    : m_path(std::move(path))
{
    readFile(Reading::first);
}

bool UserDefaults::readFile(Reading reading)
{
    if (!QFileInfo::exists(m_path)) {
        if (reading == Reading::underLock)
            m_content = {};
        return true;
    }
    const Result<QByteArray> content = readWholeFile(m_path);
    if (!content) {
        NibboLog::log(QStringLiteral("preferences: ") + content.error());
        return false;
    }
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(*content, &error);
    if (document.isObject()) {
        m_content = document.object();
        return true;
    }
    const QString kept = freeNameFor(m_path);
    if (!QFile::copy(m_path, kept) || !QFile::remove(m_path)) {
        NibboLog::log(QStringLiteral("preferences: %1 is not readable (%2) and could not be set aside")
                          .arg(m_path, error.errorString()));
        return false;
    }
    NibboLog::log(
        QStringLiteral("preferences: %1 is not readable (%2); it is kept as %3 and the defaults apply")
            .arg(m_path, error.errorString(), kept));
    return true;
}

std::optional<bool> UserDefaults::boolean(const QString& key) const
{
    const QJsonValue found = m_content.value(key);
    return found.isBool() ? std::optional(found.toBool()) : std::nullopt;
}

std::optional<double> UserDefaults::number(const QString& key) const
{
    const QJsonValue found = m_content.value(key);
    return found.isDouble() ? std::optional(found.toDouble()) : std::nullopt;
}

std::optional<qint64> UserDefaults::integer(const QString& key) const
{
    const std::optional<double> found = number(key);
    if (!found || *found != std::trunc(*found) || std::abs(*found) > 9.0e15)
        return std::nullopt;
    return static_cast<qint64>(*found);
}

std::optional<QString> UserDefaults::text(const QString& key) const
{
    const QJsonValue found = m_content.value(key);
    return found.isString() ? std::optional(found.toString()) : std::nullopt;
}

std::optional<QStringList> UserDefaults::textList(const QString& key) const
{
    const QJsonValue found = m_content.value(key);
    if (!found.isArray())
        return std::nullopt;
    QStringList list;
    for (const QJsonValue& item : found.toArray()) {
        if (!item.isString())
            return std::nullopt;
        list.append(item.toString());
    }
    return list;
}

void UserDefaults::set(const QString& key, const QJsonValue& value)
{
    const Change change{key, value};
    write({&change, 1});
}

void UserDefaults::remove(const QString& key)
{
    set(key, QJsonValue(QJsonValue::Undefined));
}

void UserDefaults::write(std::span<const Change> changes)
{
    assertMainThread();
    if (changes.empty())
        return;
    QDir().mkpath(QFileInfo(m_path).absolutePath());
    QLockFile lock(m_path + QStringLiteral(".lock"));
    // Another process holds it for a millisecond or so; one that hangs must not hang us.
    const bool locked = lock.tryLock(2000);
    if (!locked)
        NibboLog::log(
            QStringLiteral("preferences: %1 stays locked by another process; writing anyway").arg(m_path));
    const bool isReadable = readFile(Reading::underLock);
    const QJsonObject before = m_content;
    // What failed to be written before is still the user's word.
    m_unsaved.insert(m_unsaved.end(), changes.begin(), changes.end());
    for (const auto& [key, value] : m_unsaved) {
        if (value.isUndefined())
            m_content.remove(key);
        else
            m_content.insert(key, value);
    }
    if (!isReadable)
        return;
    if (m_content != before || !QFileInfo::exists(m_path)) {
        const Result<void> written =
            writeAtomically(m_path, QJsonDocument(m_content).toJson(QJsonDocument::Indented));
        if (!written) {
            NibboLog::log(QStringLiteral("preferences: ") + written.error());
            return;
        }
    }
    m_unsaved.clear();
}

} // namespace nibbo
