#include "ScratchHome.h"

#include "hooks/HookBackups.h"
#include "hooks/SafeWriter.h"

#include <nlohmann/json.hpp>

#include <QProcess>

#include <functional>
#include <tuple>

namespace nibbo::test {
namespace {

using Json = nlohmann::json;

const QByteArray userSettings =
    R"({"model": "opus", "hooks": {"PreToolUse": [{"hooks": [{"command": "mine"}]}]}})";

Json parsed(const QByteArray& content)
{
    return Json::parse(content.begin(), content.end());
}

/// The other side writes between our reading and our writing.
class MeddlingFileSystem final : public PosixFileSystem
{
public:
    std::function<void()> meddle;

    Result<void> reserve(const QString& path, qint64 size) override
    {
        if (meddle)
            std::exchange(meddle, {})();
        return PosixFileSystem::reserve(path, size);
    }
};

TEST(HookInstallerTest, everyEntryHasTheSchemaOfItsFamily)
{
    ScratchHome home;
    home.enableAll();
    home.write("claude", userSettings);
    ASSERT_OK(home.installer().install());

    for (const ProviderSpec* spec : HookInstaller::specs()) {
        SCOPED_TRACE(spec->id.toStdString());
        const Json file = parsed(home.read(qPrintable(spec->id)));
        for (const QString& event : spec->events) {
            const Json& last = file.at("hooks").at(event.toStdString()).back();
            const Json command = "'" + home.home.toStdString() + "/.nibbo/bin/nibbo-bridge' --source " +
                                 spec->id.toStdString() + " --event " + event.toStdString();
            const Json timeout = hookTimeout(spec->family, event);
            Json expected;
            if (spec->mechanism == HookMechanism::cursorHooks) {
                expected = {{"command", command}, {"timeout", timeout}};
            } else {
                expected["hooks"] = {{{"type", "command"}, {"command", command}, {"timeout", timeout}}};
                if (const auto matcher = hookMatcher(spec->family, event))
                    expected["matcher"] = matcher->toStdString();
            }
            EXPECT_EQ(last, expected);
        }
    }
    const Json claude = parsed(home.read("claude"));
    EXPECT_EQ(claude["hooks"]["PreToolUse"].size(), 2U);
    EXPECT_EQ(claude["hooks"]["PreToolUse"][0]["hooks"][0]["command"], "mine");
    EXPECT_TRUE(parsed(home.read("codex"))["hooks"]["PreToolUse"][0]["matcher"] == "");
    EXPECT_EQ(parsed(home.read("gemini"))["hooks"]["BeforeTool"][0]["hooks"][0]["timeout"], 3600000);
    EXPECT_FALSE(home.read("claude").endsWith('\n'));
}

TEST(HookInstallerTest, cursorKeepsAVersionThatIsAnInteger)
{
    const std::vector<std::pair<QByteArray, Json>> rows{
        {"{}", 1},
        {R"({"version": 2})", 2},
        {R"({"version": -3})", -3},
        {R"({"version": "2"})", 1},
        {R"({"version": 1.5})", 1},
        {R"({"version": null})", 1},
    };
    for (const auto& [before, version] : rows) {
        ScratchHome home;
        home.enableOnly({QStringLiteral("cursor")});
        home.write("cursor", before);
        ASSERT_OK(home.installer().install());
        EXPECT_EQ(parsed(home.read("cursor")).at("version"), version) << before.constData();
    }
}

TEST(HookInstallerTest, theCommandRunsTheLauncherWhateverTheHomeIsCalled)
{
    for (const QString& name :
         {QStringLiteral("plain"), QStringLiteral("two words"), QStringLiteral("o'brien"),
          QStringLiteral("Jürgen"), QStringLiteral("$HOME `id` \"x\" \\ y"), QStringLiteral("中文")}) {
        SCOPED_TRACE(name.toStdString());
        ScratchHome home(name);
        home.enableAll();
        ASSERT_OK(home.installer().install());
        for (const bool wired : home.installer().status())
            EXPECT_TRUE(wired);
        const QByteArray script = "#!/bin/sh\nprintf '%s|' \"$0\" \"$@\"\n";
        const QString launcher = home.path(QStringLiteral(".nibbo/bin/nibbo-bridge"));
        ScratchHome::writeAt(launcher, script);
        const QStringList commands{
            QString::fromStdString(parsed(home.read("claude"))["hooks"]["Stop"][0]["hooks"][0]["command"]),
            QString::fromStdString(parsed(home.read("copilot"))["hooks"]["preToolUse"][0]["bash"]),
            QString::fromUtf8(
                ScratchHome::readAt(home.configPath("cline") + QStringLiteral("/TaskStart")).value()),
        };
        const QStringList expected{QStringLiteral("--source|claude|--event|Stop|"),
                                   QStringLiteral("--source|copilot|--event|preToolUse|"),
                                   QStringLiteral("--source|cline|--event|TaskStart|")};
        for (qsizetype i = 0; i < commands.size(); ++i) {
            QProcess shell;
            shell.start(QStringLiteral("/bin/sh"), {QStringLiteral("-c"), commands[i]});
            ASSERT_TRUE(shell.waitForFinished());
            EXPECT_EQ(QString::fromUtf8(shell.readAllStandardOutput()),
                      launcher + QLatin1Char('|') + expected[i]);
        }
        ASSERT_OK(home.installer().uninstall());
        for (const bool wired : home.installer().status())
            EXPECT_FALSE(wired);
    }
}

TEST(HookInstallerTest, disablingTakesOutOurEntriesAndKeepsTheUsers)
{
    ScratchHome home;
    home.enableAll();
    home.write("qwen", userSettings);
    ASSERT_OK(home.installer().install());
    home.write("qwen", home.read("qwen").replace("\"opus\"", "\"later\""));
    home.enableOnly({QStringLiteral("claude")});
    ASSERT_OK(home.installer().install());
    for (const auto& [id, wired] : home.installer().status().toStdMap())
        EXPECT_EQ(wired, id == QStringLiteral("claude")) << qUtf8Printable(id);
    const Json qwen = parsed(home.read("qwen"));
    EXPECT_EQ(qwen["model"], "later");
    EXPECT_EQ(qwen["hooks"], parsed(userSettings)["hooks"]);
}

TEST(HookInstallerTest, aDisabledAgentsFileWithoutOurEntriesIsNotTouched)
{
    ScratchHome home;
    home.enableOnly({});
    const QByteArray content = "{\"b\":1,\n\t\"a\" : {\"hooks\":[]},\"hooks\":{\"Stop\":[]}}";
    home.write("claude", content);
    ASSERT_OK(home.installer().install());
    ASSERT_OK(home.installer().uninstall());
    EXPECT_EQ(home.read("claude"), content);
}

TEST(HookInstallerTest, aScriptOfTheUsersIsKeptAndLogged)
{
    ScratchHome home;
    home.enableOnly({QStringLiteral("cline")});
    const QString script = home.configPath("cline") + QStringLiteral("/TaskStart");
    ScratchHome::writeAt(script, "#!/bin/sh\necho mine\n");
    ASSERT_OK(home.installer().install());
    EXPECT_TRUE(
        home.logText().contains(QStringLiteral("hook install: Cline keeping existing TaskStart hook")));
    EXPECT_TRUE(home.installer().status().value(QStringLiteral("cline")));
    const QFileInfo other(home.configPath("cline") + QStringLiteral("/PreToolUse"));
    EXPECT_TRUE(other.isExecutable());
    ASSERT_OK(home.installer().uninstall());
    EXPECT_EQ(*ScratchHome::readAt(script), "#!/bin/sh\necho mine\n");
    EXPECT_EQ(QDir(home.configPath("cline")).entryList(QDir::Files),
              QStringList{QStringLiteral("TaskStart")});
}

TEST(HookInstallerTest, aForeignFileAtAPlaceOfOursIsPutAsideFirst)
{
    for (const char* id : {"opencode", "copilot"}) {
        ScratchHome home;
        home.enableOnly({QString::fromLatin1(id)});
        home.write(id, "somebody's work");
        ASSERT_OK(home.installer().install());
        EXPECT_TRUE(home.installer().status().value(QString::fromLatin1(id)));
        EXPECT_TRUE(home.backupContents().contains("somebody's work")) << id;
    }
}

TEST(HookInstallerTest, withoutABackupTheEntriesAreStrippedAndTheRestStays)
{
    ScratchHome home;
    home.enableOnly({QStringLiteral("claude")});
    home.write(
        "claude",
        R"({"model": "x", "hooks": {"Stop": [{"command": "mine"}, {"hooks": [{"command": "a nibbo-bridge b"}]}],
        "Else": [{"command": "vibe-island"}], "SessionEnd": [{"command": "nibbo-bridge"}],
        "PreToolUse": [{"matcher": "m", "hooks": [{"command": "nibbo-bridge"}, {"command": "theirs"}]}]}})");
    ASSERT_OK(home.installer().uninstall());
    EXPECT_EQ(
        parsed(home.read("claude")),
        Json::parse(
            R"({"model": "x", "hooks": {"Stop": [{"command": "mine"}], "Else": [{"command": "vibe-island"}],
                  "PreToolUse": [{"matcher": "m", "hooks": [{"command": "theirs"}]}]}})"));
}

