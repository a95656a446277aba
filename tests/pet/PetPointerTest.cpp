#include "pet/PetPointer.h"

#include "support/ManualTime.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace nibbo {
namespace {

struct Recorder final : PetPointerActions
{
    std::vector<std::string> heard;

    void dragBegan() override { heard.emplace_back("begin"); }
    void dragMoved() override { heard.emplace_back("move"); }
    void dragEnded() override { heard.emplace_back("end"); }
    void clicked() override { heard.emplace_back("click"); }
    void doubleClicked() override { heard.emplace_back("double"); }
    void hovered() override { heard.emplace_back("hover"); }
    void menuAsked() override { heard.emplace_back("menu"); }
};

struct Bench
{
    test::ManualTime time;
    Recorder actions;
    PetPointer pointer{time, time, actions, {}};

    void click(double x = 10, double y = 10)
    {
        pointer.press(x, y);
        pointer.release();
    }
    void wait(double seconds) { time.advance(Seconds(seconds)); }
};

using Heard = std::vector<std::string>;

TEST(PetPointer, dragsFromFourPointsOn)
{
    struct Row
    {
        double dx;
        double dy;
        Heard heard;
    };
    const Row rows[] = {
        {3.9, 0, {"click"}},      {0, -3.9, {"click"}},     {2.8, 2.8, {"click"}},
        {4, 0, {"begin", "end"}}, {0, 4, {"begin", "end"}}, {-3, 3, {"begin", "end"}},
    };
    for (const Row& row : rows) {
        Bench bench;
        bench.pointer.press(50, 50);
        bench.pointer.move(50 + row.dx, 50 + row.dy);
        bench.pointer.release();
        bench.wait(1);
        EXPECT_EQ(bench.actions.heard, row.heard) << row.dx << " " << row.dy;
    }
}

TEST(PetPointer, aDragGoesOnEvenBackAtItsStart)
{
    Bench bench;
    bench.pointer.move(90, 90);
    EXPECT_TRUE(bench.actions.heard.empty()) << "nothing is pressed";
    bench.pointer.press(50, 50);
    bench.pointer.move(60, 50);
    bench.pointer.move(50, 50);
    bench.pointer.release();
    bench.pointer.release();
    bench.wait(1);
    EXPECT_EQ(bench.actions.heard, (Heard{"begin", "move", "end"}));
}

TEST(PetPointer, aClickWaitsForADoubleClick)
{
    Bench bench;
    bench.click();
    bench.wait(0.399);
    EXPECT_TRUE(bench.actions.heard.empty());
    bench.wait(0.002);
    EXPECT_EQ(bench.actions.heard, Heard{"click"});
    EXPECT_EQ(bench.time.waiting(), 0);
}

TEST(PetPointer, tellsClicksApartByTimeAndPlace)
{
    struct Row
    {
        const char* what;
        double pause;
        double shift;
        int clicks;
        Heard heard;
    };
    const Row rows[] = {
        {"quick and near", 0.2, 0, 2, {"double"}},
        {"at the end of the interval", 0.4, 0, 2, {"click", "double"}},
        {"too slow", 0.5, 0, 2, {"click", "click"}},
        {"too far apart", 0.1, 8, 2, {"click", "click"}},
        {"three in a row", 0.1, 0, 3, {"double", "double"}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        Bench bench;
        for (int i = 0; i < row.clicks; ++i) {
            if (i > 0)
                bench.wait(row.pause);
            bench.click(10 + row.shift * i);
        }
        bench.wait(2);
        EXPECT_EQ(bench.actions.heard, row.heard);
    }
}

TEST(PetPointer, aDragIsNoFirstHalfOfADoubleClick)
{
    Bench bench;
    bench.click();
    bench.pointer.press(10, 10);
    bench.pointer.move(30, 10);
    bench.pointer.release();
    bench.click();
    bench.wait(2);
    EXPECT_EQ(bench.actions.heard, (Heard{"begin", "end", "click", "click"}));
}

TEST(PetPointer, aLostGrabEndsADragAndForgetsAClick)
{
    Bench bench;
    bench.pointer.press(10, 10);
    bench.pointer.cancel();
    bench.pointer.release();
    bench.pointer.press(10, 10);
    bench.pointer.move(20, 10);
    bench.pointer.cancel();
    bench.pointer.release();
    bench.wait(2);
    EXPECT_EQ(bench.actions.heard, (Heard{"begin", "end"}));
}

TEST(PetPointer, theRightButtonOpensTheMenuAndNothingElse)
{
    Bench bench;
    bench.pointer.enter();
    bench.pointer.rightPress();
    bench.wait(2);
    EXPECT_EQ(bench.actions.heard, (Heard{"hover", "menu"}));
}

} // namespace
} // namespace nibbo
