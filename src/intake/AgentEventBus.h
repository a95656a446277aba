#pragma once

#include "agents/AgentEvent.h"
#include "agents/AgentStatus.h"
#include "base/AppPaths.h"
#include "base/Time.h"
#include "intake/AgentDetector.h"
#include "intake/LocalSocketServer.h"
#include "settings/Settings.h"

#include <QByteArray>
#include <QHash>
#include <QObject>
#include <QUuid>

#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

namespace nibbo {

/// The hub between the socket and the rest of the application: writes every event to the agent log, lets the
/// trust engine judge permission requests, keeps the responders of those that wait for the user, and hands
/// the events to the main thread in the order in which they came. Lives on the main thread; it never fails,
/// and a log that cannot be written keeps no event from the pet.
class AgentEventBus final : public QObject
{
    Q_OBJECT
public:
    /// The settings of the moment; called on the socket's and the detector's threads.
    using SettingsSnapshot = std::function<std::shared_ptr<const Settings>()>;

    /// The clock and the process list must outlive the bus.
    AgentEventBus(AppPaths paths, SettingsSnapshot settings, ProcessList& processes, const Clock& clock,
                  QObject* parent = nullptr);
    ~AgentEventBus() override;

    /// Starts the detector and the socket. Once; the listeners are to be connected before.
    void start();
    /// Ends both threads; whoever waits for a verdict is let go without one.
    void stop();

    /// Takes one event in. On the socket's thread, which alone writes the agent log; in a test without a
    /// socket on whatever thread stands in for it.
    void publish(const AgentEvent& event, const LocalSocketServer::Responder& onApproval = {});

    /// Gives the user's verdict to the request that waits under this id, at most once; an id that waits no
    /// more does nothing. Any thread.
    void resolveApproval(const QUuid& eventId, bool allow);
    /// Lets a request go without a verdict, so that its agent asks the user by itself. Any thread.
    void abandonApproval(const QUuid& eventId);
    /// How many requests wait for the user. Any thread.
    int waitingApprovals() const;

    /// The last event that was delivered.
    const std::optional<AgentEvent>& lastEvent() const { return m_lastEvent; }
    const AgentDetector& detector() const { return m_detector; }
    const LocalSocketServer& socketServer() const { return m_socketServer; }

Q_SIGNALS:
    /// An event reached the main thread.
    void eventDelivered(const nibbo::AgentEvent& event);
    /// The detector looked at a provider.
    void statusDetected(const QString& providerId, nibbo::AgentStatus status);

private:
    void take(const AgentEvent& event, const LocalSocketServer::Responder& onApproval);
    void settle();
    void forwardToPet(const AgentEvent& event);
    void wakePet();
    void deliver();
    void noteForLog(const AgentEvent& event, AppLanguage language);
    LocalSocketServer::Responder takeResponder(const QUuid& eventId);

    AppPaths m_paths;
    SettingsSnapshot m_settings;
    const Clock& m_clock;
    /// Asking the system takes longer than everything else about an event; it is asked once.
    QString m_systemLanguage;
    QString m_logFile;
    AgentDetector m_detector;
    LocalSocketServer m_socketServer;
    std::optional<AgentEvent> m_lastEvent;

    // On the socket's thread only: the lines that the log does not hold yet, and the date that the last of
    // them begins with.
    QByteArray m_logLines;
    qint64 m_logSecond = -1;
    QByteArray m_logDate;

    mutable std::mutex m_lock;
    QHash<QUuid, LocalSocketServer::Responder> m_approvalResponders;

    /// On their way to the main thread.
    std::mutex m_forwardedLock;
    std::vector<AgentEvent> m_forwarded;
};

} // namespace nibbo
