#pragma once

#include <QMargins>
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
    /// There is no room for both, and the bubble covers part of the pet.
    bool bubbleOverPet = false;
    /// How far from the bubble's left edge the pet's middle is.
    int tip = 0;

    bool operator==(const PetLayout&) const = default;
};

/// The side of the pet's square for a size factor, which may be any number at all: 75 to 300.
int petSide(double sizeScale);

/// The room around the pet's square that hops, ears and props may use.
QMargins spriteMargins(int side);

/// 1. The panel is 280 x 360 with the pet's square in the middle of its lower edge. The window is the panel,
/// but
///    larger where a big pet or a long card needs it, with the pet kept in place.
/// 2. The bubble's tail reaches a little into the square's upper edge, which is empty but for the tips of the
/// ears.
///    The bubble is moved sideways as far as it must to stay on the free part of the screen, and hangs below
///    the pet when it does not fit above and there is more room there. Where it fits nowhere it covers the
///    pet.
/// 3. The window is then laid around both; only it changes, the pet never moves on the screen.
PetLayout layOutPet(QPoint panel, int side, QSize bubble, std::optional<QRect> freeArea);

} // namespace nibbo
