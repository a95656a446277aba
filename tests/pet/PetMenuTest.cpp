#include "pet/PetViewModel.h"
#include "pet/view/PetMenuController.h"
#include "settings/Settings.h"
#include "support/ManualTime.h"

#include <QAction>
#include <QCoreApplication>
#include <QMenu>
#include <QTimer>

#include <gtest/gtest.h>

namespace nibbo {
namespace {

using namespace std::chrono_literals;

class PetMenuTest : public ::testing::Test
{
protected:
    QStringList titles()
    {
        menu = controller.makeMenu();
        QStringList all;
        for (const QAction* action : menu->actions())
            all += action->isSeparator() ? QStringLiteral("-") : action->text();
        return all;
    }
    void choose(const QString& title)
    {
        menu = controller.makeMenu();
        for (QAction* action : menu->actions()) {
            if (action->text() == title)
                return action->trigger();
        }
        FAIL() << "no item " << qUtf8Printable(title);
    }

    test::ManualTime time;
    test::ScriptedRandom random;
    Settings settings;
    PetViewModel model{time, time, random, [this]() -> const Settings& { return settings; }};
    AppLanguage language = AppLanguage::en;
    PetMenuController controller{model, [this] { return language; }};
    std::unique_ptr<QMenu> menu;
};

TEST_F(PetMenuTest, listsEveryStateThenTheCommands)
{
    const QStringList states{
        QStringLiteral("Set Idle"),       QStringLiteral("Set Thinking"),
        QStringLiteral("Set Coding"),     QStringLiteral("Set Reading"),
        QStringLiteral("Set Searching"),  QStringLiteral("Set Running"),
        QStringLiteral("Set Browsing"),   QStringLiteral("Set Planning"),
        QStringLiteral("Set Compacting"), QStringLiteral("Set Responding"),
        QStringLiteral("Set Approval"),   QStringLiteral("Set Input"),
        QStringLiteral("Set Success"),    QStringLiteral("Set Warning"),
        QStringLiteral("Set Sleeping"),   QStringLiteral("Set Dragging"),
        QStringLiteral("Set Coffee"),     QStringLiteral("Set Relaxing"),
        QStringLiteral("Set Walking"),    QStringLiteral("Set Drowsy"),
        QStringLiteral("React Startled"), QStringLiteral("React Grumpy"),
        QStringLiteral("React Shoo"),     QStringLiteral("React Happy"),
        QStringLiteral("React Shy"),      QStringLiteral("-"),
    };
    EXPECT_EQ(titles(), states + QStringList({QStringLiteral("Reset Nibbo Position"),
                                              QStringLiteral("Settings…"), QStringLiteral("Quit Nibbo")}));
    language = AppLanguage::zh;
    EXPECT_EQ(titles(), states + QStringList({QStringLiteral("重置 Nibbo 位置"), QStringLiteral("设置…"),
                                              QStringLiteral("退出 Nibbo")}));
}

TEST_F(PetMenuTest, everyStateItemSetsItsStateAndSaysSo)
{
    menu = controller.makeMenu();
    for (size_t index = 0; index < allPetStates().size(); ++index) {
        const PetState state = allPetStates()[index];
        QAction* action = menu->actions()[static_cast<qsizetype>(index)];
        EXPECT_EQ(action->data().toString(), rawValue(state));
        action->trigger();
        EXPECT_EQ(model.state(), state);
        EXPECT_EQ(model.bubble(), PetBubbleKind(MessageBubble{bubbleText(state, language)}));
        EXPECT_TRUE(model.bubbleVisible());
    }
    time.advance(10s);
    EXPECT_FALSE(model.bubbleVisible()) << "the word goes by itself";
}

TEST_F(PetMenuTest, anItemWithoutAStateIsIgnored)
{
    menu = controller.makeMenu();
    QAction* action = menu->actions().first();
    action->setData(QStringLiteral("flying"));
    action->trigger();
    action->setData(QVariant());
    action->trigger();
    EXPECT_EQ(model.state(), PetState::idle);
    EXPECT_FALSE(model.bubbleVisible());
}

TEST_F(PetMenuTest, commandsCallTheirHandlersOnceTheyAreSet)
{
    choose(QStringLiteral("Reset Nibbo Position"));
    choose(QStringLiteral("Settings…"));
    int resets = 0;
    int openings = 0;
    controller.setResetPositionHandler([&] { ++resets; });
    controller.setOpenSettingsHandler([&] { ++openings; });
    choose(QStringLiteral("Reset Nibbo Position"));
    EXPECT_EQ(resets, 1);
    EXPECT_EQ(openings, 0);
    choose(QStringLiteral("Settings…"));
    EXPECT_EQ(openings, 1);
}

TEST_F(PetMenuTest, quitEndsTheEventLoop)
{
    QTimer::singleShot(0, &controller, [this] { choose(QStringLiteral("Quit Nibbo")); });
    QTimer::singleShot(30s, &controller, [] { QCoreApplication::exit(7); });
    EXPECT_EQ(QCoreApplication::exec(), 0);
}

TEST_F(PetMenuTest, aMenuThatStaysIsFilledAnew)
{
    QMenu lasting;
    controller.fill(lasting);
    const qsizetype items = lasting.actions().size();
    language = AppLanguage::zh;
    controller.fill(lasting);
    EXPECT_EQ(lasting.actions().size(), items);
    EXPECT_EQ(lasting.actions().last()->text(), QStringLiteral("退出 Nibbo"));
}

} // namespace
} // namespace nibbo
