#include "hooks/HookWatch.h"

#include "base/NibboLog.h"

#include <QFile>
#include <QFileInfo>

#include <sys/stat.h>

#include <utility>

namespace nibbo {
namespace {

constexpr Milliseconds debounce(1000);
/// So many repairs within the window are a quarrel; then the delay is the long one.
constexpr std::size_t quarrel = 4;
constexpr std::chrono::seconds quarrelWindow(120);
constexpr Milliseconds longDelay(60'000);

} // namespace

HookWatch::HookWatch(std::function<HookInstaller()> makeInstaller, Scheduler& scheduler, const Clock& clock)
    : m_makeInstaller(std::move(makeInstaller))
    , m_scheduler(scheduler)
    , m_clock(clock)
{
    connect(&m_watcher, &QFileSystemWatcher::fileChanged, this, &HookWatch::onFile);
    connect(&m_watcher, &QFileSystemWatcher::directoryChanged, this, &HookWatch::onFolder);
}

void HookWatch::start()
{
    bind();
    NibboLog::log(QStringLiteral("hook guardian: watching %1 config file(s)").arg(m_watcher.files().size()));
}

HookWatch::Version HookWatch::versionOf(const QString& path)
{
    struct stat info = {};
    if (::stat(QFile::encodeName(path).constData(), &info) != 0)
        return {};
    return {info.st_ino, info.st_size, info.st_mtim.tv_sec * 1'000'000'000LL + info.st_mtim.tv_nsec};
}

void HookWatch::bind()
{
    const QStringList files = m_makeInstaller().watchedConfigFiles();
    QStringList folders;
    for (const QString& file : files) {
        if (QFileInfo(file).isSymLink())
            folders.append(QFileInfo(file).path());
    }
    // What is watched already stays so: binding it anew would miss what happens meanwhile.
    QStringList stale;
    for (const QString& path : m_watcher.files() + m_watcher.directories()) {
        if (!files.contains(path) && !folders.contains(path))
            stale.append(path);
    }
    if (!stale.isEmpty())
        m_watcher.removePaths(stale);
    const QHash<QString, Version> before = std::exchange(m_files, {});
    bool missed = false;
    for (const QString& file : files) {
        const bool fresh = !m_watcher.files().contains(file);
        if (fresh && !m_watcher.addPath(file))
            continue;
        const Version version = versionOf(file);
        missed = missed || (fresh && before.contains(file) && before.value(file) != version);
        m_files.insert(file, version);
    }
    for (const QString& folder : std::as_const(folders)) {
        if (!m_watcher.directories().contains(folder))
            m_watcher.addPath(folder);
    }
    if (missed)
        scheduleCheck();
}

void HookWatch::onFile(const QString& path)
{
    scheduleCheck();
    Q_EMIT changed(path);
}

void HookWatch::onFolder(const QString& folder)
{
    // Agents write much beside their settings; only a file that is watched counts.
    for (auto file = m_files.begin(); file != m_files.end(); ++file) {
        if (QFileInfo(file.key()).path() != folder || versionOf(file.key()) == file.value())
            continue;
        file.value() = versionOf(file.key());
        onFile(file.key());
        return;
    }
}

Milliseconds HookWatch::delay()
{
    while (!m_repairs.empty() && m_clock.now() - m_repairs.front() > quarrelWindow)
        m_repairs.pop_front();
    return m_repairs.size() < quarrel ? debounce : longDelay;
}

void HookWatch::scheduleCheck()
{
    const Milliseconds wait = delay();
    // In a quarrel the other side must not be able to put the check off for ever.
    if (m_pending && wait == longDelay)
        return;
    m_pending = m_scheduler.after(wait, [this] { check(); });
}

void HookWatch::check()
{
    m_pending.reset();
    // As the check finds them: what changes from here on and is not watched is seen by the binding.
    for (auto file = m_files.begin(); file != m_files.end(); ++file)
        file.value() = versionOf(file.key());
    HookInstaller installer = m_makeInstaller();
    if (installer.isRemoved()) {
        NibboLog::log(QStringLiteral("hook guardian: the hooks were removed on purpose, nothing to guard"));
        bind();
        return;
    }
    const HookHealth health = installer.ensureHealthy(HookInstaller::Removed::leaveOut);
    if (health == HookHealth::repaired) {
        m_repairs.push_back(m_clock.now());
        if (m_repairs.size() == quarrel)
            NibboLog::log(
                QStringLiteral("hook guardian: another program keeps taking the hooks out; checking "
                               "less often"));
    }
    bind();
    Q_EMIT checked(health);
}

} // namespace nibbo
