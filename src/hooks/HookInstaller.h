// Wires the hook bridge into the enabled agents' own configuration, takes it out again, and says whether each
// agent is wired. A value on top of what is on the disk: it holds no state, so one may be made for each
// operation and on any thread. Every operation that writes holds one lock between processes and threads, and
// first completes what an interrupted one left half-written. Failures are worded for the user.
#pragma once

#include "base/AppPaths.h"
#include "base/Result.h"
#include "base/Time.h"
#include "hooks/FileSystem.h"
#include "hooks/GeneratedFiles.h"

#include <QByteArray>
#include <QMap>
#include <QString>
#include <QStringList>

#include <vector>

namespace nibbo {

struct ProviderSpec;

/// Everything that the installer is told; nothing is taken from the environment.
struct HookEnvironment
{
    AppPaths paths;
    /// The folder above "bin" on Linux, the application bundle on macOS: where the helper is.
    QString installPrefix;
    LauncherPlatform platform = LauncherPlatform::linuxDesktop;
    /// By lower-case provider id; where there is none the provider's `confirmed` decides.
    QMap<QString, bool> enabled;
};

/// A file of another tool as it was before one of our installs.
struct HookBackup
{
    /// Name of the set, "yyyyMMdd-HHmmss" in local time; "-2" and so on when a second saw more than one.
    QString set;
    QString providerId;
    QString path;
    qint64 size = 0;

    bool operator==(const HookBackup&) const = default;
};

enum class HookHealth
{
    healthy,
    repaired,
    failed
};

class HookInstaller final
{
public:
    /// `files` and `clock` must outlive the installer.
    HookInstaller(HookEnvironment environment, FileSystem& files, const Clock& clock);

    /// For every enabled provider, and out of every disabled one. Stops at the first failure; providers that
    /// were done by then stay done.
    Result<void> install();
    /// Out of every provider; the files that were backed up come back as they were. Goes on after a failure
    /// and reports the first that left a provider wired.
    Result<void> uninstall();
    /// Whether `uninstall` was the last word: until the next install nobody but the user's own start of the
    /// application shall put the hooks back.
    bool isRemoved() const;
    /// By provider id, for every provider of the registry.
    QMap<QString, bool> status() const;
    /// Writes the launcher again and installs when an enabled provider is not wired. Logs what came of it.
    /// The guardian leaves hooks out that were removed on purpose; it asks under the lock, since a removal
    /// may be under way.
    enum class Removed
    {
        installAgain,
        leaveOut
    };
    HookHealth ensureHealthy(Removed removed = Removed::installAgain);
    /// The existing configuration files of the enabled providers, in registry order.
    QStringList watchedConfigFiles() const;

    /// The providers whose files are edited in place and backed up, in registry order.
    static std::vector<const ProviderSpec*> specs();
    bool isEnabled(const ProviderSpec& spec) const;

    /// All backups, the newest set first.
    std::vector<HookBackup> backups() const;
    /// Puts one file back as the backup has it. What the file holds now goes into a backup set of its own.
    Result<void> restore(const HookBackup& backup);

private:
    HookEnvironment m_environment;
    FileSystem& m_files;
    const Clock& m_clock;
};

} // namespace nibbo
