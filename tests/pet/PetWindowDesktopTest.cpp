// The pet's window under a real pointer, on a real X server with a window manager and a compositor.
#include "app/ShareFolder.h"
#include "approval/ApprovalPrompt.h"
#include "base/Random.h"
#include "pet/PetViewModel.h"
#include "pet/view/BubblePresenter.h"
#include "pet/view/BubbleView.h"
#include "pet/view/PetPointerArea.h"
#include "pet/view/PetWindow.h"
#include "settings/SettingsStore.h"
#include "support/Wait.h"

#include <QGuiApplication>
#include <QMouseEvent>
#include <QProcess>
#include <QScreen>
#include <QStyleHints>
#include <QTemporaryDir>
#include <QWidget>

#include <gtest/gtest.h>

#include <xcb/xcb.h>

#include <cstdlib>
#include <memory>
#include <optional>

namespace nibbo {
namespace {

using test::waitFor;

QString run(const QString& program, const QStringList& arguments)
{
    QProcess process;
    process.start(program, arguments);
    // Our own windows must keep answering meanwhile: a window manager may wait for them.
    if (!waitFor([&process] { return process.state() == QProcess::NotRunning; }))
        return {};
    return QString::fromUtf8(process.readAllStandardOutput());
}

QStringList at(QPoint global)
{
    const QPoint physical = global * qGuiApp->devicePixelRatio();
    return {QStringLiteral("mousemove"), QString::number(physical.x()), QString::number(physical.y())};
}

void pointer(const QStringList& commands)
{
    run(QStringLiteral("xdotool"), commands);
}

void click(QPoint global, const QString& button = QStringLiteral("1"))
{
    pointer(at(global) + QStringList{QStringLiteral("click"), button});
}

void park()
{
    pointer({QStringLiteral("mousemove"), QStringLiteral("2"), QStringLiteral("2")});
}

/// Everything of the screen that is not the pet; says which clicks it got.
class Below final : public QWidget
{
public:
    int presses = 0;

    Below()
    {
        setWindowFlags(Qt::Window | Qt::FramelessWindowHint);
        QPalette colours = palette();
        colours.setColor(QPalette::Window, QColor(40, 160, 220));
        setPalette(colours);
        setWindowTitle(QStringLiteral("below"));
        // The whole screen would make it a full-screen window, which lies above everything.
        setGeometry(QGuiApplication::primaryScreen()->virtualGeometry().adjusted(0, 0, 0, -1));
    }

protected:
    void mousePressEvent(QMouseEvent*) override { ++presses; }
};

struct Desk
{
    QTemporaryDir folder;
    UserDefaults defaults{folder.filePath(QStringLiteral("defaults.json"))};
    SettingsStore settings{defaults};
    SystemClock clock;
    EventLoopScheduler scheduler;
    SystemRandom chance;
    PetViewModel model{clock, scheduler, chance, [this]() -> const Settings& { return settings.current(); }};
    Below below;
    BubbleView* bubble = nullptr;
    std::unique_ptr<BubblePresenter> presenter;
    std::unique_ptr<PetWindowController> pet;

    Desk()
    {
        park();
        below.show();
        EXPECT_TRUE(waitFor([this] { return below.isActiveWindow(); }));
    }

    void showPet()
    {
        auto owned = std::make_unique<BubbleView>(clock, scheduler);
        bubble = owned.get();
        presenter = std::make_unique<BubblePresenter>(*bubble, model, settings);
        pet = std::make_unique<PetWindowController>(model, settings, clock, scheduler,
                                                    shareFolder() + QStringLiteral("/pets/nibbo"),
                                                    std::move(owned));
        pet->showPet();
        ASSERT_TRUE(
            waitFor([this] { return property("_NET_WM_DESKTOP").contains(QLatin1String("4294967295")); }));
        ASSERT_TRUE(waitFor([this] { return takesClick(square().center()); })) << "it never came up";
        showNothing();
    }

    /// A click on the pet toggles its bubble; put that back.
    void showNothing()
    {
        park();
        EXPECT_TRUE(waitFor([this] {
            if (model.bubbleVisible())
                model.toggleBubble();
            return bubble->preferredSize().isEmpty() && !model.reactionActive();
        }));
    }

