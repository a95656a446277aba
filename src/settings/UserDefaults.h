#pragma once

#include "base/Result.h"

#include <QJsonObject>
#include <QString>
#include <QStringList>

#include <optional>
#include <span>
#include <utility>
#include <vector>

namespace nibbo {

/// The flat key-value file of preferences: Booleans, integers, doubles, texts and lists of texts; an absent
/// key differs from false. Every write re-reads the file under a lock between processes and merges, so that
/// two writers lose nothing. A file that cannot be understood is set aside under another name and logged; it
/// is never overwritten. Main thread. A write that fails is logged and stays in effect for the life of the
/// process.
class UserDefaults final
{
public:
    explicit UserDefaults(QString path);

    std::optional<bool> boolean(const QString& key) const;
    std::optional<qint64> integer(const QString& key) const;
    std::optional<double> number(const QString& key) const;
    std::optional<QString> text(const QString& key) const;
    std::optional<QStringList> textList(const QString& key) const;
    QJsonValue value(const QString& key) const { return m_content.value(key); }

    void set(const QString& key, const QJsonValue& value);
    void remove(const QString& key);

    using Change = std::pair<QString, QJsonValue>;
    /// Several keys in one write; an undefined value removes its key.
    void write(std::span<const Change> changes);

    const QString& path() const { return m_path; }

private:
    enum class Reading
    {
        first,
        underLock
    };
    /// False when the file is there and cannot be read or set aside: then it must not be replaced.
    bool readFile(Reading reading);

    QString m_path;
    QJsonObject m_content;
    /// What could not be written yet.
    std::vector<Change> m_unsaved;
};

} // namespace nibbo
