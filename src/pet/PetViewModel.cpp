#include "pet/PetViewModel.h"

#include "base/NibboLog.h"
#include "base/Random.h"
#include "base/ThreadCheck.h"
#include "settings/Settings.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace nibbo {
namespace {

constexpr Milliseconds bubbleTime(3000);
constexpr Milliseconds reactionTime(1500);
constexpr Milliseconds hoverReactionTime(600);
constexpr Milliseconds bumpTime(400);
constexpr Milliseconds streakTime(2500);
constexpr Milliseconds noticeRest(5000);

const QStringList dragLinesEnglish{QStringLiteral("Yikes!"), QStringLiteral("Whoa——"),
                                   QStringLiteral("Put me down~"), QStringLiteral("Hehe, I'm flying")};
const QStringList dragLinesChinese{QStringLiteral("哎呀！"), QStringLiteral("哇——"),
                                   QStringLiteral("放我下来啦～"), QStringLiteral("嘿嘿，飞起来啦")};

struct ReactionLines
{
    PetState reaction;
    /// The row holds from this streak on; rows of one reaction stand with the longest streak first.
    int fromStreak;
    QStringList english;
    QStringList chinese;
};

const std::vector<ReactionLines>& reactionLines()
{
    static const std::vector<ReactionLines> lines{
        {PetState::reactStartled,
         0,
         {QStringLiteral("!"), QStringLiteral("Whoa!"), QStringLiteral("You startled me!")},
         {QStringLiteral("！"), QStringLiteral("哇！"), QStringLiteral("吓我一跳！")}},
        {PetState::reactGrumpy,
         0,
         {QStringLiteral("Don't bug me…"), QStringLiteral("Go away"), QStringLiteral("Hmph!")},
         {QStringLiteral("别吵我…"), QStringLiteral("走开啦"), QStringLiteral("哼！")}},
        {PetState::reactShoo,
         0,
         {QStringLiteral("I'm busy!"), QStringLiteral("Leave me be~"), QStringLiteral("Shoo, shoo")},
         {QStringLiteral("我在忙！"), QStringLiteral("别烦我～"), QStringLiteral("走开走开")}},
        {PetState::reactHappy,
         5,
         {QStringLiteral("I love you most! ❤"), QStringLiteral("Hehehe~"), QStringLiteral("So happy~")},
         {QStringLiteral("最喜欢你了！❤"), QStringLiteral("嘿嘿嘿～"), QStringLiteral("好幸福～")}},
        {PetState::reactHappy,
         3,
         {QStringLiteral("More pets~"), QStringLiteral("So happy!"), QStringLiteral("Feels nice~")},
         {QStringLiteral("再多摸摸～"), QStringLiteral("好开心！"), QStringLiteral("舒服～")}},
        {PetState::reactHappy,
         0,
         {QStringLiteral("Hehe~"), QStringLiteral("Pet me more~"), QStringLiteral("So happy!")},
         {QStringLiteral("嘿嘿～"), QStringLiteral("再摸摸～"), QStringLiteral("好开心！")}},
        {PetState::reactShy,
         0,
         {QStringLiteral("Oh my…"), QStringLiteral("Stop it~"), QStringLiteral("So shy…")},
         {QStringLiteral("哎呀…"), QStringLiteral("别这样啦～"), QStringLiteral("羞羞…")}},
    };
    return lines;
}

std::vector<PetState> reactionCandidates(PetState base)
{
    switch (base) {
    case PetState::idle:
    case PetState::responding:
    case PetState::coffee:
    case PetState::relaxing:
    case PetState::walking:
        return {PetState::reactHappy, PetState::reactShy};
    case PetState::thinking:
    case PetState::compactingContext:
        return {PetState::reactShoo, PetState::reactStartled};
    case PetState::coding:
    case PetState::reading:
    case PetState::searching:
    case PetState::running:
    case PetState::browsing:
    case PetState::planning:
        return {PetState::reactShoo, PetState::reactGrumpy};
    case PetState::waitingApproval:
    case PetState::waitingInput:
    case PetState::warning:
        return {PetState::reactGrumpy, PetState::reactStartled};
    case PetState::sleeping:
    case PetState::drowsy:
        return {PetState::reactStartled, PetState::reactGrumpy};
    case PetState::success:
    case PetState::dragging:
        return {PetState::reactHappy};
    case PetState::reactStartled:
    case PetState::reactGrumpy:
    case PetState::reactShoo:
    case PetState::reactHappy:
    case PetState::reactShy:
        break;
    }
    return {PetState::reactShy};
}

} // namespace

PetViewModel::PetViewModel(const Clock& clock, Scheduler& scheduler, Random& random,
                           std::function<const Settings&()> settings, QObject* parent)
    : QObject(parent)
    , m_clock(clock)
    , m_scheduler(scheduler)
    , m_random(random)
    , m_settings(std::move(settings))
{}

PetViewModel::~PetViewModel() = default;

bool PetViewModel::paused() const
{
    return m_settings().pauseNibbo;
}

