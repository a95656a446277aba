#include "approval/PressScale.h"

#include <cmath>
#include <numbers>

namespace nibbo {

void PressScale::press(std::chrono::nanoseconds now)
{
    // A press in quick succession finds the button still small and leaves its motion alone.
    if (motionAt(now).value > 0.95)
        aim(pressedValue, 0.18, 0.6, now);
}

void PressScale::release(std::chrono::nanoseconds now)
{
    if (m_target != 1.0)
        aim(1.0, 0.22, 0.7, now);
}

bool PressScale::isResting(std::chrono::nanoseconds now) const
{
    const Motion motion = motionAt(now);
    return std::abs(motion.value - m_target) < 0.001 && std::abs(motion.velocity) < 0.02;
}

PressScale::Motion PressScale::motionAt(std::chrono::nanoseconds now) const
{
    const double time = Seconds(now - m_startedAt).count();
    const double away = m_start.value - m_target;
    if (time <= 0.0 || (away == 0.0 && m_start.velocity == 0.0))
        return m_start;
    const double decay = m_damping * m_frequency;
    const double swing = m_frequency * std::sqrt(1.0 - m_damping * m_damping);
    const double sine = (m_start.velocity + decay * away) / swing;
    const double fade = std::exp(-decay * time);
    const double cosAt = std::cos(swing * time);
    const double sinAt = std::sin(swing * time);
    const double offset = fade * (away * cosAt + sine * sinAt);
    return {m_target + offset, -decay * offset + fade * swing * (sine * cosAt - away * sinAt)};
}

void PressScale::aim(double target, double response, double damping, std::chrono::nanoseconds now)
{
    m_start = motionAt(now);
    m_startedAt = now;
    m_target = target;
    m_frequency = 2.0 * std::numbers::pi / response;
    m_damping = damping;
}

} // namespace nibbo
