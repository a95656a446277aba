#include "ScratchHome.h"

#include "hooks/HookGuardian.h"
#include "hooks/HookWatch.h"
#include "support/Wait.h"

#include <memory>

namespace nibbo::test {
namespace {

const QByteArray bare = R"({"hooks": {}, "model": "x"})";

/// A watch on this thread, whose delay passes when the test says so.
class HookWatchTest : public ::testing::Test
{
protected:
    HookWatchTest()
    {
        home.enableOnly({QStringLiteral("claude"), QStringLiteral("codex")});
        EXPECT_EQ(errorOf(home.installer().install()), "");
        watch = std::make_unique<HookWatch>([this] { return home.installer(); }, home.time, home.time);
        QObject::connect(watch.get(), &HookWatch::checked, watch.get(),
                         [this](HookHealth health) { checks.append(health); });
        QObject::connect(watch.get(), &HookWatch::changed, watch.get(),
                         [this](const QString& path) { changes.append(path); });
    }

    /// All that was written so far has been seen: the watcher tells things in their order.
    void settle()
    {
        changes.clear();
        home.write("codex", home.read("codex") + " ");
        ASSERT_TRUE(waitFor([this] { return changes.contains(home.configPath("codex")); }));
    }

    ScratchHome home;
    std::unique_ptr<HookWatch> watch;
    QList<HookHealth> checks;
    QStringList changes;
};

TEST_F(HookWatchTest, aBurstOfSavesIsOneCheckOneSecondAfterTheLast)
{
    watch->start();
    EXPECT_TRUE(home.logText().contains(QStringLiteral("hook guardian: watching 2 config file(s)")));
    const QByteArray wired = home.read("claude");
    for (int i = 0; i < 5; ++i) {
        home.write("claude", wired + QByteArray(i + 1, ' '));
        settle();
        home.time.advance(Seconds(0.1));
    }
    EXPECT_TRUE(checks.isEmpty());
    home.time.advance(Seconds(0.85));
    EXPECT_TRUE(checks.isEmpty());
    home.time.advance(Seconds(0.1));
    EXPECT_EQ(checks, QList<HookHealth>{HookHealth::healthy});
    EXPECT_EQ(home.time.waiting(), 0);
}

TEST_F(HookWatchTest, entriesThatWereTakenOutComeBackAndThenThereIsQuiet)
{
    watch->start();
    home.write("claude", bare);
    ASSERT_TRUE(waitFor([this] { return home.time.waiting() > 0; }));
    home.time.advance(Seconds(1));
    EXPECT_EQ(checks, QList<HookHealth>{HookHealth::repaired});
    EXPECT_TRUE(home.installer().status().value(QStringLiteral("claude")));
    EXPECT_TRUE(home.read("claude").contains("\"model\": \"x\""));

    // Our own writing is noticed too, and found in order.
    settle();
    home.time.advance(Seconds(1));
    EXPECT_EQ(checks.last(), HookHealth::healthy);
    settle();
    home.time.advance(Seconds(1));
    EXPECT_EQ(checks.last(), HookHealth::healthy);
    EXPECT_EQ(home.time.waiting(), 0);
}

TEST_F(HookWatchTest, aFileThatIsReplacedByRenameStaysWatched)
{
    watch->start();
    for (int round = 0; round < 2; ++round) {
        checks.clear();
        const QString other = home.path(QStringLiteral(".claude/settings.tmp"));
        ScratchHome::writeAt(other, bare);
        ASSERT_EQ(std::rename(QFile::encodeName(other).constData(),
                              QFile::encodeName(home.configPath("claude")).constData()),
                  0);
        ASSERT_TRUE(waitFor([this] { return home.time.waiting() > 0; }));
        home.time.advance(Seconds(1));
        ASSERT_FALSE(checks.isEmpty());
        EXPECT_EQ(checks.first(), HookHealth::repaired) << round;
        settle();
        home.time.advance(Seconds(1));
    }
}

TEST_F(HookWatchTest, aReplacedLinkIsNoticed)
{
    const QString real = home.path(QStringLiteral("dotfiles/settings.json"));
    ScratchHome::writeAt(real, home.read("claude"));
    ASSERT_TRUE(QFile::remove(home.configPath("claude")));
    ASSERT_TRUE(QFile::link(real, home.configPath("claude")));
    watch->start();
    // What else happens in the folder is nobody's business.
    ScratchHome::writeAt(home.path(QStringLiteral(".claude/history.jsonl")), "x");
    settle();
    EXPECT_FALSE(changes.contains(home.configPath("claude")));
    home.time.advance(Seconds(1));

    const QString other = home.path(QStringLiteral(".claude/settings.tmp"));
    ScratchHome::writeAt(other, bare);
    ASSERT_EQ(std::rename(QFile::encodeName(other).constData(),
                          QFile::encodeName(home.configPath("claude")).constData()),
              0);
    ASSERT_TRUE(waitFor([this] { return changes.contains(home.configPath("claude")); }));
    home.time.advance(Seconds(1));
    EXPECT_EQ(checks.last(), HookHealth::repaired);
}

TEST_F(HookWatchTest, aFileThatWasDeletedIsMadeAgainAndWatched)
{
    watch->start();
    ASSERT_TRUE(QFile::remove(home.configPath("claude")));
    ASSERT_TRUE(waitFor([this] { return home.time.waiting() > 0; }));
    home.time.advance(Seconds(1));
    EXPECT_EQ(checks.first(), HookHealth::repaired);
    settle();
    changes.clear();
    home.write("claude", bare);
    EXPECT_TRUE(waitFor([this] { return changes.contains(home.configPath("claude")); }));
}

TEST_F(HookWatchTest, aProgramThatKeepsTakingTheHooksOutIsMetLessOften)
{
    watch->start();
    int repairs = 0;
    double seconds = 0;
    while (repairs < 8) {
        home.write("claude", bare);
        ASSERT_TRUE(waitFor([this] { return home.time.waiting() > 0; }));
        checks.clear();
        for (int step = 0; checks.isEmpty(); ++step) {
            ASSERT_LT(step, 100);
            home.time.advance(Seconds(1));
            seconds += 1;
        }
        repairs += static_cast<int>(checks.count(HookHealth::repaired));
    }
    EXPECT_GT(seconds, 60);
    EXPECT_TRUE(home.logText().contains(QStringLiteral("another program keeps taking the hooks out")));
}

TEST_F(HookWatchTest, whatTheUserRemovedStaysRemovedUntilTheNextInstall)
{
    watch->start();
    ASSERT_OK(home.installer().uninstall());
    settle();
    home.time.advance(Seconds(1));
    EXPECT_TRUE(checks.isEmpty());
    EXPECT_FALSE(home.installer().status().value(QStringLiteral("claude")));
    EXPECT_TRUE(home.logText().contains(QStringLiteral("removed on purpose")));

    ASSERT_OK(home.installer().install());
    home.write("claude", bare);
    settle();
    home.time.advance(Seconds(1));
    EXPECT_EQ(checks.last(), HookHealth::repaired);
}

TEST_F(HookWatchTest, withNothingToWatchItSaysSo)
{
    home.enableOnly({QStringLiteral("cline")});
    ASSERT_OK(home.installer().install());
    watch->start();
    EXPECT_TRUE(home.logText().contains(QStringLiteral("hook guardian: watching 0 config file(s)")));
}

TEST(HookGuardianTest, repairsOnAThreadOfItsOwn)
{
    ScratchHome home;
    home.enableOnly({QStringLiteral("claude")});
    ASSERT_OK(home.installer().install());
    const HookEnvironment environment = home.environment();
    const SystemClock clock;
    PosixFileSystem files;
    {
        HookGuardian guardian([&] { return HookInstaller(environment, files, clock); });
        guardian.start();
        ASSERT_TRUE(waitFor([&] { return home.logText().contains(QStringLiteral("watching 1 config")); }));
        home.write("claude", bare);
        EXPECT_TRUE(
            waitFor([&] { return home.logText().contains(QStringLiteral("hook ensure: repaired")); }));
        EXPECT_TRUE(waitFor([&] { return home.installer().status().value(QStringLiteral("claude")); }));
    }
    // Never started, or ended at once: no thread is left behind.
    HookGuardian idle([&] { return HookInstaller(environment, files, clock); });
    HookGuardian brief([&] { return HookInstaller(environment, files, clock); });
    brief.start();
}

} // namespace
} // namespace nibbo::test