TEST(HookInstallerTest, manyInstallsWithinOneSecondLoseNoBackupAndComeBackToTheFirst)
{
    ScratchHome home;
    home.enableOnly({QStringLiteral("claude"), QStringLiteral("gemini")});
    home.write("claude", userSettings);
    home.write("gemini", "// my theme\n{\"theme\": \"dark\",}\n");
    for (int i = 0; i < 12; ++i)
        ASSERT_OK(home.installer().install());
    SafeWriter writer(home.files, home.path(QStringLiteral("journal")));
    HookBackups backups(home.files, writer, home.time, home.backupsPath());
    EXPECT_EQ(backups.sets().size(), 12);
    EXPECT_EQ(backups.latest(), backups.sets().front());
    EXPECT_TRUE(backups.latest()->endsWith(QStringLiteral("-12")));
    EXPECT_TRUE(home.backupContents().contains(userSettings));

    ASSERT_OK(home.installer().uninstall());
    EXPECT_EQ(home.read("claude"), userSettings);
    EXPECT_EQ(home.read("gemini"), "// my theme\n{\"theme\": \"dark\",}\n");
}

TEST(HookInstallerTest, aBackupThatHeldOurEntriesIsStrippedWhenItComesBack)
{
    ScratchHome home;
    home.enableOnly({QStringLiteral("claude")});
    home.write("claude", userSettings);
    ASSERT_OK(home.installer().install());
    ASSERT_TRUE(QDir(home.backupsPath()).removeRecursively());
    home.time.advance(Seconds(5));
    ASSERT_OK(home.installer().install());
    ASSERT_OK(home.installer().uninstall());
    EXPECT_FALSE(home.installer().status().value(QStringLiteral("claude")));
    EXPECT_EQ(parsed(home.read("claude")), parsed(userSettings));
}

