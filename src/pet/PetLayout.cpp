#include "pet/PetLayout.h"

#include "pet/PetMotion.h"

#include <algorithm>
#include <cmath>

namespace nibbo {
namespace {

constexpr int ordinarySide = 150;
constexpr int panelWidth = int(PetMotion::panelWidth);
constexpr int panelHeight = int(PetMotion::panelHeight);
/// How deep the tail reaches into the square, as a share of its side.
constexpr double tailDip = 0.08;
constexpr int gapBelow = 2;

/// A bubble that is wider than the screen keeps its beginning in sight, one that is higher its buttons.
QRect keptInside(QRect place, const QRect& area)
{
    place.moveLeft(std::max(area.left(), std::min(place.left(), area.right() + 1 - place.width())));
    place.moveTop(std::min(std::max(place.top(), area.top()), area.bottom() + 1 - place.height()));
    return place;
}

} // namespace

int petSide(double sizeScale)
{
    if (!std::isfinite(sizeScale))
        return ordinarySide;
    return int(std::lround(std::clamp(sizeScale, 0.5, 2.0) * ordinarySide));
}

QMargins spriteMargins(int side)
{
    const int around = side * 3 / 10;
    return {around, around, around, 0};
}

PetLayout layOutPet(QPoint panel, int side, QSize bubble, std::optional<QRect> freeArea)
{
    const QRect pet(panel.x() + (panelWidth - side) / 2, panel.y() + panelHeight - side, side, side);
    const int middle = pet.x() + side / 2;
    const QRect sprite = pet.marginsAdded(spriteMargins(side));
    PetLayout layout;
    QRect window = QRect(panel, QSize(panelWidth, panelHeight)) | sprite;
    if (!bubble.isEmpty()) {
        const int foot = pet.top() + int(side * tailDip);
        QRect place(QPoint(middle - bubble.width() / 2, foot - bubble.height()), bubble);
        if (freeArea) {
            const int below = freeArea->bottom() - pet.bottom() - gapBelow;
            layout.bubbleBelow = place.top() < freeArea->top() && below > foot - freeArea->top();
            if (layout.bubbleBelow)
                place.moveTop(pet.bottom() + 1 + gapBelow);
            place = keptInside(place, *freeArea);
        }
        layout.bubbleOverPet = place.intersects(pet.adjusted(0, foot - pet.top(), 0, 0));
        if (layout.bubbleBelow)
            window.moveTop(sprite.top());
        window |= place | sprite;
        layout.tip = std::clamp(middle - place.left(), 0, place.width());
        layout.bubble = place.translated(-window.topLeft());
    }
    layout.window = window;
    layout.pet = pet.translated(-window.topLeft());
    return layout;
}

} // namespace nibbo
