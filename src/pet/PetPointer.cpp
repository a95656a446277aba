#include "pet/PetPointer.h"

#include <cmath>
#include <utility>

namespace nibbo {

PetPointer::PetPointer(const Clock& clock, Scheduler& scheduler, PetPointerActions& actions,
                       DoubleClick doubleClick)
    : m_clock(clock)
    , m_scheduler(scheduler)
    , m_actions(actions)
    , m_doubleClick(doubleClick)
{}

void PetPointer::press(double x, double y)
{
    if (m_press)
        cancel();
    Press press{x, y, m_clock.now(), 1};
    if (m_lastClick && press.at - m_lastClick->at <= m_doubleClick.interval &&
        std::hypot(x - m_lastClick->x, y - m_lastClick->y) <= m_doubleClick.distance)
        press.clickCount = m_lastClick->clickCount + 1;
    m_press = press;
}

void PetPointer::move(double x, double y)
{
    if (!m_press)
        return;
    if (m_dragging) {
        m_actions.dragMoved();
        return;
    }
    if (std::hypot(x - m_press->x, y - m_press->y) < dragThreshold)
        return;
    m_dragging = true;
    m_lastClick.reset();
    m_actions.dragBegan();
}

void PetPointer::release()
{
    if (!m_press)
        return;
    const Press press = *std::exchange(m_press, std::nullopt);
    if (std::exchange(m_dragging, false)) {
        m_actions.dragEnded();
        return;
    }
    m_lastClick = press;
    if (press.clickCount >= 2) {
        if (!m_pendingClicks.empty())
            m_pendingClicks.pop_back();
        m_actions.doubleClicked();
        return;
    }
    m_pendingClicks.push_back(m_scheduler.after(m_doubleClick.interval, [this] {
        // They fall due in the order in which they were put off. The handle lives until the step has run.
        const ScheduledHandle running = std::move(m_pendingClicks.front());
        m_pendingClicks.erase(m_pendingClicks.begin());
        m_actions.clicked();
    }));
}

void PetPointer::cancel()
{
    m_press.reset();
    if (std::exchange(m_dragging, false))
        m_actions.dragEnded();
}

void PetPointer::enter()
{
    m_actions.hovered();
}

void PetPointer::rightPress()
{
    m_actions.menuAsked();
}

} // namespace nibbo
