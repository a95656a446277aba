#include "hooks/ScratchHome.h"

#include "app/Doctor.h"
#include "intake/LocalSocketServer.h"
#include "support/Wait.h"

#include <atomic>
#include <functional>

namespace nibbo::test {
namespace {

/// Never reached but by what hangs for ever.
constexpr Doctor::Limits patient{std::chrono::seconds(60), std::chrono::seconds(60),
                                 std::chrono::seconds(60)};

class DoctorTest : public ::testing::Test
{
protected:
    Doctor doctor(Doctor::Limits limits = patient)
    {
        return Doctor(home.environment(), home.files, home.time,
                      ExecutableFinder(home.home, home.path(QStringLiteral("root"))), limits);
    }
    void program(const char* name, const QByteArray& script)
    {
        const QString path = home.path(QStringLiteral(".local/bin/") + QLatin1String(name));
        ScratchHome::writeAt(path, "#!/bin/sh\n" + script);
        ASSERT_TRUE(QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
    }
    QString lineOf(const char* title, Doctor::Limits limits = patient)
    {
        const QStringList lines = doctor(limits).agents();
        EXPECT_EQ(lines.size(), 12);
        for (const QString& line : lines) {
            if (line.startsWith(QLatin1String(title) + QStringLiteral(": ")))
                return line;
        }
        return {};
    }

    ScratchHome home;
};

TEST_F(DoctorTest, tellsOfEachAgentWhatIsKnown)
{
    home.enableOnly({QStringLiteral("claude"), QStringLiteral("copilot"), QStringLiteral("codex")});
    program("claude", "echo '2.1.3 (Claude Code)'\necho more\n");
    program("copilot", "printf '\\033[31m1.0\\007\\n'\n");
    program("cursor", "exit 3\n");
    ScratchHome::writeAt(
        AppPaths(home.home).agentLogFile(),
        "[2026-11-20 10:00:00 +0000] Claude thinking: old\n[2026-11-21 11:00:00 +0000] Claude coding: new\n"
        "[2026-11-21 12:00:00 +0000] Cursor thinking: Claude thinking: a trick\nnonsense\n");
    EXPECT_EQ(lineOf("Claude"),
              QStringLiteral("Claude: found at %1, version 2.1.3 (Claude Code); enabled; not wired; "
                             "last event 2026-11-21 11:00:00 +0000 -- run nibbo --install-hooks")
                  .arg(home.path(QStringLiteral(".local/bin/claude"))));
    ASSERT_OK(home.installer().install());
    EXPECT_TRUE(lineOf("Claude").contains(QStringLiteral("; enabled; wired; ")));
    EXPECT_TRUE(lineOf("Copilot CLI").contains(QStringLiteral("version [31m1.0;")));
    EXPECT_EQ(lineOf("Codex"), QStringLiteral("Codex: not found; enabled; wired; no event yet"));
    EXPECT_EQ(lineOf("Cursor"),
              QStringLiteral("Cursor: found at %1, tells no version; disabled; not wired; last event "
                             "2026-11-21 12:00:00 +0000")
                  .arg(home.path(QStringLiteral(".local/bin/cursor"))));
}

TEST_F(DoctorTest, anAgentThatHangsDoesNotHoldItUp)
{
    program("claude", "sleep 1000 & sleep 1000\n");
    Doctor::Limits limits = patient;
    limits.version = std::chrono::milliseconds(300);
    EXPECT_TRUE(lineOf("Claude", limits).contains(QStringLiteral("tells no version")));
}

TEST_F(DoctorTest, saysWhatTheAgentStillAsksOfTheUser)
{
    home.enableAll();
    for (const ProviderSpec& spec : ProviderRegistry::all())
        program(qPrintable(spec.executableNames.first()), "echo 1\n");
    ASSERT_OK(home.installer().install());
    const struct
    {
        const char* title;
        const char* before;
        std::function<void()> change;
        const char* after;
    } rows[] = {
        {"Claude", "manual mode",
         [&] {
             home.write("claude", home.read("claude").replace("{\n  \"hooks\"",
                                                              "{\n  \"disableAllHooks\": true, \"hooks\""));
         },
         "disableAllHooks"},
        {"Codex", "Hooks need review",
         [&] {
             QByteArray trust;
             for (const char* event :
                  {"session_start", "stop", "pre_tool_use", "post_tool_use", "pre_compact", "post_compact",
                   "user_prompt_submit", "permission_request"})
                 trust += "[hooks.state.\"" + home.configPath("codex").toUtf8() + ":" + event +
                          ":0:0\"]\ntrusted_hash = \"sha256:0\"\n";
             ScratchHome::writeAt(home.path(QStringLiteral(".codex/config.toml")), trust);
         },
         nullptr},
        {"Codex", nullptr, [&] { home.write("codex", "// mine\n" + home.read("codex")); }, "comments"},
        {"Gemini", "folders that you told it to trust",
         [&] {
             home.write("gemini",
                        home.read("gemini").replace("{\n  \"hooks\"",
                                                    "{\n  \"hooksConfig\": {\"enabled\": false}, \"hooks\""));
         },
         "hooksConfig.enabled"},
        {"Copilot CLI", nullptr,
         [&] {
             ScratchHome::writeAt(home.path(QStringLiteral(".copilot/config.json")),
                                  "{\"disableAllHooks\": true}");
         },
         "disableAllHooks"},
        {"Kimi", ".kimi-code/config.toml", [] {}, ".kimi-code/config.toml"},
        {"Cline", "~/Documents/Cline/Hooks", [] {}, "~/Documents/Cline/Hooks"},
    };
    const auto expectAdvice = [this](const char* title, const char* advice) {
        const QString line = lineOf(title);
        EXPECT_TRUE(line.contains(QStringLiteral("; wired; "))) << qUtf8Printable(line);
        EXPECT_EQ(line.contains(QStringLiteral(" -- ")), advice != nullptr) << qUtf8Printable(line);
        EXPECT_TRUE(advice == nullptr || line.contains(QLatin1String(advice))) << qUtf8Printable(line);
    };
    for (const auto& row : rows) {
        expectAdvice(row.title, row.before);
        row.change();
        expectAdvice(row.title, row.after);
    }
}

TEST_F(DoctorTest, theSelfTestGoesTheWayOfAHook)
{
    EXPECT_TRUE(doctor().selfTest()[0].contains(QStringLiteral("there is no launcher")));
    home.enableOnly({QStringLiteral("claude")});
    ASSERT_OK(home.installer().install());
    EXPECT_TRUE(doctor().selfTest()[1].contains(QStringLiteral("does not run")));
    const QString launcher = home.path(QStringLiteral(".nibbo/bin/nibbo-bridge"));
    ScratchHome::writeAt(launcher, "#!/bin/sh\ncat >\"$0.in\"; echo \"$@\" >\"$0.args\"\n");
    EXPECT_TRUE(doctor().selfTest()[0].contains(QStringLiteral("the launcher took ")));
    EXPECT_EQ(ScratchHome::readAt(launcher + QStringLiteral(".args")), "--source claude --event Doctor\n");
    EXPECT_TRUE(ScratchHome::readAt(launcher + QStringLiteral(".in"))->contains("\"session_id\""));
    ScratchHome::writeAt(launcher, "#!/bin/sh\nexit 4\n");
    EXPECT_TRUE(doctor().selfTest()[0].contains(QStringLiteral("ended with status 4")));
    ScratchHome::writeAt(launcher, "#!/bin/sh\nsleep 1000\n");
    Doctor::Limits limits = patient;
    limits.launcher = std::chrono::milliseconds(300);
    EXPECT_TRUE(doctor(limits).selfTest()[0].contains(QStringLiteral("did not end")));
}

TEST_F(DoctorTest, theApplicationAnswersAndHearsOfNoEvent)
{
    LocalSocketServer server{AppPaths(home.home)};
    std::atomic<int> events = 0;
    server.onEvent = [&events](const AgentEvent&, auto&&) { ++events; };
    server.start();
    ASSERT_TRUE(waitFor([this] { return QFileInfo::exists(AppPaths(home.home).socketFile()); }));
    EXPECT_TRUE(waitFor([this] {
        return doctor().selfTest()[1].contains(QStringLiteral("the application answered after "));
    }));
    EXPECT_EQ(events, 0);
}

} // namespace
} // namespace nibbo::test
