#pragma once

#include "agents/AgentEvent.h"
#include "base/Time.h"
#include "pet/PetBubbleKind.h"
#include "pet/PetState.h"

#include <QDateTime>
#include <QObject>

#include <deque>
#include <functional>
#include <limits>
#include <optional>
#include <unordered_map>
#include <vector>

namespace nibbo {

class AgentSummarizer;
class PetViewModel;
class Random;
struct Settings;

/// Owns the knowledge of what every watched agent is doing, shows the most urgent of it on the pet, and plays
/// the pet's idle life when nobody works. Main thread only; nothing is kept over a restart and nothing fails.
///
/// Decided here, where the agents leave it open:
/// - An answered request shows the tool at work when it was allowed, and thinking when it was denied.
/// - A tool that has finished while nothing follows yet is drawn thinking once its step has had its time; the
///   session stays at work, because an agent often thinks longer than a thinking session lives.
/// - A session has one request at a time. Any later event of it but its own reminder that it waits for input
///   means that the user answered in the terminal (nobody tells us), so the request is abandoned.
/// - Of several sessions that wait, the newest request is on the card and the others are counted.
/// - The pet turns drowsy for 30 s when half of the time to its sleep has passed.
class AgentSessionStore final : public QObject
{
    Q_OBJECT

public:
    /// What the store asks of others; every call comes on the main thread.
    struct Ports
    {
        std::function<const Settings&()> settings;
        /// A request, a finished task or a risky action: worth a notification if the user wants them.
        std::function<void(const AgentEvent& event)> notify;
        /// A request that will never be answered here: its connection can be closed without a verdict.
        std::function<void(const QUuid& eventId)> abandonApproval;
        /// May be null.
        AgentSummarizer* summarizer = nullptr;
    };

    /// One session as a list shows it.
    struct Row
    {
        QString key;
        AgentProvider provider;
        /// The last part of the working directory; empty when unknown.
        QString folder;
        QString cwd;
        PetState state;
        /// What the agent said or does, in its own words; plain text.
        QString words;
        /// Since when it is in that state.
        QDateTime since;
        /// It waits for the user.
        bool waiting;

        bool operator==(const Row&) const = default;
    };

    /// All of them outlive the store.
    AgentSessionStore(PetViewModel& pet, const Clock& clock, Scheduler& scheduler, Random& random,
                      Ports ports, QObject* parent = nullptr);
    ~AgentSessionStore() override;

    /// Begins the time-outs and the idle life. Time is looked at in steps of 0.2 s from here on, but only at
    /// those steps at which something is due.
    void start();
    void apply(const AgentEvent& event);
    /// Dropped when the agent has said something else since.
    void setSummary(const QString& sessionKey, const QString& text, const QString& forSay);
    /// The request has been answered: its session leaves `waitingApproval`. Unknown ids do nothing.
    void resolveApproval(const QUuid& eventId, bool allow);
    /// To be called after every change of the settings, with those before it.
    void settingsChanged(const Settings& before);

    bool hasActive() const;
    /// The strongest first.
    std::vector<Row> rows() const;

Q_SIGNALS:
    void sessionsChanged();

private:
    using Time = std::chrono::nanoseconds;
    static constexpr Time distantPast{std::numeric_limits<Time::rep>::min()};

    struct Step
    {
        PetState pose;
        QString detail;
    };

    struct Session
    {
        QString key;
        AgentProvider provider{QString()};
        /// Decides priority, bubble and time-outs.
        PetState state = PetState::idle;
        /// What the pet is drawn in.
        PetState pose = PetState::idle;
        std::optional<QString> detail;
        std::optional<QString> say;
        std::optional<QString> summary;
        std::optional<QString> command;
        std::optional<QString> cwd;
        std::optional<QUuid> approvalEventId;
        Time lastUpdate{};
        std::deque<Step> pendingSteps;
        Time stepHoldUntil = distantPast;
        bool awaitingNextStep = false;

        /// The waiting request beyond its command.
        QUuid promptId;
        QString promptMessage;
        std::optional<QString> toolName;
        /// Order of birth, or of the request while one waits.
        quint64 serial = 0;
        /// When it came into its state.
        Time since{};
    };

    Session* find(const QString& key);
    Session& findOrCreate(const QString& key, const AgentEvent& event, PetState state);
    void remove(const QString& key);
    void makeRoom();

    void enqueueOrSetThinking(const QString& key, const AgentEvent& event);
    void enqueueStep(const QString& key, const AgentEvent& event, const Step& step);
    void markToolFinished(const QString& key, const AgentEvent& event, const Step& step);
    void applyTool(const QString& key, const AgentEvent& event);
    void requestApproval(const QString& key, const AgentEvent& event);
    void setPlainState(const QString& key, const AgentEvent& event, PetState state,
                       const std::optional<QString>& detail);
    void setState(Session& session, PetState state, PetState pose);
    static void flushQueue(Session& session);
    void show(Session& session, const Step& step);
    void setSay(Session& session, const std::optional<QString>& say);
    void abandonApproval(Session& session);
    void summarize(const QString& key, const AgentEvent& event, const std::optional<QString>& detail);

    void tick();
    bool drainSteps(Time now);
    bool expireSessions(Time now);
    bool advanceIdleLife(Time now);
    bool setIdlePhase(PetState phase, Time now, Seconds holdFor);
    PetState nextIdlePhase(double drowsiness);
    void resetIdleLife();
    Time deadline(const Session& session) const;
    std::optional<Time> idleDeadline(Time now) const;
    void wakeBy(std::optional<Time> due);

    static bool stronger(const Session& one, const Session& other);
    /// What a change of one session means for the choice of the shown one.
    void reconsider(Session& session);
    void choose();
    void recompute();
    void renderIdleLife();
    std::optional<PetBubbleKind> bubble(const Session& session) const;
    QString words(const Session& session) const;
    QString inLanguage(const char16_t* english, const char16_t* chinese) const;

    PetViewModel& m_pet;
    const Clock& m_clock;
    Scheduler& m_scheduler;
    Random& m_random;
    Ports m_ports;

    std::unordered_map<QString, Session> m_sessions;
    /// The strongest session, kept up with every change so that an event does not cost a walk over all.
    Session* m_best = nullptr;
    int m_bestRank = 0;
    int m_waitingApprovals = 0;
    quint64 m_nextSerial = 1;

    std::optional<Time> m_idleSince;
    PetState m_idlePhase = PetState::idle;
    Time m_idlePhaseUntil = distantPast;
    bool m_drowsinessForced = false;

    std::optional<Time> m_start;
    std::optional<Time> m_wakeAt;
    ScheduledHandle m_timer;
    bool m_renderAtTick = false;
};

} // namespace nibbo
