#include "intake/AgentDetector.h"

#include "agents/ProviderRegistry.h"

#include <QCoreApplication>
#include <QStringList>

#include <pthread.h>

#include <algorithm>

namespace nibbo {
namespace {

/// What the tool is called on disk and among the processes; the first name is the likeliest.
QStringList executableNames(const AgentProvider& provider)
{
    const ProviderSpec* spec = provider.spec();
    return spec && !spec->executableNames.isEmpty() ? spec->executableNames
                                                    : QStringList{provider.rawValue()};
}

/// Our own programs, the launcher and the shells that run it carry the names of agents in their arguments and
/// must not count.
bool isOurOwn(const RunningProcess& process)
{
    static const QStringList marks{QStringLiteral("Nibbo"), QStringLiteral("nibbo-bridge"),
                                   QStringLiteral("nibbo-cleaner"), QStringLiteral("/.nibbo/")};
    const QString& line = process.commandLine;
    if (process.id == QCoreApplication::applicationPid() ||
        std::any_of(marks.begin(), marks.end(), [&line](const QString& mark) { return line.contains(mark); }))
        return true;
    const QStringView program = QStringView(line).left(line.indexOf(QLatin1Char(' ')));
    return program.mid(program.lastIndexOf(QLatin1Char('/')) + 1) == QLatin1String("nibbo");
}

/// Whether the name stands anywhere in the line and a word ends with it: "codex" is in "/bin/codex --help"
/// and in "node codex.js", but not in "codexy".
bool mentions(const QString& line, const QString& name)
{
    const auto continuesWord = [&line](qsizetype at) {
        return at < line.size() &&
               (line[at].isLetterOrNumber() || line[at].isMark() || line[at] == QLatin1Char('_'));
    };
    for (qsizetype at = line.indexOf(name); at >= 0; at = line.indexOf(name, at + 1)) {
        if (!continuesWord(at + name.size()))
            return true;
    }
    return false;
}

/// The process table of one moment, without what is ours.
class Snapshot final
{
public:
    explicit Snapshot(ProcessList& list)
        : m_processes(list.processes())
    {
        std::erase_if(m_processes, isOurOwn);
    }

    bool runs(const AgentProvider& provider) const
    {
        const QStringList names = executableNames(provider);
        return std::any_of(m_processes.begin(), m_processes.end(), [&names](const RunningProcess& process) {
            return std::any_of(names.begin(), names.end(), [&process](const QString& name) {
                return mentions(process.commandLine, name);
            });
        });
    }

private:
    std::vector<RunningProcess> m_processes;
};

} // namespace

AgentDetector::AgentDetector(ExecutableFinder finder, ProcessList& processes, EnabledCheck isEnabled)
    : m_finder(std::move(finder))
    , m_processes(processes)
    , m_isEnabled(std::move(isEnabled))
{}

AgentDetector::~AgentDetector()
{
    stop();
}

void AgentDetector::start(Milliseconds interval, Milliseconds firstDelay)
{
    if (m_thread.joinable() || m_stopping)
        return;
    m_thread = std::thread([this, interval, firstDelay] {
        ::pthread_setname_np(::pthread_self(), "nibbo.detector");
        auto next = std::chrono::steady_clock::now() + firstDelay;
        std::unique_lock lock(m_mutex);
        while (!m_wake.wait_until(lock, next, [this] { return m_stopping; })) {
            lock.unlock();
            scan();
            // After a pause of the machine the missed scans are not made up for.
            next = std::max(next + interval, std::chrono::steady_clock::now());
            lock.lock();
        }
    });
}

void AgentDetector::stop()
{
    {
        const std::lock_guard lock(m_mutex);
        m_stopping = true;
    }
    m_wake.notify_all();
    if (m_thread.joinable())
        m_thread.join();
}

void AgentDetector::scan()
{
    const Snapshot now(m_processes);
    for (const AgentProvider& provider : AgentProvider::allCases()) {
        if (!m_isEnabled(provider))
            continue;
        const bool wasLive = m_live.contains(provider.rawValue());
        if (now.runs(provider)) {
            if (wasLive)
                continue;
            m_live.insert(provider.rawValue());
            if (onStatus)
                onStatus(provider, AgentStatus::running);
            report(provider, AgentEventType::agentStarted, QStringLiteral(" started"));
            continue;
        }
        if (onStatus)
            onStatus(provider, installedStatus(provider));
        if (m_live.remove(provider.rawValue()))
            report(provider, AgentEventType::agentStopped, QStringLiteral(" stopped"));
    }
}

void AgentDetector::report(const AgentProvider& provider, AgentEventType type, const QString& what) const
{
    if (!onChange)
        return;
    AgentEvent event;
    event.provider = provider;
    event.type = type;
    event.message = provider.displayName() + what;
    onChange(event);
}

std::optional<QString> AgentDetector::commandPath(const AgentProvider& provider) const
{
    for (const QString& name : executableNames(provider)) {
        if (auto path = m_finder.find(name))
            return path;
    }
    return std::nullopt;
}

bool AgentDetector::isRunning(const AgentProvider& provider) const
{
    return Snapshot(m_processes).runs(provider);
}

AgentStatus AgentDetector::installedStatus(const AgentProvider& provider) const
{
    return commandPath(provider) ? AgentStatus::connected : AgentStatus::notFound;
}

std::vector<std::pair<AgentProvider, AgentStatus>> AgentDetector::statuses() const
{
    const Snapshot now(m_processes);
    std::vector<std::pair<AgentProvider, AgentStatus>> result;
    for (const AgentProvider& provider : AgentProvider::allCases())
        result.emplace_back(provider, now.runs(provider) ? AgentStatus::running : installedStatus(provider));
    return result;
}

} // namespace nibbo