    QRect square() const
    {
        const auto* area = pet->window().findChild<PetPointerArea*>();
        const auto seen = [&] { return QRect(area->mapToGlobal(QPoint(0, 0)), area->size()); };
        EXPECT_TRUE(waitFor([&] { return seen() == pet->petSquare(); }))
            << "the desktop never moved it there";
        return seen();
    }

    QString property(const char* name) const
    {
        return run(QStringLiteral("xprop"), {QStringLiteral("-id"), QString::number(pet->window().winId()),
                                             QString::fromLatin1(name)});
    }

    enum class Taker
    {
        nobody,
        pet,
        below
    };

    /// Clicks there and says who got the press.
    Taker takerOfClick(QPoint global)
    {
        struct Filter final : QObject
        {
            int presses = 0;
            bool eventFilter(QObject*, QEvent* event) override
            {
                presses +=
                    event->type() == QEvent::MouseButtonPress || event->type() == QEvent::MouseButtonDblClick;
                return false;
            }
        } filter;
        pet->window().findChild<PetPointerArea*>()->installEventFilter(&filter);
        const int before = below.presses;
        // While a window manager puts a window up, its frame may swallow a click.
        for (int attempt = 0; attempt < 6; ++attempt) {
            click(global);
            if (waitFor([&] { return filter.presses > 0 || below.presses > before; }, 5000))
                return filter.presses > 0 ? Taker::pet : Taker::below;
        }
        return Taker::nobody;
    }
    bool fallsThrough(QPoint global) { return takerOfClick(global) == Taker::below; }
    bool takesClick(QPoint global) { return takerOfClick(global) == Taker::pet; }

    void expectClicksWhereTheyBelong()
    {
        const QRect hit = square();
        EXPECT_TRUE(takesClick(hit.center()));
        EXPECT_TRUE(takesClick(hit.topLeft() + QPoint(3, 20)));
        EXPECT_TRUE(takesClick(hit.bottomRight() - QPoint(3, 3)));
        EXPECT_TRUE(fallsThrough({hit.left() - 10, hit.center().y()})) << "left of the square";
        EXPECT_TRUE(fallsThrough({hit.right() + 10, hit.center().y()})) << "right of it";
        EXPECT_TRUE(fallsThrough({hit.center().x(), hit.top() - 10})) << "above it";
    }

    std::optional<ScreenPoint> saved() const
    {
        const auto x = defaults.number(QString::fromLatin1(PetWindowController::originXKey));
        const auto y = defaults.number(QString::fromLatin1(PetWindowController::originYKey));
        return x && y ? std::optional(ScreenPoint{*x, *y}) : std::nullopt;
    }