QString PetViewModel::pick(const QStringList& english, const QStringList& chinese) const
{
    const AppLanguage language = m_settings().effectiveLanguage();
    const QStringList& lines = language == AppLanguage::zh ? chinese : english;
    return lines.isEmpty() ? bubbleText(m_state, language)
                           : lines.at(m_random.below(static_cast<int>(lines.size())));
}

QString PetViewModel::neutralStatusText() const
{
    const QString line = bubbleText(m_state, m_settings().effectiveLanguage());
    return m_activeProvider ? m_activeProvider->displayName() + QLatin1String(": ") + line : line;
}

void PetViewModel::render(PetState state, const std::optional<PetBubbleKind>& bubble, bool persistent,
                          const std::optional<AgentProvider>& provider)
{
    assertMainThread();
    if (m_reactionActive && persistent)
        cancelReaction();
    if (m_reactionActive || m_isDragged) {
        m_pendingRender = Render{state, bubble, persistent, provider};
        return;
    }
    // Whatever was parked or set aside is older than this.
    m_pendingRender.reset();
    m_setAside.reset();
    if (m_activeProvider != provider) {
        m_activeProvider = provider;
        Q_EMIT activeProviderChanged();
    }
    const PetState before = m_state;
    if (setState(state) && m_state != before)
        NibboLog::log(QLatin1String("state ") + rawValue(m_state));
    if (bubble)
        showBubble(*bubble, persistent);
    else if (!m_noticeUp || !m_bubbleVisible)
        hideBubble();
}

bool PetViewModel::setState(PetState state)
{
    assertMainThread();
    if (paused() && state != PetState::sleeping && state != PetState::dragging)
        return false;
    applyState(state);
    return true;
}

void PetViewModel::applyState(PetState state)
{
    if (m_state == state)
        return;
    m_state = state;
    Q_EMIT stateChanged(state);
}

/// Leaves a reaction or a drag; whoever was paused meanwhile goes to sleep.
void PetViewModel::returnTo(PetState state)
{
    applyState(paused() && state != PetState::dragging ? PetState::sleeping : state);
}

void PetViewModel::showBubble(const PetBubbleKind& kind, bool persistent)
{
    assertMainThread();
    // Sessions render far more often than what they say changes; only the change is worth a line and a
    // repaint.
    const bool changed = !m_bubbleVisible || m_bubble != kind;
    m_bubble = kind;
    m_bubbleVisible = true;
    m_bubbleStands = persistent;
    m_noticeUp = false;
    if (persistent)
        m_bubbleDismiss.reset();
    else
        m_bubbleDismiss = m_scheduler.after(bubbleTime, [this] { dismissBubble(); });
    if (changed) {
        NibboLog::log(QLatin1String("bubble ") + plainText(kind));
        Q_EMIT bubbleChanged();
    }
}

void PetViewModel::dismissBubble()
{
    // What the notice spoke over still waits; a reaction or a drag brings it back by itself when it ends.
    if (m_setAside && !m_reactionActive && !m_isDragged)
        bringBackStandingBubble();
    else
        hideBubble();
}

/// A card that is hidden for good must not come back by a click on the pet: it would answer nobody.
void PetViewModel::hideBubble()
{
    m_bubbleDismiss.reset();
    m_noticeUp = false;
    m_bubbleStands = false;
    if (m_bubble && std::holds_alternative<ApprovalBubble>(*m_bubble))
        m_bubble.reset();
    if (!std::exchange(m_bubbleVisible, false))
        return;
    Q_EMIT bubbleChanged();
}

void PetViewModel::setAsideStandingBubble()
{
    if (m_bubbleVisible && m_bubbleStands)
        m_setAside = m_bubble;
}

void PetViewModel::bringBackStandingBubble()
{
    if (const auto standing = std::exchange(m_setAside, std::nullopt))
        showBubble(*standing, true);
    else
        hideBubble();
}

void PetViewModel::showNotice(PetState state, const QString& text)
{
    assertMainThread();
    m_lastNoticeAt = m_clock.now();
    if (m_reactionActive)
        cancelReaction();
    if (m_isDragged)
        m_restoreAfterDrag = state;
    else
        setState(state);
    setAsideStandingBubble();
    showBubble(MessageBubble{text}, false);
    m_noticeUp = true;
}

void PetViewModel::speak(const QString& text)
{
    setAsideStandingBubble();
    showBubble(MessageBubble{text}, false);
}

void PetViewModel::toggleBubble()
{
    assertMainThread();
    if (m_bubbleVisible) {
        // Hidden, not gone: a request still waits, and the next click shows its card again.
        m_bubbleDismiss.reset();
        m_bubbleVisible = false;
        m_bubbleStands = false;
        m_noticeUp = false;
        Q_EMIT bubbleChanged();
        return;
    }
    const PetBubbleKind kind = m_bubble.value_or(MessageBubble{neutralStatusText()});
    showBubble(kind, isPersistentState() || std::holds_alternative<ApprovalBubble>(kind));
}