TEST(HookInstallerTest, whatTheUserWroteSinceTheInstallIsKeptAtTheUninstall)
{
    ScratchHome home;
    home.enableOnly({QStringLiteral("claude")});
    home.write("claude", userSettings);
    ASSERT_OK(home.installer().install());
    const QByteArray later = home.read("claude").replace("\"opus\"", "\"sonnet\"");
    home.write("claude", later);
    home.time.advance(Seconds(60));
    ASSERT_OK(home.installer().uninstall());
    EXPECT_EQ(home.read("claude"), userSettings);
    EXPECT_TRUE(home.backupContents().contains(later));
    EXPECT_TRUE(
        home.logText().contains(QStringLiteral("was changed since the install, that version is kept in ")));
    EXPECT_TRUE(home.logText().contains(QStringLiteral("hook restore: Claude from backup ")));

    // A second removal does not go back in time once more.
    home.write("claude", R"({"model": "next year"})");
    ASSERT_OK(home.installer().uninstall());
    EXPECT_EQ(home.read("claude"), R"({"model": "next year"})");
}

TEST(HookInstallerTest, nothingIsWrittenWhereAToolOnlyChangedTheLayout)
{
    ScratchHome home;
    home.enableOnly({QStringLiteral("claude")});
    home.write("claude", userSettings);
    ASSERT_OK(home.installer().install());
    const QByteArray compact = QByteArray::fromStdString(parsed(home.read("claude")).dump());
    home.write("claude", compact);
    ASSERT_OK(home.installer().install());
    EXPECT_EQ(home.read("claude"), compact);
    EXPECT_EQ(home.installer().ensureHealthy(), HookHealth::healthy);
    EXPECT_EQ(home.read("claude"), compact);
}

TEST(HookInstallerTest, aFileThatChangesInBetweenIsTakenUpAgain)
{
    ScratchHome home;
    home.enableOnly({QStringLiteral("claude")});
    home.write("claude", userSettings);
    MeddlingFileSystem meddling;
    const QByteArray theirs = R"({"model": "just now"})";
    meddling.meddle = [&] { home.write("claude", theirs); };
    ASSERT_OK(home.installer(meddling).install());
    EXPECT_EQ(parsed(home.read("claude"))["model"], "just now");
    EXPECT_TRUE(home.installer().status().value(QStringLiteral("claude")));
    ASSERT_OK(home.installer().uninstall());
    EXPECT_EQ(home.read("claude"), theirs);
}