    /// By hand: press, a few moves, release. The way counts from where the drag is felt as one, so that has
    /// to be waited for.
    void drag(QPoint from, QPoint to)
    {
        const QPoint felt(6, 0);
        pointer(at(from) + QStringList{QStringLiteral("mousedown"), QStringLiteral("1")} + at(from + felt));
        EXPECT_TRUE(waitFor([this] { return model.state() == PetState::dragging; }));
        QStringList commands;
        for (int i = 1; i <= 6; ++i)
            commands += at(from + felt + (to - from) * i / 6) +
                        QStringList{QStringLiteral("sleep"), QStringLiteral("0.03")};
        pointer(commands + QStringList{QStringLiteral("mouseup"), QStringLiteral("1")});
    }
};

ApprovalPrompt somePrompt()
{
    ApprovalPrompt prompt;
    prompt.id = QUuid::createUuid();
    prompt.eventId = QUuid::createUuid();
    prompt.provider = AgentProvider{QStringLiteral("claude")};
    prompt.title = QStringLiteral("Run a command");
    prompt.command = QStringLiteral("cmake --build build");
    return prompt;
}

TEST(PetWindowDesktop, takesOnlyTheClicksOfThePetAndOfTheCard)
{
    Desk desk;
    desk.showPet();
    desk.expectClicksWhereTheyBelong();
    EXPECT_TRUE(desk.below.isActiveWindow()) << "the pet must not take the focus";

    const QPoint feet(desk.square().left() + 75, desk.square().bottom());
    // Each of these moves the border between what is taken and what falls through.
    for (const double scale : {2.0, 0.5, 1.0}) {
        SCOPED_TRACE(scale);
        desk.settings.change([scale](Settings& settings) { settings.petSizeScale = scale; });
        const int side = int(150 * scale);
        const QRect grown(feet.x() - (side + 1) / 2, feet.y() + 1 - side, side, side);
        EXPECT_TRUE(waitFor([&] { return desk.square() == grown; }));
        desk.expectClicksWhereTheyBelong();
        desk.showNothing();
    }
    desk.pet->window().hide();
    desk.pet->window().show();
    EXPECT_TRUE(waitFor([&] { return desk.takesClick(desk.square().center()); }));
    desk.expectClicksWhereTheyBelong();
    desk.showNothing();

    desk.model.showBubble(MessageBubble{QStringLiteral("Only words take no click.")}, true);
    ASSERT_TRUE(waitFor([&] { return !desk.bubble->preferredSize().isEmpty(); }));
    const auto inBubble = [&](QPoint place) { return desk.bubble->mapToGlobal(place); };
    EXPECT_TRUE(desk.fallsThrough(inBubble(desk.bubble->rect().center() - QPoint(0, 10))));

    desk.model.showBubble(ApprovalBubble{somePrompt()}, true);
    ASSERT_TRUE(waitFor([&] { return !desk.bubble->clickRegion().isEmpty(); }));
    const QPoint live = desk.bubble->clickRegion().begin()->center();
    const int before = desk.below.presses;
    // A press that leaves the button again answers nothing.
    pointer(at(inBubble(live)) + QStringList{QStringLiteral("mousedown"), QStringLiteral("1")});
    pointer({QStringLiteral("mousemove"), QStringLiteral("2"), QStringLiteral("2")});
    pointer({QStringLiteral("mouseup"), QStringLiteral("1")});
    EXPECT_TRUE(desk.fallsThrough({20, 20}));
    EXPECT_EQ(desk.below.presses, before + 1) << "the press on the card stayed on the card";
    EXPECT_TRUE(desk.model.bubbleVisible());
}

TEST(PetWindowDesktop, clicksReactionsHoverAndMenu)
{
    Desk desk;
    QGuiApplication::styleHints()->setMouseDoubleClickInterval(3000);
    desk.showPet();
    desk.model.setState(PetState::idle);

    int menus = 0;
    QObject::connect(desk.pet.get(), &PetWindowController::menuRequested, [&menus] { ++menus; });
    click(desk.square().center(), QStringLiteral("3"));
    EXPECT_TRUE(waitFor([&] { return menus == 1; }));
    EXPECT_NE(desk.model.state(), PetState::dragging);
    EXPECT_FALSE(desk.model.bubbleVisible());

    EXPECT_TRUE(waitFor([&] { return !desk.model.reactionActive(); }));
    pointer(at(desk.square().center()) + QStringList{QStringLiteral("click"), QStringLiteral("--repeat"),
                                                     QStringLiteral("2"), QStringLiteral("--delay"),
                                                     QStringLiteral("40"), QStringLiteral("1")});
    EXPECT_TRUE(waitFor([&] { return desk.model.reactionActive(); })) << "a double click pets it";
    EXPECT_TRUE(waitFor([&] { return !desk.model.reactionActive(); }));
    EXPECT_FALSE(desk.model.bubbleVisible()) << "and its first half is no click";

    click(desk.square().center());
    EXPECT_TRUE(waitFor([&] { return desk.model.bubbleVisible(); })) << "a single click toggles the bubble";
    QGuiApplication::styleHints()->setMouseDoubleClickInterval(400);
}

TEST(PetWindowDesktop, hoveringMakesACalmPetShy)
{
    Desk desk;
    desk.showPet();
    desk.model.setState(PetState::idle);
    bool shy = false;
    QObject::connect(&desk.model, &PetViewModel::stateChanged,
                     [&shy](PetState state) { shy = shy || state == PetState::reactShy; });
    // Not more often than every five seconds, and showing the pet was a visit already.
    EXPECT_TRUE(waitFor([&] {
        park();
        pointer(at(desk.square().center()));
        return waitFor([&] { return shy; }, 1000);
    }));
}

TEST(PetWindowDesktop, isDraggedSettlesSnapsAndIsFoundThereAgain)
{
    Desk desk;
    desk.showPet();
    const QRect screen = QGuiApplication::primaryScreen()->availableGeometry();
    EXPECT_FALSE(desk.saved());
    const QRect home = desk.square();
    EXPECT_EQ(home.center().x(), screen.right() - 24 - 140);
    EXPECT_EQ(home.bottom(), screen.bottom() - 24);

    desk.drag(home.center(), home.center() - QPoint(300, 200));
    ASSERT_TRUE(waitFor([&] { return desk.saved().has_value(); }));
    EXPECT_TRUE(waitFor([&] { return desk.square() == home.translated(-300, -200); }));
    EXPECT_TRUE(waitFor([&] { return desk.model.state() != PetState::dragging; }));
    EXPECT_EQ(desk.model.facing(), -1);
    EXPECT_EQ(desk.saved()->x, screen.width() - 280 - 24 - 300);
    EXPECT_EQ(desk.saved()->y, 24 + 200);
    EXPECT_TRUE(desk.below.isActiveWindow());
    desk.showNothing();
    desk.expectClicksWhereTheyBelong();
    desk.showNothing();

    // The panel's right edge into the zone beside the screen's.
    const QPoint grip = desk.square().center();
    desk.drag(grip, grip + QPoint(300, 0));
    ASSERT_TRUE(waitFor([&] { return desk.saved()->x == screen.width() - 280 - 12; }));
    EXPECT_TRUE(waitFor([&] { return desk.square().center().x() == screen.right() - 12 - 140; }));

    // Another start finds it there.
    const QRect place = desk.square();
    desk.presenter.reset();
    desk.pet.reset();
    desk.showPet();
    EXPECT_EQ(desk.square(), place);

    desk.pet->resetPosition();
    EXPECT_TRUE(waitFor([&] { return desk.square() == home; }));
    EXPECT_TRUE(waitFor([&] { return desk.saved()->x == screen.width() - 280 - 24; }));
}

TEST(PetWindowDesktop, liesAboveOrNotWithoutMoving)
{
    Desk desk;
    desk.showPet();
    const QRect place = desk.square();
    const auto above = [&] { return desk.property("_NET_WM_STATE").contains(QLatin1String("_ABOVE")); };
    EXPECT_TRUE(waitFor(above));
    EXPECT_TRUE(desk.property("_NET_WM_STATE").contains(QLatin1String("SKIP_TASKBAR")));
    const WId id = desk.pet->window().winId();

    desk.settings.change([](Settings& settings) { settings.alwaysOnTop = false; });
    EXPECT_TRUE(waitFor([&] { return !above(); }));
    run(QStringLiteral("xdotool"), {QStringLiteral("windowraise"), QString::number(desk.below.winId())});
    EXPECT_TRUE(waitFor([&] { return desk.fallsThrough(desk.square().center()); })) << "it can be covered";

    desk.settings.change([](Settings& settings) { settings.alwaysOnTop = true; });
    EXPECT_TRUE(waitFor([&] { return desk.takesClick(desk.square().center()); }));
    EXPECT_EQ(desk.pet->window().winId(), id) << "a window made anew would flicker";
    EXPECT_EQ(desk.square(), place);
}

TEST(PetWindowDesktop, followsScreensAndPanels)
{
    const auto xrandr = [](const QString& arguments) {
        run(QStringLiteral("xrandr"), arguments.split(QLatin1Char(' ')));
    };
    const auto split = [&] {
        xrandr(QStringLiteral("--setmonitor LEFT 640/170x600/150+0+0 screen"));
        xrandr(QStringLiteral("--setmonitor RIGHT 640/170x800/210+640+0 none"));
        return waitFor([] { return QGuiApplication::screens().size() == 2; });
    };
    const auto join = [&] {
        xrandr(QStringLiteral("--delmonitor RIGHT"));
        xrandr(QStringLiteral("--delmonitor LEFT"));
        return waitFor([] { return QGuiApplication::screens().size() == 1; });
    };
    Desk desk;
    ASSERT_TRUE(split());
    const QScreen* main = QGuiApplication::primaryScreen();
    desk.showPet();
    EXPECT_TRUE(waitFor([&] { return main->geometry().contains(desk.square()); }));
    const QPoint grip = desk.square().center();
    const QPoint other = main->geometry().left() == 0 ? QPoint(960, 700) : QPoint(320, 500);
    desk.drag(grip, other);
    ASSERT_TRUE(waitFor([&] { return desk.saved() && desk.square().contains(other); }));
    desk.showNothing();
    desk.expectClicksWhereTheyBelong();
    ASSERT_TRUE(join());

    // A panel of 60 pixels takes its part of the screen, and the home goes up with it.
    desk.pet->resetPosition();
    const QRect whole = QGuiApplication::primaryScreen()->geometry();
    EXPECT_TRUE(waitFor([&] { return desk.square().bottom() == whole.bottom() - 24; }));
    QWidget panel;
    panel.setWindowFlags(Qt::Window | Qt::FramelessWindowHint | Qt::WindowDoesNotAcceptFocus);
    panel.setGeometry(whole.left(), whole.bottom() - 59, whole.width(), 60);
    panel.winId();
    run(QStringLiteral("xprop"),
        {QStringLiteral("-id"), QString::number(panel.winId()), QStringLiteral("-f"),
         QStringLiteral("_NET_WM_STRUT"), QStringLiteral("32c"), QStringLiteral("-set"),
         QStringLiteral("_NET_WM_STRUT"), QStringLiteral("0, 0, 0, 60")});
    panel.show();
    EXPECT_TRUE(waitFor([&] { return desk.square().bottom() == whole.bottom() - 84; }));
    panel.close();
    EXPECT_TRUE(waitFor([&] { return desk.square().bottom() == whole.bottom() - 24; }));
}

TEST(PetWindowDesktop, outlivesTheWindowManager)
{
    Desk desk;
    desk.showPet();
    const QRect place = desk.square();
    const QStringList check{QStringLiteral("-root"), QStringLiteral("_NET_SUPPORTING_WM_CHECK")};
    run(QStringLiteral("xprop"), {QStringLiteral("-root"), QStringLiteral("-remove"), check.last()});
    run(QStringLiteral("openbox"), {QStringLiteral("--restart")});
    ASSERT_TRUE(
        waitFor([&] { return run(QStringLiteral("xprop"), check).contains(QLatin1String("window id")); }));
    EXPECT_TRUE(waitFor([&] { return desk.property("_NET_WM_STATE").contains(QLatin1String("_ABOVE")); }));
    EXPECT_TRUE(waitFor([&] { return desk.takesClick(desk.square().center()); }));
    EXPECT_TRUE(waitFor([&] { return desk.square() == place; }));
    desk.expectClicksWhereTheyBelong();
}

/// Last of all: it ends the compositor.
TEST(PetWindowDesktop, isCutOutWithoutACompositor)
{
    Desk desk;
    desk.showPet();
    park();
    const auto pixel = [](QPoint place) {
        return QGuiApplication::primaryScreen()->grabWindow(0).toImage().pixelColor(
            place * qGuiApp->devicePixelRatio());
    };
    const QColor behind(40, 160, 220);
    const QPoint corner = desk.square().topLeft() - QPoint(20, 20);
    ASSERT_TRUE(waitFor([&] { return pixel(corner) == behind; }));
    ASSERT_TRUE(desk.pet->blendsTransparency());

    auto* connection = qGuiApp->nativeInterface<QNativeInterface::QX11Application>()->connection();
    constexpr char name[] = "_NET_WM_CM_S0";
    auto* atom =
        xcb_intern_atom_reply(connection, xcb_intern_atom(connection, 0, sizeof name - 1, name), nullptr);
    auto* owner =
        xcb_get_selection_owner_reply(connection, xcb_get_selection_owner(connection, atom->atom), nullptr);
    xcb_kill_client(connection, owner->owner);
    xcb_flush(connection);
    std::free(owner);
    std::free(atom);

    ASSERT_TRUE(waitFor([&] { return !desk.pet->blendsTransparency(); }));
    EXPECT_TRUE(waitFor([&] { return pixel(corner) == behind; })) << "never a black box";
    EXPECT_TRUE(waitFor([&] {
        const QColor belly = pixel(desk.square().center() + QPoint(0, 40));
        return belly.lightness() > 180 && belly != behind;
    }));
    // What is cut away takes no clicks, so of the square only the pet itself does.
    EXPECT_TRUE(desk.takesClick(desk.square().center() + QPoint(0, 30)));
    EXPECT_TRUE(desk.fallsThrough(corner));

    QProcess compositor;
    compositor.start(QStringLiteral("picom"), {QStringLiteral("--config"), QStringLiteral("/dev/null"),
                                               QStringLiteral("--backend"), QStringLiteral("xrender")});
    EXPECT_TRUE(waitFor([&] { return desk.pet->blendsTransparency(); }));
    EXPECT_TRUE(waitFor([&] { return pixel(corner) == behind; }));
    compositor.terminate();
    EXPECT_TRUE(waitFor([&] { return compositor.state() == QProcess::NotRunning; }));
}

} // namespace
} // namespace nibbo
