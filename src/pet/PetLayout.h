#pragma once

#include <QPoint>
#include <QRect>
#include <QSize>

#include <optional>

namespace nibbo {

/// Where everything of the pet lies: the native window, and inside it the pet and its bubble. Pure geometry
/// in device-independent pixels, y downwards as the desktop counts it.
struct PetLayout
{
    /// The window on the desktop.
    QRect window;
    /// The square that takes the pointer, in window coordinates.
    QRect pet;
    /// The bubble in window coordinates; empty without one.
    QRect bubble;
    /// The bubble hangs below the pet because above it there is no room.
    bool bubbleBelow = false;
    /// How far from the bubble's left edge the pet's middle is.
    int tip = 0;

    bool operator==(const PetLayout&) const = default;
};

/// The side of the pet's square for a size factor, which may be any number at all: 75 to 300.
int petSide(double sizeScale);

/// 1. The panel is 280 x 360 with the pet's square in the middle of its lower edge. The window is the panel,
/// but
///    larger where a big pet or a long card needs it, with the pet kept in place.
/// 2. The bubble stands on the pet. It is moved sideways as far as it must to stay on the free part of the
/// screen,
///    and below the pet when it does not fit above, or where more of it fits.
/// 3. The window is then laid around both; only it changes, the pet never moves on the screen.
PetLayout layOutPet(QPoint panel, int side, QSize bubble, std::optional<QRect> freeArea);

} // namespace nibbo
