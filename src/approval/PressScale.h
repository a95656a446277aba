#pragma once

#include "base/Time.h"

namespace nibbo {

/// How far the pressed button has shrunk: one value that springs to `pressed` while the press lasts and back
/// to 1 afterwards, by the exact solution of the damped spring, so that the rate of drawing does not matter.
class PressScale final
{
public:
    static constexpr double pressedValue = 0.92;

    void press(std::chrono::nanoseconds now);
    void release(std::chrono::nanoseconds now);
    double at(std::chrono::nanoseconds now) const { return motionAt(now).value; }
    /// Nothing moves any more: no need to draw again.
    bool isResting(std::chrono::nanoseconds now) const;

private:
    struct Motion
    {
        double value;
        double velocity; // per second
    };

    Motion motionAt(std::chrono::nanoseconds now) const;
    void aim(double target, double response, double damping, std::chrono::nanoseconds now);

    Motion m_start{1.0, 0.0};
    std::chrono::nanoseconds m_startedAt{};
    double m_target = 1.0;
    double m_frequency = 1.0; // radians per second of the undamped spring
    double m_damping = 1.0;   // fraction of the critical damping, below 1
};

} // namespace nibbo
