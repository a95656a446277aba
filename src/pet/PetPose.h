#pragma once

#include "base/Time.h"
#include "pet/BumpDirection.h"
#include "pet/PetAnimation.h"

namespace nibbo {

/// How the picture is bent at one moment, about the middle of the pet's feet. Rotation in degrees, offsets in
/// points of a pet of the ordinary size, negative y upwards.
struct PetPose
{
    double scale = 1;
    double rotation = 0;
    double x = 0;
    double y = 0;

    bool operator==(const PetPose&) const = default;
};

/// Where the motion is after that time: there and back, forever, eased at both ends.
PetPose poseAt(const PetAnimation& animation, Seconds elapsed);

/// The lowest rate in steps a second at which the motion looks smooth on a pet of that side, and which shows
/// every one of its frames. A pet that does not move needs only its frame rate.
double smoothRate(const PetAnimation& animation, double framesPerSecond, double side);

/// How far the pet is pressed flat after a bump: 0 to about a fifth of its size, and 0 again at the end.
double squashAt(Seconds sinceBump);
constexpr Seconds squashDuration{0.4};

} // namespace nibbo
