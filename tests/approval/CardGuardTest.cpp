#include "approval/CardGuard.h"
#include "approval/PressScale.h"
#include "support/ManualTime.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

namespace nibbo {
namespace {

using namespace std::chrono_literals;

constexpr CardButton allButtons[] = {CardButton::deny, CardButton::allow, CardButton::allowAll};

class CardGuardTest : public ::testing::Test
{
protected:
    std::optional<CardButton> click(CardButton button)
    {
        guard.press(button);
        return guard.release(button);
    }
    void showSettled()
    {
        guard.changed();
        guard.endSeen();
        time.advance(2s);
    }

    test::ManualTime time;
    CardGuard guard{time};
};

TEST_F(CardGuardTest, nothingIsLiveWithoutACard)
{
    for (const CardButton button : allButtons)
        EXPECT_FALSE(click(button));
    showSettled();
    guard.gone();
    for (const CardButton button : allButtons)
        EXPECT_FALSE(click(button));
    EXPECT_FALSE(guard.nextWake());
}

TEST_F(CardGuardTest, denyIsLiveAtOnce)
{
    guard.changed();
    EXPECT_EQ(click(CardButton::deny), CardButton::deny);
}

TEST_F(CardGuardTest, allowWakesAfterTheSettleTimeAndNotBefore)
{
    for (const CardButton button : {CardButton::allow, CardButton::allowAll}) {
        time.advance(5s);
        guard.changed();
        guard.endSeen();
        EXPECT_EQ(guard.nextWake(), time.now() + 800ms);
        time.advance(0.799s);
        EXPECT_FALSE(click(button));
        time.advance(0.001s);
        EXPECT_TRUE(guard.isLive(button));
        EXPECT_FALSE(guard.nextWake());
        EXPECT_EQ(click(button), button);
    }
}

TEST_F(CardGuardTest, aChangeStartsTheWaitAgainAndForgetsTheEnd)
{
    showSettled();
    guard.changed();
    time.advance(0.5s);
    guard.changed();
    guard.endSeen();
    time.advance(0.5s);
    EXPECT_FALSE(click(CardButton::allow));
    time.advance(0.3s);
    EXPECT_TRUE(guard.isLive(CardButton::allow));
    guard.changed();
    time.advance(1h);
    EXPECT_FALSE(click(CardButton::allow));
    EXPECT_FALSE(click(CardButton::allowAll));
    EXPECT_FALSE(guard.nextWake()) << "only scrolling can wake it";
    guard.endSeen();
    EXPECT_EQ(click(CardButton::allow), CardButton::allow);
}

TEST_F(CardGuardTest, pressAndReleaseMustMeetOnTheSameLiveButton)
{
    showSettled();
    guard.press(CardButton::allow);
    EXPECT_FALSE(guard.release(CardButton::deny));
    guard.press(CardButton::deny);
    EXPECT_FALSE(guard.release(CardButton::allow));
    guard.press(std::nullopt);
    EXPECT_FALSE(guard.release(CardButton::allow)) << "dragged onto the button";
    guard.press(CardButton::allow);
    EXPECT_FALSE(guard.release(std::nullopt)) << "dragged off the button";
    EXPECT_FALSE(guard.release(CardButton::allow)) << "a release without a press";
    guard.press(CardButton::allow);
    guard.cancelPress();
    EXPECT_FALSE(guard.release(CardButton::allow));
}

TEST_F(CardGuardTest, aPressBeforeTheButtonLivesNeverCounts)
{
    guard.changed();
    guard.endSeen();
    time.advance(0.7s);
    guard.press(CardButton::allow);
    time.advance(1s);
    EXPECT_FALSE(guard.release(CardButton::allow));
}

TEST_F(CardGuardTest, aPressDoesNotSurviveAChangeOfTheCard)
{
    showSettled();
    for (const CardButton button : allButtons) {
        guard.press(button);
        guard.changed();
        guard.endSeen();
        time.advance(1s);
        EXPECT_FALSE(guard.release(button));
    }
    guard.press(CardButton::deny);
    guard.gone();
    guard.changed();
    EXPECT_FALSE(guard.release(CardButton::deny));
}

TEST_F(CardGuardTest, secondClickOfADoubleClickAnswersNothing)
{
    showSettled();
    EXPECT_EQ(click(CardButton::allow), CardButton::allow);
    guard.gone();
    guard.changed(); // the next request that was waiting
    guard.endSeen();
    for (const CardButton button : allButtons)
        EXPECT_FALSE(click(button));
    EXPECT_EQ(guard.nextWake(), time.now() + 500ms);
    time.advance(0.499s);
    EXPECT_FALSE(click(CardButton::deny));
    time.advance(0.001s);
    EXPECT_TRUE(guard.isLive(CardButton::deny));
    EXPECT_EQ(guard.nextWake(), time.now() + 300ms);
    EXPECT_FALSE(click(CardButton::allow));
    EXPECT_EQ(click(CardButton::deny), CardButton::deny);
}

/// Where an underdamped spring is that starts at rest `away` from its target.
double springOffset(double away, double response, double damping, double seconds)
{
    const double frequency = 2 * std::numbers::pi / response;
    const double swing = frequency * std::sqrt(1 - damping * damping);
    return std::exp(-damping * frequency * seconds) * away *
           (std::cos(swing * seconds) + damping * frequency / swing * std::sin(swing * seconds));
}

TEST(PressScale, followsTheDampedSpringThereAndBack)
{
    test::ManualTime time;
    PressScale scale;
    EXPECT_EQ(scale.at(time.now()), 1.0);
    EXPECT_TRUE(scale.isResting(time.now()));
    const auto pressed = time.now();
    scale.press(pressed);
    for (int milliseconds = 0; milliseconds <= 600; milliseconds += 7) {
        const double expected = PressScale::pressedValue +
                                springOffset(1 - PressScale::pressedValue, 0.18, 0.6, milliseconds / 1e3);
        EXPECT_NEAR(scale.at(pressed + Milliseconds(milliseconds)), expected, 1e-9) << milliseconds;
    }
    time.advance(2s);
    EXPECT_TRUE(scale.isResting(time.now()));
    const auto released = time.now();
    scale.release(released);
    EXPECT_FALSE(scale.isResting(released));
    for (int milliseconds = 0; milliseconds <= 600; milliseconds += 7) {
        const double expected = 1 + springOffset(PressScale::pressedValue - 1, 0.22, 0.7, milliseconds / 1e3);
        EXPECT_NEAR(scale.at(released + Milliseconds(milliseconds)), expected, 1e-6) << milliseconds;
    }
    time.advance(2s);
    EXPECT_TRUE(scale.isResting(time.now()));
    EXPECT_NEAR(scale.at(time.now()), 1.0, 1e-6);
}

TEST(PressScale, turnsAroundInMidMotionWithoutAJump)
{
    test::ManualTime time;
    PressScale scale;
    scale.press(time.now());
    time.advance(0.03s);
    const double before = scale.at(time.now());
    EXPECT_LT(before, 1.0);
    scale.release(time.now());
    EXPECT_NEAR(scale.at(time.now()), before, 1e-9);
    EXPECT_NEAR(scale.at(time.now() + 100us), before, 0.005);
    // Pressed again while it is still small, the way back goes on.
    time.advance(0.001s);
    ASSERT_GT(scale.at(time.now()), 0.95);
    PressScale small;
    small.press(time.now());
    time.advance(2s);
    small.release(time.now());
    const auto later = time.now() + 5ms;
    ASSERT_LT(small.at(later), 0.95);
    const double onTheWay = small.at(later + 100ms);
    small.press(later);
    EXPECT_EQ(small.at(later + 100ms), onTheWay);
}

} // namespace
} // namespace nibbo