TEST(HookInstallerTest, ensureHealthyRepairsWhatIsEnabledAndSaysSo)
{
    ScratchHome home;
    home.enableOnly({QStringLiteral("claude"), QStringLiteral("opencode")});
    EXPECT_EQ(home.installer().ensureHealthy(), HookHealth::repaired);
    EXPECT_EQ(home.installer().ensureHealthy(), HookHealth::healthy);
    const QString launcher = home.path(QStringLiteral(".nibbo/bin/nibbo-bridge"));
    ASSERT_TRUE(QFile::remove(launcher));
    ASSERT_TRUE(QFile::remove(home.configPath("opencode")));
    EXPECT_EQ(home.installer().ensureHealthy(), HookHealth::repaired);
    EXPECT_TRUE(QFileInfo(launcher).isExecutable());
    home.write("claude", R"({"hooks": {}})");
    EXPECT_EQ(home.installer().ensureHealthy(), HookHealth::repaired);
    EXPECT_EQ(home.installer().ensureHealthy(), HookHealth::healthy);
    ASSERT_TRUE(QFile::remove(home.configPath("claude")));
    ASSERT_TRUE(QDir().mkpath(home.configPath("claude")));
    EXPECT_EQ(home.installer().ensureHealthy(), HookHealth::failed);
    for (const auto* line : {"hook ensure: healthy, no action", "hook ensure: repaired stale/missing hooks",
                             "hook ensure: repair FAILED: "})
        EXPECT_TRUE(home.logText().contains(QString::fromLatin1(line))) << line;
    EXPECT_TRUE(
        home.logText().contains(QStringLiteral("hook install: Claude -> ") + home.configPath("claude")));
}

TEST(HookInstallerTest, watchesTheExistingFilesOfEnabledAgentsButNoScripts)
{
    ScratchHome home;
    home.enableAll();
    EXPECT_TRUE(home.installer().watchedConfigFiles().isEmpty());
    ASSERT_OK(home.installer().install());
    EXPECT_EQ(home.installer().watchedConfigFiles().size(), 11);
    home.enabled[QStringLiteral("claude")] = false;
    EXPECT_EQ(home.installer().watchedConfigFiles().front(), home.configPath("codex"));
    home.enabled.clear();
    EXPECT_EQ(home.installer().watchedConfigFiles(),
              (QStringList{home.configPath("claude"), home.configPath("codex"), home.configPath("gemini"),
                           home.configPath("opencode")}));
}

TEST(HookInstallerTest, oneBackedUpFileCanBePutBackAlone)
{
    ScratchHome home;
    home.enableOnly({QStringLiteral("claude"), QStringLiteral("codex")});
    home.write("claude", userSettings);
    home.write("codex", "{}");
    ASSERT_OK(home.installer().install());
    const auto backups = home.installer().backups();
    ASSERT_EQ(backups.size(), 2U);
    EXPECT_EQ(backups[0].providerId, QStringLiteral("claude"));
    EXPECT_EQ(backups[0].size, userSettings.size());
    const QByteArray wired = home.read("claude");
    ASSERT_OK(home.installer().restore(backups[0]));
    EXPECT_EQ(home.read("claude"), userSettings);
    EXPECT_TRUE(home.installer().status().value(QStringLiteral("codex")));
    EXPECT_TRUE(home.backupContents().contains(wired)) << "what was replaced is gone";
    EXPECT_FALSE(
        home.installer().restore({QStringLiteral("20000101-000000"), QStringLiteral("claude"), {}, 0}));
    EXPECT_FALSE(home.installer().restore({backups[0].set, QStringLiteral("nobody"), {}, 0}));
}

TEST(HookInstallerTest, aLatestThatLeadsElsewhereIsNotFollowed)
{
    ScratchHome home;
    home.enableOnly({QStringLiteral("claude")});
    home.write("claude", userSettings);
    ASSERT_OK(home.installer().install());
    ScratchHome::writeAt(home.home + QStringLiteral("/evil/claude-settings.json"), "{\"evil\": 1}");
    for (const QByteArray& name : {QByteArray("../../../../evil"), QByteArray("/etc"), QByteArray(""),
                                   QByteArray("19990101-000000\n")}) {
        ScratchHome::writeAt(home.backupsPath() + QStringLiteral("/latest.txt"), name);
        ASSERT_OK(home.installer().uninstall());
        EXPECT_EQ(home.read("claude"), userSettings) << name.constData();
        ASSERT_OK(home.installer().install());
    }
}

} // namespace
} // namespace nibbo::test
