#include "pet/PetMotion.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace nibbo {
namespace {

constexpr double springStrength = 0.55;
constexpr double damping = 0.78;
constexpr double settleDistance = 0.6;
constexpr double settleSpeed = 0.5;
constexpr double homeMargin = 24;
constexpr double snapZone = 36;
constexpr double snapMargin = 12;
constexpr double facingThreshold = 0.5;
constexpr Seconds snapDuration{0.18};
constexpr Seconds homeDuration{0.3};
constexpr Seconds shortestAnimation{0.05};

double distance(ScreenPoint a, ScreenPoint b)
{
    return std::hypot(a.x - b.x, a.y - b.y);
}

/// Where one axis of a panel comes to rest: beside the near edge, else beside the far one, else where it is.
double snapped(double low, double length, double freeLow, double freeLength)
{
    const double freeHigh = freeLow + freeLength;
    if (std::abs(low - freeLow) < snapZone)
        return freeLow + snapMargin;
    if (std::abs(freeHigh - (low + length)) < snapZone)
        return freeHigh - length - snapMargin;
    return low;
}

} // namespace

double ScreenArea::overlap(const ScreenArea& other) const
{
    const double w = std::min(maxX(), other.maxX()) - std::max(x, other.x);
    const double h = std::min(maxY(), other.maxY()) - std::max(y, other.y);
    return w > 0 && h > 0 ? w * h : 0;
}

PetMotion::PetMotion(const Clock& clock, PetMotionListener& listener)
    : m_clock(clock)
    , m_listener(listener)
{}

void PetMotion::restore(std::optional<ScreenPoint> saved)
{
    m_atHome = !saved || !isOnAnyScreen(*saved);
    if (m_atHome && saved)
        m_displacedFrom = saved;
    moveTo(m_atHome ? home() : *saved);
}

ScreenPoint PetMotion::home() const
{
    if (m_screens.empty())
        return {100, 100};
    const ScreenArea& visible = m_screens.front().visible;
    return {visible.maxX() - panelWidth - homeMargin, visible.y + homeMargin};
}

void PetMotion::setScreens(std::vector<DesktopScreen> screens)
{
    if (screens == m_screens)
        return;
    m_screens = std::move(screens);
    if (m_animation && m_animation->arrival == Arrival::saveAtHome)
        m_animation->to = home();
    // Between two monitors there may be none at all for a moment; a drag or an animation ends by itself.
    if (m_screens.empty() || isFollowing() || isAnimating())
        return;
    if (m_displacedFrom && isOnAnyScreen(*m_displacedFrom)) {
        m_atHome = false;
        moveTo(*std::exchange(m_displacedFrom, std::nullopt));
    } else if (!isOnAnyScreen(m_origin)) {
        if (!m_atHome)
            m_displacedFrom = m_origin;
        m_atHome = true;
        moveTo(home());
    } else if (m_atHome) {
        moveTo(home());
    }
}

void PetMotion::panelMovedByOthers(ScreenPoint origin)
{
    if (isFollowing() || isAnimating())
        return;
    m_origin = origin;
    m_atHome = false;
    m_displacedFrom.reset();
}

void PetMotion::beginDrag(ScreenPoint pointer)
{
    m_drag = Drag{pointer, m_origin, pointer};
    m_target = m_origin;
    m_settling = false;
    m_velocity = {};
    m_edges = {};
    m_atHome = false;
    m_displacedFrom.reset();
}

void PetMotion::updateDrag(ScreenPoint pointer)
{
    if (!m_drag)
        return;
    m_target = ScreenPoint{m_drag->startOrigin.x + pointer.x - m_drag->startPointer.x,
                           m_drag->startOrigin.y + pointer.y - m_drag->startPointer.y};
    const double dx = pointer.x - m_drag->lastPointer.x;
    if (std::abs(dx) > facingThreshold)
        m_listener.facingChanged(dx < 0 ? -1 : 1);
    m_drag->lastPointer = pointer;
}

void PetMotion::endDrag()
{
    if (!m_drag)
        return;
    m_settling = true;
    m_drag.reset();
}

void PetMotion::stepFollow()
{
    if (!m_target)
        return;
    m_velocity.x = (m_velocity.x + (m_target->x - m_origin.x) * springStrength) * damping;
    m_velocity.y = (m_velocity.y + (m_target->y - m_origin.y) * springStrength) * damping;
    moveTo({m_origin.x + m_velocity.x, m_origin.y + m_velocity.y});
    if (m_settling && distance(m_origin, *m_target) < settleDistance &&
        std::hypot(m_velocity.x, m_velocity.y) < settleSpeed) {
        settle();
        return;
    }
    if (m_drag && !m_settling)
        reportBumps();
}

