#include "pet/PetMotion.h"

#include "support/ManualTime.h"

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <optional>
#include <string>
#include <vector>

namespace nibbo {
namespace {

using test::ManualTime;

constexpr ScreenArea wholeLeft{0, 0, 1000, 800};
/// A panel of 40 points below, a bar of 20 above.
constexpr ScreenArea freeLeft{0, 40, 1000, 740};
const DesktopScreen leftScreen{wholeLeft, freeLeft};
/// Taller and lower than the left one.
const DesktopScreen rightScreen{{1000, -224, 1280, 1024}, {1000, -224, 1280, 1024}};

struct Recorder final : PetMotionListener
{
    std::vector<ScreenPoint> path;
    std::vector<BumpDirection> bumps;
    std::vector<double> facings;
    std::vector<ScreenPoint> saved;

    void panelMoved(ScreenPoint origin) override { path.push_back(origin); }
    void bumped(BumpDirection direction) override { bumps.push_back(direction); }
    void facingChanged(double facing) override { facings.push_back(facing); }
    void positionToSave(ScreenPoint origin) override { saved.push_back(origin); }
};

struct Pet
{
    ManualTime time;
    Recorder heard;
    PetMotion motion{time, heard};

    explicit Pet(ScreenPoint at, std::vector<DesktopScreen> screens = {leftScreen})
    {
        motion.setScreens(std::move(screens));
        motion.restore(at);
        heard.path.clear();
    }

    void step(int count = 1)
    {
        for (int i = 0; i < count; ++i) {
            time.advance(Seconds(1 / PetMotion::followStepsPerSecond));
            motion.stepFollow();
        }
    }

    /// Drags by hand so that the panel rests where it is told to, the pointer still down.
    void dragTo(ScreenPoint origin)
    {
        const ScreenPoint start = motion.origin();
        motion.beginDrag({0, 0});
        motion.updateDrag({origin.x - start.x, origin.y - start.y});
        step(200);
    }

