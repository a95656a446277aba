// The hook flags: their lines, and the real program under its real conditions.
#include "hooks/ScratchHome.h"

#include "app/HookCommands.h"

#include <QProcess>

#include <memory>
#include <sstream>
#include <vector>

namespace nibbo::test {
namespace {

const QByteArray userSettings =
    R"({"model": "opus", "n": 1.10, "hooks": {"Stop": [{"hooks": [{"command": "mine"}]}]}})";

std::string lineOf(ScratchHome& home, const QStringList& arguments)
{
    HookInstaller installer = home.installer();
    std::ostringstream out;
    EXPECT_EQ(runHookCommand(arguments, installer, out), std::optional(0));
    return out.str();
}

TEST(HookCommandsTest, everyFlagPrintsItsLine)
{
    ScratchHome home;
    home.enableOnly({QStringLiteral("claude"), QStringLiteral("cline")});
    const std::string nothing =
        "nibbo: hooks-status claude=false cline=false codebuddy=false codex=false copilot=false cursor=false "
        "gemini=false iflow=false kimi=false opencode=false qoder=false qwen=false\n";
    EXPECT_EQ(lineOf(home, {QStringLiteral("--hooks-status")}), nothing);
    EXPECT_EQ(lineOf(home, {QStringLiteral("-x"), QStringLiteral("--install-hooks")}),
              "nibbo: install-hooks OK\n");
    EXPECT_EQ(lineOf(home, {QStringLiteral("--hooks-status")}).substr(0, 60),
              "nibbo: hooks-status claude=true cline=true codebuddy=false c");
    EXPECT_EQ(lineOf(home, {QStringLiteral("--hooks-status"), QStringLiteral("--uninstall-hooks")}),
              "nibbo: uninstall-hooks OK\n");
    EXPECT_EQ(lineOf(home, {QStringLiteral("--hooks-status")}), nothing);
}

TEST(HookCommandsTest, aFailureIsOnlyInTheLine)
{
    ScratchHome home;
    home.enableOnly({QStringLiteral("claude")});
    ASSERT_TRUE(QDir().mkpath(home.configPath("claude")));
    const std::string line = lineOf(home, {QStringLiteral("--install-hooks")});
    EXPECT_EQ(line.rfind("nibbo: install-hooks FAILED: ", 0), 0U) << line;
    EXPECT_NE(line.find(home.configPath("claude").toStdString()), std::string::npos) << line;
}

TEST(HookCommandsTest, otherArgumentsAreNoneOfItsBusiness)
{
    ScratchHome home;
    HookInstaller installer = home.installer();
    std::ostringstream out;
    for (const QString& argument : {QStringLiteral("--hooks"), QStringLiteral("install-hooks"),
                                    QStringLiteral("--install-hooks2"), QString()})
        EXPECT_FALSE(runHookCommand({argument}, installer, out));
    EXPECT_EQ(out.str(), "");
}

/// The program itself, without a display or a bus.
class NibboProgram : public ::testing::Test
{
protected:
    std::unique_ptr<QProcess> start(const QString& flag)
    {
        auto process = std::make_unique<QProcess>();
        QProcessEnvironment environment;
        environment.insert(QStringLiteral("HOME"), home.home);
        environment.insert(QStringLiteral("PATH"), QStringLiteral("/usr/bin:/bin"));
        // What sanitizers of the build are told holds for the program as well.
        for (const QString& name : {QStringLiteral("ASAN_OPTIONS"), QStringLiteral("UBSAN_OPTIONS"),
                                    QStringLiteral("TSAN_OPTIONS")})
            environment.insert(name, qEnvironmentVariable(qPrintable(name)));
        process->setProcessEnvironment(environment);
        process->start(QStringLiteral(NIBBO_BUILD_DIR "/bin/nibbo"), {flag});
        return process;
    }
    QByteArray run(const QString& flag)
    {
        const auto process = start(flag);
        EXPECT_TRUE(process->waitForFinished(60000));
        EXPECT_EQ(process->exitStatus(), QProcess::NormalExit);
        EXPECT_EQ(process->exitCode(), 0);
        return process->readAllStandardOutput();
    }

    ScratchHome home{QStringLiteral("it's a $HOME of Zoë")};
};

TEST_F(NibboProgram, needsNoDisplayAndObeysTheStoredFlags)
{
    home.write("claude", userSettings);
    ScratchHome::writeAt(home.path(QStringLiteral(".config/nibbo/defaults.json")),
                         R"({"settings.enable.codex": false, "settings.enable.qwen": true})");
    EXPECT_EQ(run(QStringLiteral("--install-hooks")), "nibbo: install-hooks OK\n");
    EXPECT_EQ(
        run(QStringLiteral("--hooks-status")),
        "nibbo: hooks-status claude=true cline=false codebuddy=false codex=false copilot=false cursor=false "
        "gemini=true iflow=false kimi=false opencode=true qoder=false qwen=true\n");
    EXPECT_EQ(run(QStringLiteral("--uninstall-hooks")), "nibbo: uninstall-hooks OK\n");
    EXPECT_EQ(home.read("claude"), userSettings);
}

TEST_F(NibboProgram, manyAtOnceLoseNoBackupAndDoNotInterleave)
{
    home.write("claude", userSettings);
    std::vector<std::unique_ptr<QProcess>> all;
    constexpr int count = 8;
    for (int i = 0; i < count; ++i)
        all.push_back(start(QStringLiteral("--install-hooks")));
    for (const auto& process : all) {
        ASSERT_TRUE(process->waitForFinished(60000));
        EXPECT_EQ(process->readAllStandardOutput(), "nibbo: install-hooks OK\n");
    }
    EXPECT_EQ(home.backupContents().count(userSettings), 1);
    EXPECT_EQ(QDir(home.backupsPath()).entryList(QDir::Dirs | QDir::NoDotAndDotDot).size(), count);

    all.clear();
    for (int i = 0; i < count; ++i)
        all.push_back(
            start(i % 2 == 0 ? QStringLiteral("--install-hooks") : QStringLiteral("--uninstall-hooks")));
    for (const auto& process : all) {
        ASSERT_TRUE(process->waitForFinished(60000));
        EXPECT_TRUE(process->readAllStandardOutput().endsWith(" OK\n"));
    }
    EXPECT_EQ(run(QStringLiteral("--uninstall-hooks")), "nibbo: uninstall-hooks OK\n");
    EXPECT_EQ(home.read("claude"), userSettings);
}

TEST_F(NibboProgram, killedAtAnyMomentItLeavesNothingThatTheNextRunDoesNotMend)
{
    home.write("claude", userSettings);
    home.write("codex", "[\"not an object\"]");
    for (unsigned round = 0; round < 24; ++round) {
        const auto process =
            start(round % 3 == 2 ? QStringLiteral("--uninstall-hooks") : QStringLiteral("--install-hooks"));
        ASSERT_TRUE(process->waitForStarted(60000));
        // Where it is by then differs from run to run, and that is the point.
        process->waitForFinished(static_cast<int>(1 + round));
        process->kill();
        process->waitForFinished(60000);
    }
    EXPECT_EQ(run(QStringLiteral("--uninstall-hooks")), "nibbo: uninstall-hooks OK\n");
    EXPECT_FALSE(run(QStringLiteral("--hooks-status")).contains("=true"));
    EXPECT_EQ(home.read("claude"), userSettings);
    EXPECT_EQ(home.read("codex"), "[\"not an object\"]");
}

} // namespace
} // namespace nibbo::test