void PetMotion::settle()
{
    moveTo(*std::exchange(m_target, std::nullopt));
    m_velocity = {};
    m_settling = false;
    if (m_edgeSnap)
        snapToNearestEdgeIfNeeded();
    save();
}

void PetMotion::reportBumps()
{
    const DesktopScreen* screen = panelScreen();
    if (!screen)
        return;
    const ScreenArea frame = panel();
    const ScreenArea& visible = screen->visible;
    // The pet stands on the panel's lower edge, so only there it has to be pushed beyond the border to feel
    // it.
    const Edges now{frame.x <= visible.x + 1, frame.maxX() >= visible.maxX() - 1,
                    frame.maxY() >= visible.maxY() - 1, frame.y <= visible.y - 1};
    const Edges before = std::exchange(m_edges, now);
    if (now.left && !before.left)
        tryBump(BumpDirection::left);
    if (now.right && !before.right)
        tryBump(BumpDirection::right);
    if (now.top && !before.top)
        tryBump(BumpDirection::top);
    if (now.bottom && !before.bottom)
        tryBump(BumpDirection::bottom);
}

void PetMotion::tryBump(BumpDirection direction)
{
    const auto now = m_clock.now();
    if (m_lastBumpAt && now - *m_lastBumpAt <= bumpCooldown)
        return;
    m_lastBumpAt = now;
    m_listener.bumped(direction);
}

void PetMotion::snapToNearestEdgeIfNeeded()
{
    const DesktopScreen* screen = panelScreen();
    if (!screen && !m_screens.empty())
        screen = &m_screens.front();
    if (!screen)
        return;
    const ScreenArea& visible = screen->visible;
    const ScreenPoint to{snapped(m_origin.x, panelWidth, visible.x, visible.width),
                         snapped(m_origin.y, panelHeight, visible.y, visible.height)};
    if (to == m_origin)
        return;
    animate(to, snapDuration, Arrival::save);
}

void PetMotion::resetPosition()
{
    animate(home(), homeDuration, Arrival::saveAtHome);
}

void PetMotion::animate(ScreenPoint target, Seconds duration, Arrival arrival)
{
    if (distance(m_origin, target) <= 0.5) {
        moveTo(target);
        arrive(arrival);
        return;
    }
    m_animation = Animation{m_origin, target, m_clock.now(), std::max(duration, shortestAnimation), arrival};
}

void PetMotion::stepAnimation()
{
    if (!m_animation)
        return;
    const Seconds elapsed = m_clock.now() - m_animation->start;
    const double t = std::clamp(elapsed / m_animation->duration, 0.0, 1.0);
    const double eased = 1 - std::pow(1 - t, 3);
    const ScreenPoint from = m_animation->from;
    const ScreenPoint to = m_animation->to;
    if (t < 1) {
        moveTo({from.x + (to.x - from.x) * eased, from.y + (to.y - from.y) * eased});
        return;
    }
    const Arrival arrival = m_animation->arrival;
    m_animation.reset();
    moveTo(to);
    arrive(arrival);
}

void PetMotion::arrive(Arrival arrival)
{
    if (arrival == Arrival::saveAtHome) {
        m_atHome = m_origin == home();
        m_displacedFrom.reset();
    }
    save();
}

void PetMotion::save()
{
    m_listener.positionToSave(m_origin);
}

void PetMotion::moveTo(ScreenPoint origin)
{
    m_origin = origin;
    m_listener.panelMoved(origin);
}

const DesktopScreen* PetMotion::panelScreen() const
{
    const DesktopScreen* best = nullptr;
    double most = 0;
    for (const DesktopScreen& screen : m_screens) {
        const double common = screen.frame.overlap(panel());
        if (common > most) {
            most = common;
            best = &screen;
        }
    }
    return best;
}

bool PetMotion::isOnAnyScreen(ScreenPoint origin) const
{
    if (!std::isfinite(origin.x) || !std::isfinite(origin.y))
        return false;
    const ScreenArea area{origin.x, origin.y, panelWidth, panelHeight};
    return std::any_of(m_screens.begin(), m_screens.end(),
                       [&area](const DesktopScreen& screen) { return screen.frame.overlap(area) > 0; });
}

} // namespace nibbo
