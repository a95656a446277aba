// The approval card in the pet's window under a real pointer, on a real X server with a window manager.
#include "BubbleSamples.h"

#include "base/Random.h"
#include "pet/PetViewModel.h"
#include "pet/view/BubblePresenter.h"
#include "pet/view/PetWindow.h"
#include "settings/SettingsStore.h"
#include "support/ManualTime.h"
#include "support/Wait.h"

#include <QGuiApplication>
#include <QLineEdit>
#include <QProcess>
#include <QScreen>
#include <QTemporaryDir>
#include <QWindow>

#include <gtest/gtest.h>

#include <memory>
#include <utility>
#include <vector>

namespace nibbo {
namespace {

using namespace test;
using namespace std::chrono_literals;

bool xdotool(const QStringList& arguments)
{
    QProcess process;
    process.start(QStringLiteral("xdotool"), arguments);
    // Our windows must keep answering meanwhile.
    return waitFor([&process] { return process.state() == QProcess::NotRunning; }) &&
           process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
}

QStringList moveTo(QPoint global)
{
    const QPoint physical = global * qGuiApp->devicePixelRatio();
    return {QStringLiteral("mousemove"), QString::number(physical.x()), QString::number(physical.y())};
}

/// Counts what the card was sent, so that a test knows when a real event has arrived.
class Arrivals final : public QObject
{
public:
    int releases = 0;
    int wheels = 0;

protected:
    bool eventFilter(QObject*, QEvent* event) override
    {
        releases += event->type() == QEvent::MouseButtonRelease ? 1 : 0;
        wheels += event->type() == QEvent::Wheel ? 1 : 0;
        return false;
    }
};

/// The pet's window runs in real time; the card's clock stands still until a test moves it, so that no stall
/// of the machine can wake a button.
class CardDesktopTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        terminal.setWindowTitle(QStringLiteral("terminal"));
        // Nearly all of the screen: a click on the bare desktop would take the focus from it, and a window
        // that covers everything counts as full screen, above all others.
        terminal.setWindowFlags(Qt::Window | Qt::FramelessWindowHint);
        terminal.setGeometry(QGuiApplication::primaryScreen()->virtualGeometry().adjusted(4, 4, -4, -4));
        terminal.show();
        ASSERT_TRUE(waitFor([this] { return terminal.isActiveWindow(); }));

        auto owned = std::make_unique<BubbleView>(cardTime, cardTime);
        bubble = owned.get();
        card = bubble->findChild<ApprovalCard*>();
        presenter = std::make_unique<BubblePresenter>(*bubble, model, settings);
        pet = std::make_unique<PetWindowController>(model, settings, clock, scheduler,
                                                    QStringLiteral(NIBBO_SOURCE_DIR "/resources/pets/nibbo"),
                                                    std::move(owned));
        card->installEventFilter(&arrivals);
        QObject::connect(&model, &PetViewModel::approvalSubmitted, &model,
                         [this](const QUuid& eventId, bool allow) { verdicts.emplace_back(eventId, allow); });
        pet->showPet();
        ASSERT_TRUE(waitFor(
            [this] { return pet->window().windowHandle() && pet->window().windowHandle()->isExposed(); }));
    }

    /// Shows a card and waits until the window manager has the window where the card can be clicked.
    void show(const ApprovalBubble& request)
    {
        model.render(PetState::waitingApproval, PetBubbleKind(request), true, request.prompt.provider);
        cardTime.advance(0.3s); // the bubble has come, Allow is still dead
        ASSERT_TRUE(waitFor([this] { return card->isVisible(); }));
        // A press on the words of the card answers nothing and tells that the pointer reaches it.
        ASSERT_TRUE(waitFor([this] {
            const int before = arrivals.releases;
            clickAt(card->commandRect().center());
            return waitFor([&] { return arrivals.releases > before; }, 2000);
        }));
    }
    void clickAt(QPoint place, const QStringList& how = {QStringLiteral("click"), QStringLiteral("1")})
    {
        ASSERT_TRUE(xdotool(moveTo(card->mapToGlobal(place)) + how));
    }
    void click(CardButton button, int times = 1)
    {
        const int before = arrivals.releases;
        clickAt(card->buttonRect(button).center(),
                {QStringLiteral("click"), QStringLiteral("--repeat"), QString::number(times),
                 QStringLiteral("--delay"), QStringLiteral("30"), QStringLiteral("1")});
        ASSERT_TRUE(waitFor([&] { return arrivals.releases >= before + times; }));
    }

