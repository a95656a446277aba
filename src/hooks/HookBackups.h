// The backups of other tools' files: one folder per run below the backups directory, named by the local time,
// and "latest.txt" with the name of the set that an uninstall goes back to. A backup is whole or not there.
// Sets are never removed. Used under the installer's lock.
#pragma once

#include "agents/ProviderRegistry.h"
#include "base/Result.h"
#include "base/Time.h"
#include "hooks/FileSystem.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <optional>

namespace nibbo {

class SafeWriter;

class HookBackups final
{
public:
    /// What is handed in must outlive the object.
    HookBackups(FileSystem& files, SafeWriter& writer, const Clock& clock, QString directory);

    /// Makes the set of this run; called once or by the first `store`.
    Result<void> begin();
    /// The name of this run's set; empty before it is begun.
    const QString& set() const { return m_set; }
    /// Into this run's set, in place of an earlier one for the same provider. Gives the path.
    Result<QString> store(const ProviderSpec& spec, const QByteArray& content, mode_t mode);

    /// The id, "-" and the last part of the configuration path.
    static QString backupName(const ProviderSpec& spec);
    QString pathIn(const QString& set, const ProviderSpec& spec) const;

    /// The newest first.
    QStringList sets() const;
    std::optional<QString> latest() const;
    Result<void> makeLatest();
    /// Whether an uninstall has gone back to this set already.
    bool isRestored(const QString& set) const;
    Result<void> markRestored(const QString& set);

private:
    QString setPath(const QString& set) const { return m_directory + QLatin1Char('/') + set; }

    FileSystem& m_files;
    SafeWriter& m_writer;
    const Clock& m_clock;
    QString m_directory;
    QString m_set;
};

} // namespace nibbo