    /// Lets go, and steps until nothing ticks any more.
    void comeToRest()
    {
        motion.endDrag();
        for (int i = 0; motion.isFollowing() || motion.isAnimating(); ++i) {
            ASSERT_LT(i, 5000);
            step();
            motion.stepAnimation();
        }
    }
};

double distance(ScreenPoint a, ScreenPoint b)
{
    return std::hypot(a.x - b.x, a.y - b.y);
}

/// The distance from the target after n steps, for a panel that starts at rest one point away. The steps are
/// e' - e = v', v' = (v - 0.55 e) 0.78, hence e" = (1 + 0.78 - 0.55 0.78) e' - 0.78 e, whose roots are the
/// conjugate pair r exp(+-i w): the path is r^n (cos wn + b sin wn).
double springDistance(int n)
{
    const double damping = 0.78;
    const double sum = 1 + damping - 0.55 * damping;
    const double r = std::sqrt(damping);
    const double w = std::acos(sum / (2 * r));
    const double first = 1 - 0.55 * damping;
    const double b = (first / r - std::cos(w)) / std::sin(w);
    return std::pow(r, n) * (std::cos(w * n) + b * std::sin(w * n));
}

TEST(PetMotion, followsTheDampedSpringStepByStep)
{
    const ScreenPoint start{400, 300};
    const ScreenPoint target{520, 210};
    Pet pet(start);
    pet.motion.setEdgeSnap(false);
    pet.motion.beginDrag({10, 10});
    pet.motion.updateDrag({10 + target.x - start.x, 10 + target.y - start.y});
    pet.motion.endDrag();
    bool overshot = false;
    int n = 0;
    while (pet.motion.isFollowing()) {
        pet.step();
        ++n;
        ASSERT_LT(n, 1000);
        if (!pet.motion.isFollowing())
            break;
        ASSERT_NEAR(pet.motion.origin().x, target.x + (start.x - target.x) * springDistance(n), 1e-6) << n;
        ASSERT_NEAR(pet.motion.origin().y, target.y + (start.y - target.y) * springDistance(n), 1e-6) << n;
        overshot = overshot || pet.motion.origin().x > target.x + 1;
    }
    EXPECT_TRUE(overshot) << "a spring swings over its target";
    EXPECT_EQ(pet.motion.origin(), target) << "and rests exactly on it";
    // It ends at the first step where both the way left and the last step are small.
    const double length = distance(start, target);
    for (int i = 1; i <= n; ++i) {
        const bool still = std::abs(springDistance(i)) * length < 0.6 &&
                           std::abs(springDistance(i) - springDistance(i - 1)) * length < 0.5;
        EXPECT_EQ(still, i == n) << i;
    }
    ASSERT_EQ(pet.heard.saved.size(), 1U);
    EXPECT_EQ(pet.heard.saved.front(), target);
}

TEST(PetMotion, snapsWithinThirtySixPointsOfTheFreeEdges)
{
    const double farX = freeLeft.maxX() - PetMotion::panelWidth;
    const double farY = freeLeft.maxY() - PetMotion::panelHeight;
    struct Row
    {
        const char* what;
        ScreenPoint released;
        ScreenPoint rests;
    };
    const Row rows[] = {
        {"left inside", {30, 300}, {12, 300}},
        {"left at the border", {36, 300}, {36, 300}},
        {"left just inside the border", {35.99, 300}, {12, 300}},
        {"left outside the screen", {-35.5, 300}, {12, 300}},
        {"left further outside", {-36, 300}, {-36, 300}},
        {"forty points away", {40, 300}, {40, 300}},
        {"right", {farX - 30, 300}, {farX - 12, 300}},
        {"right at the border", {farX - 36, 300}, {farX - 36, 300}},
        {"bottom counts from the free part", {400, 40 + 35}, {400, 52}},
        {"bottom at the border", {400, 40 + 36}, {400, 76}},
        {"top", {400, farY - 20}, {400, farY - 12}},
        {"a corner snaps on both axes", {20, 50}, {12, 52}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        Pet pet({400, 300});
        pet.dragTo(row.released);
        pet.comeToRest();
        EXPECT_NEAR(pet.motion.origin().x, row.rests.x, 1e-9);
        EXPECT_NEAR(pet.motion.origin().y, row.rests.y, 1e-9);
        ASSERT_FALSE(pet.heard.saved.empty());
        EXPECT_EQ(pet.heard.saved.back(), pet.motion.origin());
    }
}

TEST(PetMotion, snapsLeftAndBottomWhereBothEdgesAreNear)
{
    const DesktopScreen tiny{{0, 0, 300, 380}, {0, 0, 300, 380}};
    Pet pet({5, 5}, {tiny});
    pet.dragTo({8, 9});
    pet.comeToRest();
    EXPECT_EQ(pet.motion.origin(), (ScreenPoint{12, 12}));
}

TEST(PetMotion, leavesThePetWhereItIsWithoutSnapping)
{
    Pet pet({400, 300});
    pet.motion.setEdgeSnap(false);
    pet.dragTo({5, 300});
    pet.comeToRest();
    EXPECT_EQ(pet.motion.origin(), (ScreenPoint{5, 300}));
}

TEST(PetMotion, bumpsAtTheBordersOfTheFreePart)
{
    const double farX = freeLeft.maxX() - PetMotion::panelWidth;
    const double farY = freeLeft.maxY() - PetMotion::panelHeight;
    struct Row
    {
        const char* what;
        ScreenPoint at;
        std::vector<BumpDirection> bumps;
    };
    const Row rows[] = {
        {"one point inside the left edge", {1, 300}, {BumpDirection::left}},
        {"more than one point inside it", {1.01, 300}, {}},
        {"one point inside the right edge", {farX - 1, 300}, {BumpDirection::right}},
        {"more than one point inside it", {farX - 1.01, 300}, {}},
        {"one point inside the top", {400, farY - 1}, {BumpDirection::top}},
        {"more than one point inside it", {400, farY - 1.01}, {}},
        {"standing on the bottom", {400, 40}, {}},
        {"almost one point below it", {400, 39.01}, {}},
        {"one point below it", {400, 39}, {BumpDirection::bottom}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        // Arrive without a swing, which would touch what lies beyond: begin next to it and look at one step.
        Pet pet(row.at);
        pet.motion.beginDrag({0, 0});
        pet.step();
        EXPECT_EQ(pet.heard.bumps, row.bumps);
    }
}

TEST(PetMotion, bumpsOncePerTouchAndNotMoreOftenThanTheCooldown)
{
    Pet pet({0, 300});
    // A drag that begins anew touches anew.
    const auto touchAfter = [&pet](double pause) {
        pet.motion.endDrag();
        pet.time.advance(Seconds(pause));
        pet.motion.beginDrag({0, 0});
        pet.motion.stepFollow();
        return pet.heard.bumps.size();
    };
    EXPECT_EQ(touchAfter(0), 1U);
    EXPECT_EQ(touchAfter(0.3), 1U);
    EXPECT_EQ(touchAfter(0.09), 1U);
    EXPECT_EQ(touchAfter(0.02), 2U) << "0.41 s after the one that was reported";
    pet.step(200);
    EXPECT_EQ(pet.heard.bumps.size(), 2U) << "rubbing along the edge is one touch";
}

TEST(PetMotion, tellsTheEdgesOfACornerInOrderAndLetsTheCooldownDecide)
{
    Pet pet({0, 39});
    pet.motion.beginDrag({0, 0});
    pet.step();
    EXPECT_EQ(pet.heard.bumps, std::vector{BumpDirection::left});
}

TEST(PetMotion, doesNotBumpWhileItSettles)
{
    Pet pet({20, 300});
    pet.motion.setEdgeSnap(false);
    pet.motion.beginDrag({0, 0});
    pet.motion.updateDrag({-20, 0});
    pet.comeToRest();
    EXPECT_TRUE(pet.heard.bumps.empty());
}

TEST(PetMotion, looksWhereThePointerGoes)
{
    Pet pet({400, 300});
    pet.motion.beginDrag({100, 100});
    pet.motion.updateDrag({100.5, 140});
    EXPECT_TRUE(pet.heard.facings.empty()) << "half a point is no direction";
    pet.motion.updateDrag({101.1, 140});
    pet.motion.updateDrag({90, 140});
    EXPECT_EQ(pet.heard.facings, (std::vector<double>{1, -1}));
    pet.motion.endDrag();
    pet.motion.updateDrag({0, 0});
    EXPECT_EQ(pet.heard.facings.size(), 2U) << "no drag, no update";
}

TEST(PetMotion, goesHomeAlongACubicEase)
{
    Pet pet({100, 200});
    const ScreenPoint home{1000 - 280 - 24, 40 + 24};
    EXPECT_EQ(pet.motion.home(), home);
    pet.motion.resetPosition();
    ASSERT_TRUE(pet.motion.isAnimating());
    EXPECT_TRUE(pet.heard.saved.empty());
    pet.time.advance(Seconds(0.15));
    pet.motion.stepAnimation();
    EXPECT_NEAR(pet.motion.origin().x, 100 + (home.x - 100) * 0.875, 1e-6);
    EXPECT_NEAR(pet.motion.origin().y, 200 + (home.y - 200) * 0.875, 1e-6);
    pet.time.advance(Seconds(0.2));
    pet.motion.stepAnimation();
    EXPECT_FALSE(pet.motion.isAnimating());
    EXPECT_EQ(pet.heard.saved, std::vector{home});

    pet.motion.resetPosition();
    EXPECT_FALSE(pet.motion.isAnimating()) << "it is there already";
    EXPECT_EQ(pet.heard.saved.size(), 2U);
}

TEST(PetMotion, findsHomeEvenWhenItMovesMeanwhile)
{
    Pet pet({100, 200});
    pet.motion.resetPosition();
    pet.time.advance(Seconds(0.1));
    pet.motion.stepAnimation();
    pet.motion.setScreens({{wholeLeft, wholeLeft}});
    pet.time.advance(Seconds(0.3));
    pet.motion.stepAnimation();
    EXPECT_EQ(pet.motion.origin(), (ScreenPoint{696, 24}));
}

TEST(PetMotion, aDragStartsOverAndAnAnimationEndsByItself)
{
    Pet pet({20, 300});
    pet.motion.beginDrag({0, 0});
    pet.motion.endDrag();
    pet.step();
    ASSERT_TRUE(pet.motion.isAnimating()) << "it snaps";
    pet.motion.beginDrag({0, 0});
    EXPECT_TRUE(pet.motion.isAnimating());
    EXPECT_TRUE(pet.motion.isFollowing());
    pet.time.advance(Seconds(1));
    pet.motion.stepAnimation();
    EXPECT_FALSE(pet.motion.isAnimating());
    EXPECT_TRUE(pet.motion.isDragging());
}

TEST(PetMotion, restoresOnlyAPlaceThatSomeScreenShows)
{
    const ScreenPoint home{696, 64};
    struct Row
    {
        const char* what;
        std::optional<ScreenPoint> saved;
        ScreenPoint starts;
    };
    const Row rows[] = {
        {"nothing saved", {}, home},
        {"on the screen", ScreenPoint{10, 20}, {10, 20}},
        {"partly on it", ScreenPoint{-279, 20}, {-279, 20}},
        {"only touching it", ScreenPoint{-280, 20}, home},
        {"far away", ScreenPoint{5000, 20}, home},
        {"not a number", ScreenPoint{std::nan(""), 20}, home},
        {"without end", ScreenPoint{HUGE_VAL, -HUGE_VAL}, home},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        ManualTime time;
        Recorder heard;
        PetMotion motion(time, heard);
        motion.setScreens({leftScreen});
        motion.restore(row.saved);
        EXPECT_EQ(motion.origin(), row.starts);
        EXPECT_TRUE(heard.saved.empty());
    }
    ManualTime time;
    Recorder heard;
    PetMotion blind(time, heard);
    blind.restore({});
    EXPECT_EQ(blind.origin(), (ScreenPoint{100, 100})) << "without any screen";
}

TEST(PetMotion, leavesAScreenThatGoesAndReturnsWithIt)
{
    const ScreenPoint place{1500, -100};
    Pet pet(place, {leftScreen, rightScreen});
    pet.motion.setScreens({leftScreen});
    EXPECT_EQ(pet.motion.origin(), pet.motion.home());
    pet.motion.setScreens({});
    pet.motion.setScreens({leftScreen, rightScreen});
    EXPECT_EQ(pet.motion.origin(), place);

    pet.motion.setScreens({leftScreen});
    pet.dragTo({300, 300});
    pet.comeToRest();
    pet.motion.setScreens({leftScreen, rightScreen});
    EXPECT_EQ(pet.motion.origin(), (ScreenPoint{300, 300})) << "it was moved meanwhile";
}

TEST(PetMotion, staysAtHomeWhenAPanelComes)
{
    ManualTime time;
    Recorder heard;
    PetMotion motion(time, heard);
    motion.setScreens({{wholeLeft, wholeLeft}});
    motion.restore({});
    EXPECT_EQ(motion.origin().y, 24);
    motion.setScreens({leftScreen});
    EXPECT_EQ(motion.origin().y, 64);

    Pet placed({300, 24});
    placed.motion.setScreens({{wholeLeft, wholeLeft}});
    EXPECT_EQ(placed.motion.origin(), (ScreenPoint{300, 24})) << "a pet that was put somewhere stays there";
}

TEST(PetMotion, usesTheScreenThatHoldsMostOfIt)
{
    Pet pet({400, 300}, {leftScreen, rightScreen});
    pet.dragTo({1010, -210});
    pet.comeToRest();
    EXPECT_EQ(pet.motion.origin(), (ScreenPoint{1012, -212})) << "the second screen reaches lower";
}

} // namespace
} // namespace nibbo
