#include "pet/PetPose.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace nibbo {
namespace {

/// A step of this many pixels is not seen as one.
constexpr double invisibleStep = 0.9;
constexpr double ordinaryRateLimit = 30;
constexpr double quickRateLimit = 60;
constexpr Seconds quickLeg{0.25};
constexpr double squashDepth = 0.2;

double mix(double from, double to, double t)
{
    return from + (to - from) * t;
}

} // namespace

PetPose poseAt(const PetAnimation& animation, Seconds elapsed)
{
    const double legs = std::max(0.0, elapsed.count() / animation.duration);
    const double along = animation.autoreverses ? 1 - std::abs(1 - std::fmod(legs, 2)) : std::fmod(legs, 1);
    const double eased = (1 - std::cos(std::numbers::pi * along)) / 2;
    return {mix(animation.scaleFrom, animation.scaleTo, eased),
            mix(animation.rotationFrom, animation.rotationTo, eased),
            mix(animation.xFrom, animation.xTo, eased), mix(animation.yFrom, animation.yTo, eased)};
}

double smoothRate(const PetAnimation& animation, double framesPerSecond, double side)
{
    const double points = side / 150;
    // What the furthest pixel travels in one leg; the ears are about a side away from the feet.
    const double way =
        std::abs(animation.scaleTo - animation.scaleFrom) * side +
        std::abs(animation.rotationTo - animation.rotationFrom) * std::numbers::pi / 180 * side +
        std::hypot(animation.xTo - animation.xFrom, animation.yTo - animation.yFrom) * points;
    const double fastest = way / animation.duration * std::numbers::pi / 2;
    const double limit = Seconds(animation.duration) < quickLeg ? quickRateLimit : ordinaryRateLimit;
    const double wanted = std::min(fastest / invisibleStep, limit);
    // Whole multiples of the frame rate, so that a frame changes exactly on a step.
    return framesPerSecond * std::max(1.0, std::round(wanted / framesPerSecond));
}

double squashAt(Seconds sinceBump)
{
    const double t = sinceBump / squashDuration;
    if (t <= 0 || t >= 1)
        return 0;
    // Flat at once, round again slowly.
    return squashDepth * std::sin(std::numbers::pi * std::pow(t, 0.55));
}

} // namespace nibbo
