#pragma once

#include "base/Time.h"
#include "pet/BumpDirection.h"
#include "pet/PetBubbleKind.h"
#include "pet/PetState.h"

#include <QObject>
#include <QStringList>

#include <functional>
#include <optional>

namespace nibbo {

class Random;
struct Settings;

/// The one object that the pet's views draw from. It arbitrates between what the sessions show, the pet's
/// answers to the pointer, and a drag: a drag or a short reaction is never interrupted by a session that
/// wants nothing of the user; what it wanted to show is parked and shown afterwards.
///
/// A reaction or a drag may speak over a bubble that stands (one that waits for the user); when it is over
/// the standing bubble comes back. Main thread only. The clock, scheduler, chance and settings outlive it.
class PetViewModel final : public QObject
{
    Q_OBJECT

public:
    PetViewModel(const Clock& clock, Scheduler& scheduler, Random& random,
                 std::function<const Settings&()> settings, QObject* parent = nullptr);
    ~PetViewModel() override;

    PetState state() const { return m_state; }
    bool bubbleVisible() const { return m_bubbleVisible; }
    /// What the bubble holds, or held last; nothing before the first one and after an answered card.
    const std::optional<PetBubbleKind>& bubble() const { return m_bubble; }
    /// Whose session the pet shows.
    const std::optional<AgentProvider>& activeProvider() const { return m_activeProvider; }
    /// Horizontal facing: -1 left, +1 right.
    double facing() const { return m_facing; }
    /// Counts the bumps, so that a view can tell a new one.
    int bumpTrigger() const { return m_bumpTrigger; }
    const std::optional<BumpDirection>& bumpDirection() const { return m_bumpDirection; }
    bool reactionActive() const { return m_reactionActive; }
    bool isPersistentState() const { return isPersistent(m_state); }
    /// Whose pet it is at the moment and what it does, in one line.
    QString neutralStatusText() const;

    /// One line by chance, of the list of the effective language; the state's own line when that is empty.
    QString pick(const QStringList& english, const QStringList& chinese) const;

    /// Shows what a session, or the idle life, is at. `persistent` cuts a reaction short.
    void render(PetState state, const std::optional<PetBubbleKind>& bubble, bool persistent,
                const std::optional<AgentProvider>& provider);
    /// A bubble that is not persistent goes after 3 s.
    void showBubble(const PetBubbleKind& kind, bool persistent);
    /// A short word of the application itself, with the pose that goes with it. A render without a bubble
    /// does not take it off the screen before its time.
    void showNotice(PetState state, const QString& text);
    /// A passing word; a bubble that waits for the user comes back after it.
    void speak(const QString& text);
    /// A reaction that is under way plays on.
    void toggleBubble();
    /// False when the pause refused it: while paused the pet only sleeps or is dragged.
    bool setState(PetState state);

    void petReaction();
    void playReaction(PetState reaction, const std::optional<QString>& line, Milliseconds duration);
    /// The pointer came over the pet: a calm pet turns shy, at most once every 5 s.
    void hover();

    void beginDragging();
    /// What was parked during the drag is shown now; otherwise the pet goes back to what it did before, its
    /// standing bubble returns, and the words of the drag go.
    void endDragging();
    void setFacing(double facing);
    void bump(BumpDirection direction);

    /// Answers the card on screen and hides the bubble; without a card it only hides the bubble.
    void submitApproval(bool allow);
    /// Grants the card on screen and asks for the mode that asks no more; nothing without a card.
    void allowAll();

    /// For whatever of the views leads to the settings.
    void requestSettings() { Q_EMIT openSettingsRequested(); }

Q_SIGNALS:
    void stateChanged(nibbo::PetState state);
    /// The content or the visibility changed.
    void bubbleChanged();
    void activeProviderChanged();
    void facingChanged(double facing);
    /// A bump began or its direction was cleared.
    void bumpChanged();
    void reactionChanged(bool active);
    /// The user's verdict on the request with this event id; given once.
    void approvalSubmitted(const QUuid& eventId, bool allow);
    void allowAllRequested();
    void openSettingsRequested();

private:
    struct Render
    {
        PetState state;
        std::optional<PetBubbleKind> bubble;
        bool persistent;
        std::optional<AgentProvider> provider;
    };

    bool paused() const;
    void applyState(PetState state);
    void returnTo(PetState state);
    void hideBubble();
    void dismissBubble();
    void setAsideStandingBubble();
    void bringBackStandingBubble();
    void endReaction();
    void cancelReaction();
    bool showsCard() const;

    const Clock& m_clock;
    Scheduler& m_scheduler;
    Random& m_random;
    std::function<const Settings&()> m_settings;

    PetState m_state = PetState::idle;
    std::optional<PetBubbleKind> m_bubble;
    bool m_bubbleVisible = false;
    bool m_bubbleStands = false;
    bool m_noticeUp = false;
    /// A standing bubble that a reaction or a drag speaks over.
    std::optional<PetBubbleKind> m_setAside;
    ScheduledHandle m_bubbleDismiss;

    std::optional<AgentProvider> m_activeProvider;
    double m_facing = 1;
    int m_bumpTrigger = 0;
    std::optional<BumpDirection> m_bumpDirection;
    ScheduledHandle m_bumpReset;

    /// By the pointer: the pose alone may also be chosen from the menu, and holds nothing up.
    bool m_isDragged = false;
    bool m_reactionActive = false;
    ScheduledHandle m_reactionWork;
    PetState m_restoreAfterReaction = PetState::idle;
    PetState m_restoreAfterDrag = PetState::idle;
    int m_petStreak = 0;
    std::optional<std::chrono::nanoseconds> m_lastPetAt;
    std::optional<std::chrono::nanoseconds> m_lastNoticeAt;
    std::optional<Render> m_pendingRender;
};

} // namespace nibbo
