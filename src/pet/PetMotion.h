#pragma once

#include "base/Time.h"
#include "pet/BumpDirection.h"

#include <optional>
#include <vector>

namespace nibbo {

/// A place on the desktop in device-independent pixels ("points"), x to the right and y UPWARDS from the
/// bottom left corner of the main screen. Everything in the motion speaks this convention.
struct ScreenPoint
{
    double x = 0;
    double y = 0;
    bool operator==(const ScreenPoint&) const = default;
};

struct ScreenArea
{
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;

    double maxX() const { return x + width; }
    double maxY() const { return y + height; }
    /// The common area in square points; 0 when they do not meet.
    double overlap(const ScreenArea& other) const;
    bool operator==(const ScreenArea&) const = default;
};

/// One screen: all of it, and the part that panels and docks leave free.
struct DesktopScreen
{
    ScreenArea frame;
    ScreenArea visible;
    bool operator==(const DesktopScreen&) const = default;
};

/// What the motion tells its owner.
class PetMotionListener
{
public:
    virtual ~PetMotionListener() = default;
    virtual void panelMoved(ScreenPoint origin) = 0;
    virtual void bumped(BumpDirection direction) = 0;
    /// -1 to the left, +1 to the right.
    virtual void facingChanged(double facing) = 0;
    /// The pet came to rest where it shall be found at the next start.
    virtual void positionToSave(ScreenPoint origin) = 0;
};

/// The physics of the pet's panel, without a window: where it starts, how it trails behind a drag on a damped
/// spring, settles, snaps to an edge, bumps and goes home. Points and time go in, points come out.
/// The owner calls `stepFollow` while `isFollowing`, and `stepAnimation` while `isAnimating`; when both are
/// false nothing needs to tick. One thread.
class PetMotion
{
public:
    static constexpr double panelWidth = 280;
    static constexpr double panelHeight = 360;
    static constexpr double followStepsPerSecond = 90;
    static constexpr double animationStepsPerSecond = 60;
    static constexpr Seconds bumpCooldown{0.4};

    PetMotion(const Clock& clock, PetMotionListener& listener);

    /// Puts the panel at the saved place when some screen shows it there, else at home.
    void restore(std::optional<ScreenPoint> saved);

    /// The attached screens, the main one first. A panel that lost its screen goes home, and returns when the
    /// screen does, unless it was moved meanwhile; one that rests at home stays at home when the free part
    /// changes.
    void setScreens(std::vector<DesktopScreen> screens);
    void setEdgeSnap(bool on) { m_edgeSnap = on; }

    ScreenPoint origin() const { return m_origin; }
    ScreenPoint home() const;
    bool isFollowing() const { return m_target.has_value(); }
    bool isAnimating() const { return m_animation.has_value(); }
    bool isDragging() const { return m_drag.has_value(); }

    /// Somebody else moved the window (a window manager's own keys): the motion goes on from there.
    void panelMovedByOthers(ScreenPoint origin);

    void beginDrag(ScreenPoint pointer);
    void updateDrag(ScreenPoint pointer);
    /// The panel coasts to its target and settles there.
    void endDrag();

    /// One step of the spring; `followStepsPerSecond` of them make a second.
    void stepFollow();
    void stepAnimation();

    /// Back home in 0.3 s.
    void resetPosition();

private:
    struct Drag
    {
        ScreenPoint startPointer;
        ScreenPoint startOrigin;
        ScreenPoint lastPointer;
    };
    struct Edges
    {
        bool left = false;
        bool right = false;
        bool top = false;
        bool bottom = false;
    };
    /// What happens when an animation has arrived.
    enum class Arrival
    {
        save,
        saveAtHome
    };
    struct Animation
    {
        ScreenPoint from;
        ScreenPoint to;
        std::chrono::nanoseconds start{};
        Seconds duration{};
        Arrival arrival{};
    };

    ScreenArea panel() const { return {m_origin.x, m_origin.y, panelWidth, panelHeight}; }
    const DesktopScreen* panelScreen() const;
    bool isOnAnyScreen(ScreenPoint origin) const;
    void moveTo(ScreenPoint origin);
    void save();
    void settle();
    void snapToNearestEdgeIfNeeded();
    void reportBumps();
    void tryBump(BumpDirection direction);
    void animate(ScreenPoint target, Seconds duration, Arrival arrival);
    void arrive(Arrival arrival);

    const Clock& m_clock;
    PetMotionListener& m_listener;
    std::vector<DesktopScreen> m_screens;
    ScreenPoint m_origin{100, 100};
    bool m_edgeSnap = true;
    bool m_atHome = false;
    std::optional<ScreenPoint> m_displacedFrom;

    std::optional<Drag> m_drag;
    std::optional<ScreenPoint> m_target;
    ScreenPoint m_velocity;
    bool m_settling = false;
    Edges m_edges;
    std::optional<std::chrono::nanoseconds> m_lastBumpAt;
    std::optional<Animation> m_animation;
};

} // namespace nibbo
