// Watches the agents' configuration files and repairs the wiring shortly after a change.
//
// 1. Every existing file of an enabled agent is watched; of one that is a symbolic link, its folder too,
// since
//    a save may replace the link.
// 2. A change starts a delay of one second, and every further change starts it anew.
// 3. Then one check repairs what is missing, and the watches are bound again: a save by rename ends a watch,
//    and files come and go.
// 4. Where another program takes our entries out again and again, the delay grows, so that two programs do
//    not write one file for ever. What the user removed on purpose stays removed.
// Lives on the thread that made it, with that thread's scheduler; `HookGuardian` gives it one of its own.
#pragma once

#include "base/Time.h"
#include "hooks/HookInstaller.h"

#include <QFileSystemWatcher>
#include <QHash>
#include <QObject>
#include <QString>

#include <deque>
#include <functional>

namespace nibbo {

class HookWatch final : public QObject
{
    Q_OBJECT
public:
    /// `makeInstaller` is asked at every pass, so that it sees the present settings. What is handed in
    /// outlives the watch.
    HookWatch(std::function<HookInstaller()> makeInstaller, Scheduler& scheduler, const Clock& clock);

    void start();

Q_SIGNALS:
    /// A watched file changed; the check comes later.
    void changed(const QString& path);
    void checked(HookHealth health);

private:
    /// Tells one version of a file from the next.
    struct Version
    {
        quint64 inode = 0;
        qint64 size = -1;
        qint64 modified = 0;

        bool operator==(const Version&) const = default;
    };
    static Version versionOf(const QString& path);

    void bind();
    void onFile(const QString& path);
    void onFolder(const QString& folder);
    void scheduleCheck();
    void check();
    Milliseconds delay();

    std::function<HookInstaller()> m_makeInstaller;
    Scheduler& m_scheduler;
    const Clock& m_clock;
    QFileSystemWatcher m_watcher;
    QHash<QString, Version> m_files;
    std::deque<std::chrono::nanoseconds> m_repairs;
    ScheduledHandle m_pending;
};

} // namespace nibbo