void PetViewModel::petReaction()
{
    assertMainThread();
    const PetState base = isReaction(m_state) ? m_restoreAfterReaction : m_state;
    const std::chrono::nanoseconds now = m_clock.now();
    m_petStreak = m_lastPetAt && now - *m_lastPetAt < streakTime ? m_petStreak + 1 : 1;
    m_lastPetAt = now;

    const std::vector<PetState> candidates = reactionCandidates(base);
    const bool happy =
        std::find(candidates.begin(), candidates.end(), PetState::reactHappy) != candidates.end();
    const PetState reaction =
        m_petStreak >= 3 && happy
            ? PetState::reactHappy
            : candidates[static_cast<std::size_t>(m_random.below(static_cast<int>(candidates.size())))];
    const auto lines = std::find_if(reactionLines().begin(), reactionLines().end(),
                                    [this, reaction](const ReactionLines& row) {
                                        return row.reaction == reaction && m_petStreak >= row.fromStreak;
                                    });
    playReaction(reaction, pick(lines->english, lines->chinese), reactionTime);
}

void PetViewModel::playReaction(PetState reaction, const std::optional<QString>& line, Milliseconds duration)
{
    assertMainThread();
    if (!isReaction(m_state))
        m_restoreAfterReaction = m_state;
    NibboLog::log(rawValue(reaction) + QLatin1String(" (reaction)"));
    const bool began = !std::exchange(m_reactionActive, true);
    setAsideStandingBubble();
    if (line)
        showBubble(MessageBubble{*line}, false);
    applyState(reaction);
    m_reactionWork = m_scheduler.after(duration, [this] { endReaction(); });
    if (began)
        Q_EMIT reactionChanged(true);
}

void PetViewModel::hover()
{
    assertMainThread();
    const std::chrono::nanoseconds now = m_clock.now();
    if (m_reactionActive || !isCalm(m_state) || (m_lastNoticeAt && now - *m_lastNoticeAt < noticeRest))
        return;
    m_lastNoticeAt = now;
    playReaction(PetState::reactShy, std::nullopt, hoverReactionTime);
}

void PetViewModel::endReaction()
{
    m_reactionWork.reset();
    m_reactionActive = false;
    Q_EMIT reactionChanged(false);
    returnTo(m_restoreAfterReaction);
    if (const auto parked = m_isDragged ? std::nullopt : std::exchange(m_pendingRender, std::nullopt))
        render(parked->state, parked->bubble, parked->persistent, parked->provider);
    else
        bringBackStandingBubble();
}

void PetViewModel::cancelReaction()
{
    m_reactionWork.reset();
    m_reactionActive = false;
    Q_EMIT reactionChanged(false);
    returnTo(m_restoreAfterReaction);
}

void PetViewModel::beginDragging()
{
    assertMainThread();
    if (m_reactionActive)
        cancelReaction();
    m_isDragged = true;
    if (m_state != PetState::dragging) {
        m_restoreAfterDrag = m_state;
        setState(PetState::dragging);
    }
    setAsideStandingBubble();
    showBubble(MessageBubble{pick(dragLinesEnglish, dragLinesChinese)}, false);
}

void PetViewModel::endDragging()
{
    assertMainThread();
    m_isDragged = false;
    if (m_reactionActive && m_restoreAfterReaction == PetState::dragging) {
        // The pet was petted in mid-air; the reaction's end finds it on the ground.
        m_restoreAfterReaction = m_restoreAfterDrag;
        return;
    }
    if (m_state != PetState::dragging)
        return;
    returnTo(m_restoreAfterDrag);
    if (const auto parked = std::exchange(m_pendingRender, std::nullopt))
        render(parked->state, parked->bubble, parked->persistent, parked->provider);
    else
        bringBackStandingBubble();
}

void PetViewModel::setFacing(double facing)
{
    assertMainThread();
    if (std::exchange(m_facing, facing) != facing)
        Q_EMIT facingChanged(facing);
}

void PetViewModel::bump(BumpDirection direction)
{
    assertMainThread();
    m_bumpDirection = direction;
    ++m_bumpTrigger;
    m_bumpReset = m_scheduler.after(bumpTime, [this] {
        m_bumpDirection.reset();
        Q_EMIT bumpChanged();
    });
    Q_EMIT bumpChanged();
}

bool PetViewModel::showsCard() const
{
    return m_bubbleVisible && m_bubble && std::holds_alternative<ApprovalBubble>(*m_bubble);
}

void PetViewModel::submitApproval(bool allow)
{
    assertMainThread();
    const std::optional<QUuid> eventId =
        showsCard() ? std::optional(std::get<ApprovalBubble>(*m_bubble).prompt.eventId) : std::nullopt;
    // Hidden first: the answer may bring the next waiting card at once.
    hideBubble();
    if (eventId)
        Q_EMIT approvalSubmitted(*eventId, allow);
}

void PetViewModel::allowAll()
{
    assertMainThread();
    if (!showsCard())
        return;
    submitApproval(true);
    Q_EMIT allowAllRequested();
}

} // namespace nibbo
