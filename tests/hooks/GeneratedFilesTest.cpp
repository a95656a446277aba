#include "hooks/GeneratedFiles.h"

#include "agents/ProviderRegistry.h"
#include "base/AppPaths.h"
#include "hooks/GeneratedFilesSupport.h"
#include "intake/LocalSocketServer.h"
#include "support/Wait.h"

#include <nlohmann/json.hpp>

#include <QDir>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <mutex>
#include <vector>

namespace nibbo {
namespace {

using test::awkwardNames;
using test::hookTestsFolder;
using test::Outcome;
using test::run;
using test::waitFor;
using test::write;

TEST(GeneratedFilesTest, QuotedTextIsReadBackByShellsAndJavaScript)
{
    const QStringList texts = {
        QString(),
        QStringLiteral("plain"),
        QStringLiteral("'"),
        QStringLiteral("a'b''c"),
        QStringLiteral("$HOME `id` $(id) ${x} !! \\ \\\\ \" * ~ # & ; | <>"),
        QStringLiteral("line\nbreak\r\ttab"),
        QStringLiteral("Jürgen 🐾"),
        QStringLiteral("\u2028\u2029\x01"),
    };
    for (const QString& text : texts) {
        SCOPED_TRACE(text.toStdString());
        for (const char* shell : {"dash", "bash", "zsh"}) {
            const Outcome outcome =
                run(QLatin1String(shell),
                    {QStringLiteral("-c"), QStringLiteral("printf %s ") + shellQuoted(text)});
            EXPECT_EQ(outcome.out, text.toUtf8()) << shell;
        }
        const Outcome outcome =
            run(QStringLiteral("node"), {}, "process.stdout.write(" + javaScriptQuoted(text).toUtf8() + ")");
        EXPECT_EQ(outcome.out, text.toUtf8()) << outcome.error.toStdString();
    }
    EXPECT_EQ(javaScriptQuoted(QString(QChar(0xd83d))), QStringLiteral("'\\ud83d'"));
}

TEST(GeneratedFilesTest, SmallFilesHaveTheirExactForm)
{
    const GeneratedFilesContext context{QStringLiteral("/home/o'b"), QStringLiteral("/opt/nibbo")};
    EXPECT_EQ(
        bridgeCommand({QStringLiteral("/home/u"), {}}, QStringLiteral("claude"), QStringLiteral("Stop")),
        QStringLiteral("'/home/u/.nibbo/bin/nibbo-bridge' --source claude --event Stop"));
    EXPECT_EQ(bridgeCommand(context, QStringLiteral("gemini"), QStringLiteral("BeforeTool")),
              QStringLiteral("'/home/o'\\''b/.nibbo/bin/nibbo-bridge' --source gemini --event BeforeTool"));
    EXPECT_EQ(clineScript({QStringLiteral("/home/u"), {}}, QStringLiteral("TaskStart")),
              "#!/bin/sh\n# nibbo-bridge-marker\nexec '/home/u/.nibbo/bin/nibbo-bridge' --source cline "
              "--event TaskStart\n");

    const nlohmann::json copilot = nlohmann::json::parse(copilotHooks(context).toStdString());
    EXPECT_EQ(copilot["version"], 1);
    const ProviderSpec* spec = ProviderRegistry::spec(QStringLiteral("copilot"));
    EXPECT_EQ(copilot["hooks"].size(), static_cast<std::size_t>(spec->events.size()));
    for (const QString& event : spec->events) {
        const nlohmann::json expected = {{
            {"type", "command"},
            {"bash",
             "'/home/o'\\''b/.nibbo/bin/nibbo-bridge' --source copilot --event " + event.toStdString()},
            {"timeoutSec", event == QLatin1String("permissionRequest") ? 86400 : 5},
        }};
        EXPECT_EQ(copilot["hooks"][event.toStdString()], expected) << event.toStdString();
    }
}

TEST(GeneratedFilesTest, EveryTextPassesItsCheckerWhateverTheHomeIsCalled)
{
    for (const QString& name : awkwardNames) {
        SCOPED_TRACE(name.toStdString());
        QTemporaryDir scratch;
        const QString home = QStringLiteral("/home/") + name;
        const auto save = [&scratch](const char* file, const QByteArray& text) {
            const QString path = scratch.filePath(QLatin1String(file));
            write(path, text);
            EXPECT_FALSE(text.contains("'@")) << "a blank was left in " << file;
            return path;
        };
        const GeneratedFilesContext here{home, QStringLiteral("/opt/o'brien"),
                                         LauncherPlatform::linuxDesktop};
        const GeneratedFilesContext mac{home, QStringLiteral("/Applications/Nibbo.app"),
                                        LauncherPlatform::macOs};
        const QString shellcheck = QStringLiteral("shellcheck");
        // Below a warning it only wonders at a name with a dollar sign between quotes.
        const QString severity = QStringLiteral("--severity=warning");
        const QString node = QStringLiteral("node");
        const std::vector<std::pair<QString, QStringList>> checks = {
            {shellcheck,
             {severity, save("launcher", launcherScript(here)),
              save("cline", clineScript(here, QStringLiteral("TaskStart")))}},
            // It is kept within what both shells understand.
            {shellcheck, {severity, QStringLiteral("--shell=sh"), save("launcher.zsh", launcherScript(mac))}},
            {QStringLiteral("zsh"), {QStringLiteral("-n"), scratch.filePath(QStringLiteral("launcher.zsh"))}},
            {node, {QStringLiteral("--check"), save("cleaning.js", selfCleaningScript())}},
            {node, {QStringLiteral("--check"), save("plugin.mjs", openCodePlugin(here))}},
        };
        for (const auto& [program, arguments] : checks) {
            const Outcome outcome = run(program, arguments);
            EXPECT_EQ(outcome.status, 0)
                << program.toStdString() << ' ' << arguments.last().toStdString() << '\n'
                << outcome.out.toStdString() << outcome.error.toStdString();
        }
    }
}

TEST(GeneratedFilesTest, TheMacVariantNamesEveryPlaceAndToolInOrder)
{
    const QByteArray text = launcherScript(
        {QStringLiteral("/Users/u"), QStringLiteral("/Volumes/x/Nibbo.app"), LauncherPlatform::macOs});
    EXPECT_TRUE(text.startsWith("#!/bin/zsh\n"));
    qsizetype position = 0;
    for (const char* part :
         {"H=/Contents/Helpers/nibbo-bridge\n",
          "'/Volumes/x/Nibbo.app' /Applications/Nibbo.app \"$HOME/Applications/Nibbo.app\"",
          "/usr/bin/mdfind \"kMDItemCFBundleIdentifier == '", "/usr/bin/head -1", "/bin/date +%s",
          "/usr/bin/osascript -l JavaScript", "<<'JSEOF'\n",
          "'.claude/settings.json','.codex/hooks.json','.gemini/settings.json',",
          "$.NSFileManager.defaultManager.removeItemAtPathError(h+'/.config/opencode/plugins/"
          "nibbo.js',null)\n",
          "$.NSFileManager.defaultManager.removeItemAtPathError(h+'/Documents/Cline/Rules/Hooks/"
          "PostToolUse',null)\n",
          "\nJSEOF\n", "/bin/rm -rf \"$HOME/.nibbo\"\n"}) {
        const qsizetype found = text.indexOf(part, position);
        ASSERT_GE(found, 0) << part << " is missing or stands too early in\n" << text.toStdString();
        position = found;
    }
}

TEST(OpenCodePluginTest, TellsAndAsksUnderNode)
{
    // Short, because the name of a socket has little room; awkward, because it stands in JavaScript.
    QTemporaryDir scratch(QDir::tempPath() + QStringLiteral("/o'c$-XXXXXX"));
    const QString plugin = scratch.filePath(QStringLiteral("nibbo.mjs"));
    write(plugin, openCodePlugin({scratch.path(), {}}));
    const QString socket = scratch.path() + QStringLiteral("/Library/Application Support/Nibbo/nibbo.sock");
    const Outcome outcome =
        run(QStringLiteral("node"),
            {hookTestsFolder + QStringLiteral("opencode-plugin.test.mjs"), plugin, socket});
    EXPECT_EQ(outcome.status, 0) << outcome.out.toStdString() << outcome.error.toStdString();
    EXPECT_TRUE(outcome.out.contains("\n# fail 0")) << outcome.out.toStdString();
}

TEST(OpenCodePluginTest, TalksWithTheApplicationsOwnSocket)
{
    QTemporaryDir home(QDir::tempPath() + QStringLiteral("/oc-XXXXXX"));
    const QString plugin = home.filePath(QStringLiteral("nibbo.mjs"));
    write(plugin, openCodePlugin({home.path(), {}}));
    std::mutex mutex;
    std::vector<AgentEvent> events;
    std::vector<LocalSocketServer::Responder> responders;
    const auto count = [&] {
        const std::lock_guard lock(mutex);
        return events.size();
    };
    LocalSocketServer server{AppPaths(home.path())};
    server.onEvent = [&](const AgentEvent& event, const LocalSocketServer::Responder& respond) {
        const std::lock_guard lock(mutex);
        events.push_back(event);
        responders.push_back(respond);
    };
    server.start();
    ASSERT_TRUE(waitFor([&] { return server.running(); }));

    QProcess host;
    host.start(QStringLiteral("node"), {hookTestsFolder + QStringLiteral("opencode-host.mjs"), plugin});
    const auto emitEvent = [&host](const QByteArray& type, const QByteArray& properties) {
        host.write("{\"type\":\"" + type + "\",\"properties\":" + properties + "}\n");
    };
    const auto ask = [&](const QByteArray& id) {
        emitEvent("permission.asked",
                  "{\"id\":\"" + id +
                      "\",\"sessionID\":\"s\",\"permission\":\"bash\",\"patterns\":[\"ls\",\"pwd\"]}");
    };
    emitEvent("session.created", "{\"info\":{\"id\":\"s\",\"directory\":\"/d\"}}");
    ask("per_1");
    ASSERT_TRUE(waitFor([&] { return count() == 2; }));
    EXPECT_EQ(events[0].type, AgentEventType::agentStarted);
    EXPECT_EQ(events[0].cwd, QStringLiteral("/d"));
    EXPECT_EQ(events[1].provider.rawValue(), QStringLiteral("opencode"));
    EXPECT_EQ(events[1].type, AgentEventType::approvalRequired);
    EXPECT_EQ(events[1].command, QStringLiteral("ls && pwd"));
    EXPECT_EQ(events[1].sessionId, QStringLiteral("opencode-s"));

    QByteArray answers;
    const auto answered = [&](const QByteArray& line) {
        return waitFor([&] {
            answers += host.readAllStandardOutput();
            return answers.endsWith(line);
        });
    };
    responders[1](true);
    EXPECT_TRUE(answered("{\"id\":\"s\",\"permissionID\":\"per_1\",\"response\":\"once\"}\n"))
        << answers.toStdString();
    ask("per_2");
    ASSERT_TRUE(waitFor([&] { return count() == 3; }));
    responders[2](false);
    EXPECT_TRUE(answered("{\"id\":\"s\",\"permissionID\":\"per_2\",\"response\":\"reject\"}\n"))
        << answers.toStdString();

    // An answer given in the terminal takes the request back.
    ask("per_3");
    ASSERT_TRUE(waitFor([&] { return server.waitingConnections() == 1; }));
    emitEvent("permission.replied", "{\"sessionID\":\"s\",\"requestID\":\"per_3\",\"reply\":\"once\"}");
    EXPECT_TRUE(waitFor([&] { return server.waitingConnections() == 0; }));

    // A request that waits does not keep OpenCode from ending.
    ask("per_4");
    ASSERT_TRUE(waitFor([&] { return server.waitingConnections() == 1; }));
    host.closeWriteChannel();
    EXPECT_TRUE(host.waitForFinished(60000));
    EXPECT_EQ(host.exitCode(), 0) << host.readAllStandardError().toStdString();
    EXPECT_TRUE(waitFor([&] { return server.waitingConnections() == 0; }));
    server.stop();
}

} // namespace
} // namespace nibbo
