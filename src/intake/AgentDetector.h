#pragma once

#include "agents/AgentEvent.h"
#include "agents/AgentProvider.h"
#include "agents/AgentStatus.h"
#include "base/Time.h"
#include "intake/ExecutableFinder.h"
#include "platform/ProcessList.h"

#include <QSet>
#include <QString>

#include <condition_variable>
#include <functional>
#include <mutex>
#include <optional>
#include <thread>
#include <utility>
#include <vector>

namespace nibbo {

/// Fills the gaps that hooks leave: looks every few seconds for each agent tool on disk and among the running
/// processes, reports a status per tool, and turns one that starts or stops into an event. One pass over the
/// process table a scan, on a thread of its own, "nibbo.detector".
class AgentDetector final
{
public:
    /// Whether the user wants to hear of a provider; called on the detector's thread.
    using EnabledCheck = std::function<bool(const AgentProvider& provider)>;

    /// `processes` must outlive the detector.
    AgentDetector(ExecutableFinder finder, ProcessList& processes, EnabledCheck isEnabled);
    ~AgentDetector();
    AgentDetector(const AgentDetector&) = delete;
    AgentDetector& operator=(const AgentDetector&) = delete;

    /// The synthetic started and stopped events, and what each scan found. Called on the detector's thread;
    /// set them before `start`.
    std::function<void(const AgentEvent& event)> onChange;
    std::function<void(const AgentProvider& provider, AgentStatus status)> onStatus;

    /// Scans for the first time after `firstDelay`, then every `interval`. Once in the detector's life.
    void start(Milliseconds interval, Milliseconds firstDelay = Milliseconds(1000));
    /// Waits for a scan that is under way.
    void stop();

    /// One look at all enabled providers. On the detector's thread once it is started.
    void scan();

    /// Where the tool is installed. Any thread.
    std::optional<QString> commandPath(const AgentProvider& provider) const;
    /// Any thread.
    bool isRunning(const AgentProvider& provider) const;
    /// What is true right now for every provider, enabled or not, in the registry's order; one pass over the
    /// process table. Any thread.
    std::vector<std::pair<AgentProvider, AgentStatus>> statuses() const;

private:
    AgentStatus installedStatus(const AgentProvider& provider) const;
    void report(const AgentProvider& provider, AgentEventType type, const QString& what) const;

    ExecutableFinder m_finder;
    ProcessList& m_processes;
    EnabledCheck m_isEnabled;
    /// Providers that the last scan saw running; on the detector's thread only.
    QSet<QString> m_live;

    std::thread m_thread;
    std::mutex m_mutex;
    std::condition_variable m_wake;
    bool m_stopping = false;
};

} // namespace nibbo
