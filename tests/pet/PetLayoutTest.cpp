#include "pet/PetLayout.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace nibbo {
namespace {

constexpr QRect freeArea(0, 24, 1280, 736);

QRect onScreen(const PetLayout& layout, const QRect& part)
{
    return part.translated(layout.window.topLeft());
}

TEST(PetLayout, boundsTheSize)
{
    EXPECT_EQ(petSide(1.0), 150);
    EXPECT_EQ(petSide(0.5), 75);
    EXPECT_EQ(petSide(-3), 75);
    EXPECT_EQ(petSide(9), 300);
    EXPECT_EQ(petSide(std::nan("")), 150);
    EXPECT_EQ(petSide(std::numeric_limits<double>::infinity()), 150);
}

TEST(PetLayout, thePetStandsInTheMiddleOfThePanelsLowerEdge)
{
    const PetLayout layout = layOutPet({400, 200}, 150, {}, freeArea);
    EXPECT_EQ(layout.window, QRect(400, 200, 280, 360));
    EXPECT_EQ(layout.pet, QRect(65, 210, 150, 150));
    EXPECT_TRUE(layout.bubble.isEmpty());
}

/// Whatever the bubble does, the pet stays where it is on the screen, the window holds both, and the tail
/// points at the pet's middle.
TEST(PetLayout, theBubbleStaysOnTheScreenAndThePetWhereItIs)
{
    struct Row
    {
        const char* what;
        QPoint panel;
        int side;
        QSize bubble;
        bool below;
        bool panelSuffices;
    };
    const Row rows[] = {
        {"in the open", {400, 300}, 150, {240, 90}, false, true},
        {"a tall card", {400, 300}, 150, {280, 320}, false, false},
        {"a card wider than the panel", {400, 300}, 150, {340, 200}, false, false},
        {"hanging out on the left", {-65, 300}, 150, {240, 90}, false, false},
        {"hanging out on the right", {1280 - 200, 300}, 150, {240, 90}, false, false},
        {"at the top", {400, 24 - 210}, 150, {240, 90}, true, true},
        {"at the top, a tall card", {400, 24 - 210}, 150, {240, 400}, true, false},
        {"a top corner", {-60, 24 - 200}, 150, {240, 90}, true, false},
        {"small", {400, 300}, 75, {240, 90}, false, true},
        {"huge", {400, 300}, 300, {240, 90}, false, false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        const PetLayout without = layOutPet(row.panel, row.side, {}, freeArea);
        const PetLayout layout = layOutPet(row.panel, row.side, row.bubble, freeArea);
        const QRect pet = onScreen(layout, layout.pet);
        const QRect bubble = onScreen(layout, layout.bubble);
        EXPECT_EQ(pet, onScreen(without, without.pet));
        EXPECT_EQ(pet.left() + row.side / 2, row.panel.x() + 140 - row.side % 2);
        EXPECT_EQ(bubble.size(), row.bubble);
        EXPECT_TRUE(freeArea.contains(bubble));
        EXPECT_FALSE(bubble.intersects(pet.adjusted(0, row.side / 10, 0, 0))) << "only the tail reaches in";
        EXPECT_FALSE(layout.bubbleOverPet);
        EXPECT_TRUE(layout.window.contains(bubble));
        EXPECT_TRUE(layout.window.contains(pet.marginsAdded(spriteMargins(row.side))));
        EXPECT_EQ(layout.bubbleBelow, row.below);
        EXPECT_EQ(bubble.top() > pet.bottom(), row.below);
        EXPECT_EQ(bubble.left() + layout.tip, pet.left() + row.side / 2);
        EXPECT_EQ(layout.window.size() == QSize(280, 360), row.panelSuffices);
    }
}

TEST(PetLayout, aBubbleThatFitsNowhereCoversThePetRatherThanLeaveTheScreen)
{
    const QRect low(0, 0, 200, 300);
    const PetLayout card = layOutPet({-40, -60}, 150, {190, 280}, low);
    EXPECT_TRUE(card.bubbleOverPet);
    EXPECT_TRUE(low.contains(onScreen(card, card.bubble)));

    const PetLayout huge = layOutPet({-40, -60}, 150, {400, 500}, low);
    EXPECT_EQ(onScreen(huge, huge.bubble).left(), 0) << "its beginning can be read";
    EXPECT_EQ(onScreen(huge, huge.bubble).bottom(), 299) << "its buttons can be reached";
}

} // namespace
} // namespace nibbo