    QTemporaryDir folder;
    UserDefaults defaults{folder.filePath(QStringLiteral("defaults.json"))};
    SettingsStore settings{defaults};
    SystemClock clock;
    EventLoopScheduler scheduler;
    ManualTime cardTime;
    SystemRandom chance;
    PetViewModel model{clock, scheduler, chance, [this]() -> const Settings& { return settings.current(); }};
    QLineEdit terminal;
    Arrivals arrivals;
    BubbleView* bubble = nullptr;
    ApprovalCard* card = nullptr;
    std::unique_ptr<BubblePresenter> presenter;
    std::unique_ptr<PetWindowController> pet;
    std::vector<std::pair<QUuid, bool>> verdicts;
};

TEST_F(CardDesktopTest, denyAnswersAtOnceAndAllowAfterItsTime)
{
    const ApprovalBubble denied = requestFor(QStringLiteral("make"));
    show(denied);
    click(CardButton::allow);
    click(CardButton::allowAll);
    EXPECT_TRUE(verdicts.empty()) << "still dead";
    click(CardButton::deny);
    ASSERT_TRUE(waitFor([this] { return verdicts.size() == 1; }));
    EXPECT_EQ(verdicts[0], std::pair(denied.prompt.eventId, false));
    EXPECT_FALSE(model.bubbleVisible());
    cardTime.advance(2s);

    const ApprovalBubble allowed = requestFor(QStringLiteral("make test"));
    show(allowed);
    cardTime.advance(0.8s);
    click(CardButton::allow);
    ASSERT_TRUE(waitFor([this] { return verdicts.size() == 2; }));
    EXPECT_EQ(verdicts[1], std::pair(allowed.prompt.eventId, true));
}

TEST_F(CardDesktopTest, aRealDoubleClickAnswersOneOfTwoRequests)
{
    const ApprovalBubble first = requestFor(QStringLiteral("make"));
    const ApprovalBubble second = requestFor(QStringLiteral("rm -rf /"));
    QObject::connect(&model, &PetViewModel::approvalSubmitted, &model, [&] {
        if (verdicts.size() == 1)
            model.render(PetState::waitingApproval, PetBubbleKind(second), true, second.prompt.provider);
    });
    show(first);
    cardTime.advance(1s);
    click(CardButton::deny, 2);
    ASSERT_TRUE(waitFor([this] { return !verdicts.empty(); }));
    EXPECT_EQ(verdicts, (std::vector<std::pair<QUuid, bool>>{{first.prompt.eventId, false}}));
    EXPECT_TRUE(model.bubbleVisible()) << "the second request still waits";
}

TEST_F(CardDesktopTest, theWheelReadsALongCommandAndWakesAllow)
{
    show(requestFor(manyLines(40)));
    cardTime.advance(5s);
    click(CardButton::allow);
    EXPECT_TRUE(verdicts.empty());
    for (int turn = 0; turn < 100 && card->hiddenRows() > 0; ++turn) {
        const int before = arrivals.wheels;
        clickAt(card->commandRect().center(), {QStringLiteral("click"), QStringLiteral("5")});
        ASSERT_TRUE(waitFor([&] { return arrivals.wheels > before; }));
    }
    ASSERT_EQ(card->hiddenRows(), 0);
    click(CardButton::allow);
    ASSERT_TRUE(waitFor([this] { return verdicts.size() == 1; }));
    EXPECT_TRUE(verdicts[0].second);
}

TEST_F(CardDesktopTest, dragsBetweenButtonsAnswerNothing)
{
    show(requestFor(QStringLiteral("make")));
    cardTime.advance(1s);
    const int before = arrivals.releases;
    clickAt(card->buttonRect(CardButton::allow).center(), {QStringLiteral("mousedown"), QStringLiteral("1")});
    clickAt(card->buttonRect(CardButton::deny).center(), {QStringLiteral("mouseup"), QStringLiteral("1")});
    ASSERT_TRUE(waitFor([&] { return arrivals.releases > before; }));
    EXPECT_TRUE(verdicts.empty());
}

TEST_F(CardDesktopTest, focusAndKeysStayWithTheTerminal)
{
    show(requestFor(QStringLiteral("make")));
    cardTime.advance(1s);
    clickAt(card->commandRect().center());
    ASSERT_TRUE(xdotool(moveTo(card->mapToGlobal(card->buttonRect(CardButton::allow).center()))));
    ASSERT_TRUE(xdotool(
        {QStringLiteral("key"), QStringLiteral("space"), QStringLiteral("Return"), QStringLiteral("y")}));
    EXPECT_TRUE(waitFor([this] { return terminal.text() == QStringLiteral(" y"); }))
        << qUtf8Printable(terminal.text());
    EXPECT_TRUE(terminal.isActiveWindow());
    EXPECT_TRUE(verdicts.empty());
}

} // namespace
} // namespace nibbo
