#include "pet/PetPose.h"

#include <gtest/gtest.h>

#include <cmath>

namespace nibbo {
namespace {

TEST(PetPose, goesThereAndBackForever)
{
    PetAnimation animation;
    animation.scaleTo = 1.5;
    animation.rotationFrom = -6;
    animation.rotationTo = 6;
    animation.yTo = -20;
    animation.duration = 0.5;
    struct Row
    {
        double at;
        PetPose pose;
    };
    const Row rows[] = {
        {-1, {1, -6, 0, 0}},       {0, {1, -6, 0, 0}}, {0.25, {1.25, 0, 0, -10}},  {0.5, {1.5, 6, 0, -20}},
        {0.75, {1.25, 0, 0, -10}}, {1, {1, -6, 0, 0}}, {1000.5, {1.5, 6, 0, -20}},
    };
    for (const Row& row : rows) {
        const PetPose pose = poseAt(animation, Seconds(row.at));
        EXPECT_NEAR(pose.scale, row.pose.scale, 1e-9) << row.at;
        EXPECT_NEAR(pose.rotation, row.pose.rotation, 1e-9) << row.at;
        EXPECT_NEAR(pose.y, row.pose.y, 1e-9) << row.at;
    }
}

/// What a state costs is how often it is painted.
TEST(PetPose, paintsNoMoreOftenThanTheEyeAsksFor)
{
    for (const PetState state : allPetStates()) {
        const PetAnimation& animation = PetAnimation::forState(state);
        const double frames = frameFPS(state);
        const double rate = smoothRate(animation, frames, 150);
        EXPECT_GE(rate, frames) << qPrintable(rawValue(state));
        EXPECT_LE(rate, 60) << qPrintable(rawValue(state));
        EXPECT_NEAR(std::remainder(rate, frames), 0, 1e-9) << qPrintable(rawValue(state));
    }
    const auto rateOf = [](PetState state, double side) {
        return smoothRate(PetAnimation::forState(state), frameFPS(state), side);
    };
    EXPECT_LE(rateOf(PetState::sleeping, 150), 3);
    EXPECT_LE(rateOf(PetState::idle, 150), 8);
    EXPECT_LE(rateOf(PetState::coding, 150), 24);
    EXPECT_EQ(rateOf(PetState::dragging, 150), frameFPS(PetState::dragging))
        << "the window moves, not the picture";
    EXPECT_GE(rateOf(PetState::warning, 150), 40) << "a quick shake needs more";
    EXPECT_GT(rateOf(PetState::idle, 300), rateOf(PetState::idle, 75)) << "a larger pet moves more pixels";
}

TEST(PetPose, aBumpPressesItFlatAndLetsItGo)
{
    EXPECT_EQ(squashAt(Seconds(-0.1)), 0);
    EXPECT_EQ(squashAt(Seconds(0)), 0);
    EXPECT_EQ(squashAt(squashDuration), 0);
    double deepest = 0;
    double when = 0;
    for (double t = 0; t < squashDuration.count(); t += 0.005) {
        const double squash = squashAt(Seconds(t));
        EXPECT_GE(squash, 0);
        if (squash > deepest) {
            deepest = squash;
            when = t;
        }
    }
    EXPECT_NEAR(deepest, 0.2, 0.005);
    EXPECT_LT(when, squashDuration.count() / 2) << "flat at once, round again slowly";
}

} // namespace
} // namespace nibbo
