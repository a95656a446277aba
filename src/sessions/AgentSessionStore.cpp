#include "sessions/AgentSessionStore.h"

#include "approval/TrustEngine.h"
#include "base/Random.h"
#include "base/ThreadCheck.h"
#include "pet/PetViewModel.h"
#include "sessions/AgentActivity.h"
#include "sessions/AgentSummarizer.h"
#include "settings/Settings.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

namespace nibbo {
namespace {

using Nanoseconds = std::chrono::nanoseconds;
using namespace std::chrono_literals;

constexpr Nanoseconds tickInterval = 200ms;
constexpr Nanoseconds stepHold = 600ms;
constexpr std::size_t stepQueueBound = 12;
constexpr Nanoseconds staleTimeOut = 1800s;
constexpr Seconds sleepingHold(9999);
constexpr Seconds forcedDrowsyHold(30);
/// More than anybody runs; what floods us with made-up sessions loses the weakest of them.
constexpr std::size_t sessionBound = 4096;

struct TimeOut
{
    PetState state;
    Nanoseconds limit;
    /// What the session falls back to; without one it ends.
    std::optional<PetState> next;
};

constexpr std::array<TimeOut, 4> timeOuts{{
    {PetState::thinking, 8s, std::nullopt},
    // Compaction that nothing follows falls back to thinking rather than vanishing.
    {PetState::compactingContext, 12s, PetState::thinking},
    {PetState::responding, 3s, std::nullopt},
    {PetState::success, 4s, std::nullopt},
}};

const TimeOut* timeOutOf(PetState state)
{
    const auto found = std::find_if(timeOuts.begin(), timeOuts.end(),
                                    [state](const TimeOut& each) { return each.state == state; });
    return found != timeOuts.end() ? &*found : nullptr;
}

/// The strongest first.
constexpr std::array priorities{
    PetState::waitingApproval, PetState::waitingInput, PetState::warning,    PetState::compactingContext,
    PetState::coding,          PetState::thinking,     PetState::responding, PetState::success,
    PetState::sleeping,        PetState::idle};

int rankOf(PetState state)
{
    return static_cast<int>(std::find(priorities.begin(), priorities.end(), state) - priorities.begin());
}

bool isActive(PetState state)
{
    return state != PetState::idle && state != PetState::sleeping;
}

bool filled(const std::optional<QString>& text)
{
    return text && !text->isEmpty();
}

Nanoseconds toNanoseconds(Seconds time)
{
    return std::chrono::duration_cast<Nanoseconds>(time);
}

/// How long the pet idles before it sleeps; 0 when it never does. An imported file may hold any number.
std::chrono::minutes sleepTime(const Settings& settings)
{
    return std::chrono::minutes(std::clamp<qint64>(settings.idleSleepMinutes, 0, 1'000'000));
}

QString sessionKey(const AgentEvent& event)
{
    return event.provider.rawValue() + QLatin1Char(':') + event.sessionId.value_or(QStringLiteral("default"));
}

} // namespace

AgentSessionStore::AgentSessionStore(PetViewModel& pet, const Clock& clock, Scheduler& scheduler,
                                     Random& random, Ports ports, QObject* parent)
    : QObject(parent)
    , m_pet(pet)
    , m_clock(clock)
    , m_scheduler(scheduler)
    , m_random(random)
    , m_ports(std::move(ports))
{}

AgentSessionStore::~AgentSessionStore() = default;

void AgentSessionStore::start()
{
    assertMainThread();
    m_start = m_clock.now();
    wakeBy(m_start);
}

// ---- Events

void AgentSessionStore::apply(const AgentEvent& event)
{
    assertMainThread();
    resetIdleLife();
    const QString key = sessionKey(event);
    Session* known = find(key);
    if (known != nullptr && known->approvalEventId) {
        // An agent that reminds its user of its own dialog does not say that anybody answered it.
        if (event.type == AgentEventType::inputRequired) {
            recompute();
            return;
        }
        abandonApproval(*known);
    }

    switch (event.type) {
    case AgentEventType::agentStarted:
    case AgentEventType::thinking:
        enqueueOrSetThinking(key, event);
        break;
    case AgentEventType::coding:
        applyTool(key, event);
        break;
    case AgentEventType::contextCompacting:
        setPlainState(key, event, PetState::compactingContext,
                      event.provider.displayName() +
                          inLanguage(u" · Compacting context…", u" · 正在压缩上下文…"));
        break;
    case AgentEventType::responding:
        setPlainState(key, event, PetState::responding, std::nullopt);
        if (filled(event.say))
            summarize(key, event, std::nullopt);
        break;
    case AgentEventType::approvalRequired:
        requestApproval(key, event);
        m_ports.notify(event);
        break;
    case AgentEventType::inputRequired:
        setPlainState(key, event, PetState::waitingInput, event.message);
        break;
    case AgentEventType::taskCompleted:
        setPlainState(key, event, PetState::success, event.message);
        m_ports.notify(event);
        break;
    case AgentEventType::taskFailed:
        setPlainState(key, event, PetState::warning, event.message);
        break;
    case AgentEventType::riskyActionDetected:
        setPlainState(key, event, PetState::warning, event.message);
        m_ports.notify(event);
        break;
    case AgentEventType::agentStopped:
        remove(key);
        break;
    }

    if (Session* session = find(key)) {
        reconsider(*session);
        wakeBy(deadline(*session));
    } else {
        wakeBy(idleDeadline(m_clock.now()));
    }
    recompute();
}

AgentSessionStore::Session* AgentSessionStore::find(const QString& key)
{
    const auto found = m_sessions.find(key);
    return found != m_sessions.end() ? &found->second : nullptr;
}

AgentSessionStore::Session& AgentSessionStore::findOrCreate(const QString& key, const AgentEvent& event,
                                                            PetState state)
{
    if (Session* session = find(key))
        return *session;
    makeRoom();
    Session& session = m_sessions[key];
    session.key = key;
    session.provider = event.provider;
    session.state = session.pose = state;
    session.detail = event.message;
    session.say = event.say;
    session.cwd = event.cwd;
    session.lastUpdate = session.since = m_clock.now();
    session.serial = m_nextSerial++;
    return session;
}

void AgentSessionStore::makeRoom()
{
    if (m_sessions.size() < sessionBound)
        return;
    const auto weakest =
        std::min_element(m_sessions.begin(), m_sessions.end(), [](const auto& one, const auto& other) {
            return stronger(other.second, one.second);
        });
    remove(QString(weakest->first));
}

void AgentSessionStore::remove(const QString& key)
{
    const auto found = m_sessions.find(key);
    if (found == m_sessions.end())
        return;
    abandonApproval(found->second);
    const bool wasBest = m_best == &found->second;
    m_sessions.erase(found);
    if (wasBest)
        choose();
}

void AgentSessionStore::enqueueOrSetThinking(const QString& key, const AgentEvent& event)
{
    const Session* known = find(key);
    if (known != nullptr && !known->pendingSteps.empty())
        return;
    Session& session = findOrCreate(key, event, PetState::thinking);
    session.provider = event.provider;
    setState(session, PetState::thinking, PetState::thinking);
    session.detail = event.message;
    setSay(session, event.say);
    session.command.reset();
    if (event.cwd)
        session.cwd = event.cwd;
    session.awaitingNextStep = false;
    session.lastUpdate = m_clock.now();
}

void AgentSessionStore::applyTool(const QString& key, const AgentEvent& event)
{
    const Phrase phrase = AgentActivity::classify(event.toolName, event.command, event.message,
                                                  m_ports.settings().effectiveLanguage());
    const Step step{phrase.pose, phrase.text};
    if (event.phase == QStringLiteral("post"))
        markToolFinished(key, event, step);
    else
        enqueueStep(key, event, step);
    if (filled(event.say))
        summarize(key, event, step.detail);
}

void AgentSessionStore::enqueueStep(const QString& key, const AgentEvent& event, const Step& step)
{
    Session& session = findOrCreate(key, event, PetState::coding);
    session.provider = event.provider;
    if (event.cwd)
        session.cwd = event.cwd;
    session.awaitingNextStep = false;
    if (filled(event.say))
        setSay(session, event.say);
    const Nanoseconds now = m_clock.now();
    if (session.pendingSteps.empty() && now >= session.stepHoldUntil) {
        show(session, step);
    } else {
        if (session.pendingSteps.size() >= stepQueueBound)
            session.pendingSteps.pop_front();
        session.pendingSteps.push_back(step);
    }
    session.lastUpdate = now;
}

/// The finished tool's pose stays until its hold ends.
void AgentSessionStore::markToolFinished(const QString& key, const AgentEvent& event, const Step& step)
{
    Session* session = find(key);
    if (session == nullptr || (session->state != PetState::coding && session->pendingSteps.empty())) {
        enqueueStep(key, event, step);
        find(key)->awaitingNextStep = true;
        return;
    }
    session->awaitingNextStep = true;
    if (event.cwd)
        session->cwd = event.cwd;
    if (filled(event.say))
        setSay(*session, event.say);
    session->lastUpdate = m_clock.now();
}

void AgentSessionStore::setPlainState(const QString& key, const AgentEvent& event, PetState state,
                                      const std::optional<QString>& detail)
{
    Session& session = findOrCreate(key, event, state);
    flushQueue(session);
    setState(session, state, state);
    if (detail)
        session.detail = detail;
    if (event.cwd)
        session.cwd = event.cwd;
    if (state == PetState::responding && filled(event.say))
        setSay(session, event.say);
    session.lastUpdate = m_clock.now();
}

void AgentSessionStore::requestApproval(const QString& key, const AgentEvent& event)
{
    setPlainState(key, event, PetState::waitingApproval, std::nullopt);
    Session& session = *find(key);
    session.command = event.command.value_or(event.message);
    session.approvalEventId = event.id;
    session.promptId = QUuid::createUuid();
    session.promptMessage = event.message;
    session.toolName = event.toolName;
    session.serial = m_nextSerial++;
    ++m_waitingApprovals;
}

void AgentSessionStore::setState(Session& session, PetState state, PetState pose)
{
    if (session.state != state)
        session.since = m_clock.now();
    session.state = state;
    session.pose = pose;
}

void AgentSessionStore::flushQueue(Session& session)
{
    session.pendingSteps.clear();
    session.stepHoldUntil = distantPast;
    session.awaitingNextStep = false;
}

void AgentSessionStore::show(Session& session, const Step& step)
{
    setState(session, PetState::coding, step.pose);
    session.detail = step.detail;
    session.stepHoldUntil = m_clock.now() + stepHold;
}

/// A summary belongs to the words that it sums up and goes with them.
void AgentSessionStore::setSay(Session& session, const std::optional<QString>& say)
{
    if (session.say != say)
        session.summary.reset();
    session.say = say;
}

void AgentSessionStore::summarize(const QString& key, const AgentEvent& event,
                                  const std::optional<QString>& detail)
{
    if (m_ports.summarizer != nullptr)
        m_ports.summarizer->summarize(key, *event.say, detail);
}

void AgentSessionStore::setSummary(const QString& sessionKey, const QString& text, const QString& forSay)
{
    assertMainThread();
    Session* session = find(sessionKey);
    if (session == nullptr || session->say != forSay)
        return;
    session->summary = text;
    recompute();
}

// ---- Approvals

void AgentSessionStore::abandonApproval(Session& session)
{
    const std::optional<QUuid> eventId = std::exchange(session.approvalEventId, std::nullopt);
    if (!eventId)
        return;
    --m_waitingApprovals;
    m_ports.abandonApproval(*eventId);
}

void AgentSessionStore::resolveApproval(const QUuid& eventId, bool allow)
{
    assertMainThread();
    const auto found = std::find_if(m_sessions.begin(), m_sessions.end(), [&eventId](const auto& entry) {
        return entry.second.approvalEventId == eventId;
    });
    if (found == m_sessions.end())
        return;
    Session& session = found->second;
    session.approvalEventId.reset();
    --m_waitingApprovals;
    if (allow) {
        const Phrase phrase = AgentActivity::classify(
            session.toolName, session.command, session.promptMessage, m_ports.settings().effectiveLanguage());
        show(session, {phrase.pose, phrase.text});
    } else {
        // The agent is told no and thinks of something else.
        setState(session, PetState::thinking, PetState::thinking);
        session.detail.reset();
    }
    session.lastUpdate = m_clock.now();
    reconsider(session);
    wakeBy(deadline(session));
    recompute();
}

// ---- Time

/// Only the steps of 0.2 s at which something is due are taken: an idle pet must not wake the machine five
/// times a second. A wake too early, or for something that has changed since, finds nothing to do and looks
/// for the next.
void AgentSessionStore::wakeBy(std::optional<Time> due)
{
    if (!due || !m_start)
        return;
    const Time now = m_clock.now();
    const Time soonest = std::max(*due, now + Time(1));
    const auto steps = (soonest - *m_start + tickInterval - Time(1)) / tickInterval;
    const Time at = *m_start + std::max<Time::rep>(steps, 1) * tickInterval;
    if (m_wakeAt && *m_wakeAt <= at)
        return;
    m_wakeAt = at;
    m_timer = m_scheduler.after(std::chrono::ceil<Milliseconds>(at - now), [this] { tick(); });
}

void AgentSessionStore::tick()
{
    m_wakeAt.reset();
    const Time now = m_clock.now();
    bool changed = std::exchange(m_renderAtTick, false);
    changed = drainSteps(now) || changed;
    changed = expireSessions(now) || changed;
    if (!hasActive())
        changed = advanceIdleLife(now) || changed;
    if (changed) {
        choose();
        recompute();
    }
    std::optional<Time> next = idleDeadline(now);
    for (const auto& [key, session] : m_sessions) {
        const Time due = deadline(session);
        next = next ? std::min(*next, due) : due;
    }
    wakeBy(next);
}

bool AgentSessionStore::drainSteps(Time now)
{
    bool changed = false;
    for (auto& [key, session] : m_sessions) {
        if (now < session.stepHoldUntil)
            continue;
        if (!session.pendingSteps.empty()) {
            const Step step = std::move(session.pendingSteps.front());
            session.pendingSteps.pop_front();
            show(session, step);
            changed = true;
        } else if (session.awaitingNextStep && session.state == PetState::coding) {
            session.awaitingNextStep = false;
            setState(session, PetState::coding, PetState::thinking);
            session.detail = bubbleText(PetState::thinking, m_ports.settings().effectiveLanguage());
            changed = true;
        }
    }
    return changed;
}

bool AgentSessionStore::expireSessions(Time now)
{
    std::vector<QString> ended;
    bool changed = false;
    for (auto& [key, session] : m_sessions) {
        const Time elapsed = now - session.lastUpdate;
        const TimeOut* timeOut = timeOutOf(session.state);
        if (timeOut != nullptr && elapsed > timeOut->limit && timeOut->next) {
            setState(session, *timeOut->next, *timeOut->next);
            session.lastUpdate = now;
            changed = true;
        } else if ((timeOut != nullptr && elapsed > timeOut->limit) || elapsed > staleTimeOut) {
            ended.push_back(key);
        }
    }
    for (const QString& key : ended)
        remove(key);
    return changed || !ended.empty();
}

AgentSessionStore::Time AgentSessionStore::deadline(const Session& session) const
{
    const TimeOut* timeOut = timeOutOf(session.state);
    Time due = session.lastUpdate + (timeOut != nullptr ? timeOut->limit : staleTimeOut) + Time(1);
    if (!session.pendingSteps.empty() || (session.awaitingNextStep && session.state == PetState::coding))
        due = std::min(due, session.stepHoldUntil);
    return due;
}

// ---- Idle life

bool AgentSessionStore::hasActive() const
{
    return std::any_of(m_sessions.begin(), m_sessions.end(),
                       [](const auto& entry) { return isActive(entry.second.state); });
}

void AgentSessionStore::resetIdleLife()
{
    m_idleSince.reset();
    m_idlePhase = PetState::idle;
    m_idlePhaseUntil = distantPast;
    m_drowsinessForced = false;
}

bool AgentSessionStore::advanceIdleLife(Time now)
{
    const Settings& settings = m_ports.settings();
    if (settings.pauseNibbo)
        return setIdlePhase(PetState::sleeping, now, sleepingHold);
    if (!m_idleSince)
        m_idleSince = now;
    const Seconds sleepAfter = sleepTime(settings);
    const Seconds half = sleepAfter / 2;
    const Seconds elapsed = now - *m_idleSince;
    const bool sleeps = sleepAfter > Seconds(0);
    if (sleeps && elapsed >= sleepAfter)
        return setIdlePhase(PetState::sleeping, now, sleepingHold);
    if (sleeps && elapsed >= half && !std::exchange(m_drowsinessForced, true) &&
        m_idlePhase != PetState::drowsy)
        return setIdlePhase(PetState::drowsy, now, forcedDrowsyHold);
    if (now < m_idlePhaseUntil)
        return false;
    const PetState next =
        nextIdlePhase(sleeps && elapsed > half ? std::min((elapsed - half) / half, 1.0) : -1);
    const auto [from, to] = next == PetState::idle     ? std::pair(5.0, 9.0)
                            : next == PetState::drowsy ? std::pair(4.0, 6.0)
                                                       : std::pair(4.0, 7.0);
    return setIdlePhase(next, now, Seconds(m_random.between(from, to)));
}

/// `drowsiness` grows from 0 to 1 as sleep nears; below 0 the pet is wide awake.
PetState AgentSessionStore::nextIdlePhase(double drowsiness)
{
    std::vector<PetState> pool;
    if (drowsiness >= 0)
        pool.assign(1 + static_cast<std::size_t>(std::floor(3 * drowsiness)), PetState::drowsy);
    for (const PetState phase : {PetState::idle, PetState::coffee, PetState::relaxing, PetState::walking}) {
        if (phase != m_idlePhase)
            pool.push_back(phase);
    }
    return pool[static_cast<std::size_t>(m_random.below(static_cast<int>(pool.size())))];
}

bool AgentSessionStore::setIdlePhase(PetState phase, Time now, Seconds holdFor)
{
    m_idlePhaseUntil = now + toNanoseconds(holdFor);
    return std::exchange(m_idlePhase, phase) != phase;
}

std::optional<AgentSessionStore::Time> AgentSessionStore::idleDeadline(Time now) const
{
    if (hasActive())
        return std::nullopt;
    const Settings& settings = m_ports.settings();
    if (settings.pauseNibbo || !m_idleSince)
        return m_idlePhase == PetState::sleeping ? std::nullopt : std::optional(now);
    const Time sleepAfter = sleepTime(settings);
    if (sleepAfter <= Time(0))
        return m_idlePhaseUntil;
    const Time asleep = *m_idleSince + sleepAfter;
    if (m_idlePhase == PetState::sleeping && m_idlePhaseUntil > now && now >= asleep)
        return std::nullopt;
    const Time due = std::min(m_idlePhaseUntil, asleep);
    return m_drowsinessForced ? due : std::min(due, *m_idleSince + sleepAfter / 2);
}

void AgentSessionStore::settingsChanged(const Settings& before)
{
    assertMainThread();
    const Settings& settings = m_ports.settings();
    if (before.pauseNibbo == settings.pauseNibbo && before.idleSleepMinutes == settings.idleSleepMinutes)
        return;
    const Time now = m_clock.now();
    if (m_idlePhase == PetState::sleeping || before.pauseNibbo) {
        resetIdleLife();
        // Whoever wakes the pet sees it awake before it goes about.
        m_idleSince = now;
        setIdlePhase(PetState::idle, now, Seconds(m_random.between(5.0, 9.0)));
    }
    // Put off to the next step of time, so that the pet's own word on the pause comes first.
    m_renderAtTick = true;
    wakeBy(now);
}

// ---- What the pet shows

bool AgentSessionStore::stronger(const Session& one, const Session& other)
{
    const int rankOfOne = rankOf(one.state);
    const int rankOfOther = rankOf(other.state);
    if (rankOfOne != rankOfOther)
        return rankOfOne < rankOfOther;
    if (one.lastUpdate != other.lastUpdate)
        return one.lastUpdate > other.lastUpdate;
    // Of two at the same moment the older session stays; but the newest request is on the card.
    return one.state == PetState::waitingApproval ? one.serial > other.serial : one.serial < other.serial;
}

void AgentSessionStore::reconsider(Session& session)
{
    if (m_best == &session && rankOf(session.state) > m_bestRank)
        choose();
    else if (m_best == nullptr || (m_best != &session && stronger(session, *m_best)))
        m_best = &session;
    m_bestRank = rankOf(m_best->state);
}

void AgentSessionStore::choose()
{
    m_best = nullptr;
    for (auto& [key, session] : m_sessions) {
        if (m_best == nullptr || stronger(session, *m_best))
            m_best = &session;
    }
    m_bestRank = m_best != nullptr ? rankOf(m_best->state) : 0;
}

void AgentSessionStore::recompute()
{
    if (m_best != nullptr)
        m_pet.render(m_best->pose, bubble(*m_best), isPersistent(m_best->state), m_best->provider);
    else
        renderIdleLife();
    Q_EMIT sessionsChanged();
}

void AgentSessionStore::renderIdleLife()
{
    m_pet.render(m_idlePhase, std::nullopt, false, std::nullopt);
}

QString AgentSessionStore::inLanguage(const char16_t* english, const char16_t* chinese) const
{
    return text(m_ports.settings().effectiveLanguage(), english, chinese);
}

/// The summary, else what the agent said, else nothing.
QString AgentSessionStore::words(const Session& session) const
{
    for (const std::optional<QString>& each : {session.summary, session.say}) {
        if (each && !each->trimmed().isEmpty())
            return *each;
    }
    return {};
}

std::optional<PetBubbleKind> AgentSessionStore::bubble(const Session& session) const
{
    const QString said = words(session);
    const QString name = session.provider.displayName();
    const auto narration = [&session, &said](const QString& otherwise) {
        return NarrationBubble{session.provider, std::nullopt, said.isEmpty() ? otherwise : said};
    };
    switch (session.state) {
    case PetState::thinking:
        return narration(name + inLanguage(u" is thinking…", u" 思考中…"));
    case PetState::coding:
        if (!filled(session.detail))
            return narration(name + inLanguage(u" is working…", u" 工作中…"));
        if (said.isEmpty())
            return narration(name + QStringLiteral(" · ") + *session.detail);
        return NarrationBubble{session.provider, session.detail, said};
    case PetState::compactingContext:
    case PetState::success:
    case PetState::warning:
        return MessageBubble{filled(session.detail)
                                 ? *session.detail
                                 : bubbleText(session.state, m_ports.settings().effectiveLanguage())};
    case PetState::responding:
        return narration(name + inLanguage(u" responded.", u" 已回答。"));
    case PetState::waitingInput:
        return NarrationBubble{
            session.provider, std::nullopt,
            name + inLanguage(u" needs your input in the terminal.", u" 需要你在终端里输入。")};
    case PetState::waitingApproval: {
        const QString command = session.command.value_or(session.detail.value_or(QString()));
        const bool risky = TrustEngine::isDangerous(command, m_ports.settings().trustPolicy());
        return ApprovalBubble{{session.promptId, session.approvalEventId.value_or(QUuid()), session.provider,
                               name + inLanguage(u" wants to continue", u" 想要继续"), command,
                               risky ? ApprovalRisk::risky : ApprovalRisk::normal, session.promptMessage},
                              m_waitingApprovals - 1};
    }
    default:
        return std::nullopt;
    }
}

std::vector<AgentSessionStore::Row> AgentSessionStore::rows() const
{
    assertMainThread();
    std::vector<const Session*> sorted;
    for (const auto& [key, session] : m_sessions)
        sorted.push_back(&session);
    std::sort(sorted.begin(), sorted.end(),
              [](const Session* one, const Session* other) { return stronger(*one, *other); });
    const Time now = m_clock.now();
    std::vector<Row> rows;
    for (const Session* session : sorted) {
        const QString said = words(*session);
        const bool asks = session->state == PetState::waitingApproval;
        const QString detail = session->detail.value_or(QString());
        const QString cwd = session->cwd.value_or(QString());
        rows.push_back({session->key, session->provider, AgentActivity::basename(cwd), cwd, session->state,
                        !said.isEmpty() ? said
                        : asks          ? session->command.value_or(detail)
                                        : detail,
                        m_clock.wallNow().addMSecs(
                            -std::chrono::duration_cast<Milliseconds>(now - session->since).count()),
                        asks || session->state == PetState::waitingInput});
    }
    return rows;
}

} // namespace nibbo
