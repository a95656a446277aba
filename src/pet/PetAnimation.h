#pragma once

#include "pet/PetState.h"

namespace nibbo {

/// The motion of a state: the picture goes from the "from" values to the "to" values and back, forever.
/// Rotations are degrees, offsets points (negative y is up), `duration` the seconds of one leg.
struct PetAnimation
{
    double scaleFrom = 1;
    double scaleTo = 1;
    double rotationFrom = 0;
    double rotationTo = 0;
    double xFrom = 0;
    double xTo = 0;
    double yFrom = 0;
    double yTo = 0;
    double duration = 1;
    bool autoreverses = true;

    bool operator==(const PetAnimation&) const = default;

    static const PetAnimation& forState(PetState state);
};

} // namespace nibbo
