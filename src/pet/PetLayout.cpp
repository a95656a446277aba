#include "pet/PetLayout.h"

#include "pet/PetMotion.h"

#include <algorithm>
#include <cmath>

namespace nibbo {
namespace {

constexpr int ordinarySide = 150;
constexpr int panelWidth = int(PetMotion::panelWidth);
constexpr int panelHeight = int(PetMotion::panelHeight);
/// The tail dips into the empty corner above the ears.
constexpr int bubbleGap = 2;

} // namespace

int petSide(double sizeScale)
{
    if (!std::isfinite(sizeScale))
        return ordinarySide;
    return int(std::lround(std::clamp(sizeScale, 0.5, 2.0) * ordinarySide));
}

PetLayout layOutPet(QPoint panel, int side, QSize bubble, std::optional<QRect> freeArea)
{
    const QRect pet(panel.x() + (panelWidth - side) / 2, panel.y() + panelHeight - side, side, side);
    const int middle = pet.x() + side / 2;
    PetLayout layout;
    QRect window(panel, QSize(panelWidth, panelHeight));
    window |= pet;
    QRect bubbleRect;
    if (!bubble.isEmpty()) {
        bubbleRect =
            QRect(QPoint(middle - bubble.width() / 2, pet.top() - bubbleGap - bubble.height()), bubble);
        if (freeArea) {
            const int above = pet.top() - freeArea->top();
            const int below = freeArea->bottom() - pet.bottom();
            const int needed = bubble.height() + bubbleGap;
            layout.bubbleBelow = above < needed && below > above;
            if (layout.bubbleBelow)
                bubbleRect.moveTop(pet.bottom() + 1 + bubbleGap);
            // A bubble that is wider than the screen keeps its beginning in sight.
            bubbleRect.moveLeft(std::max(
                freeArea->left(), std::min(bubbleRect.left(), freeArea->right() + 1 - bubbleRect.width())));
        }
        if (layout.bubbleBelow)
            window.moveTop(pet.top());
        window |= bubbleRect;
        window |= pet;
        layout.tip = std::clamp(middle - bubbleRect.left(), 0, bubbleRect.width());
        layout.bubble = bubbleRect.translated(-window.topLeft());
    }
    layout.window = window;
    layout.pet = pet.translated(-window.topLeft());
    return layout;
}

} // namespace nibbo
