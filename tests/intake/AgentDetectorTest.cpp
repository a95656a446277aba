#include "intake/AgentDetector.h"

#include "base/AtomicFile.h"
#include "intake/FakeProcessList.h"
#include "support/Wait.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <atomic>
#include <map>
#include <string>
#include <vector>

namespace nibbo {
namespace {

using test::waitFor;

AgentProvider provider(const char* id)
{
    return AgentProvider(QString::fromLatin1(id));
}

/// A detector on a scratch home and a told process table; all providers are enabled but those in `disabled`.
class AgentDetectorTest : public testing::Test
{
protected:
    QTemporaryDir scratch;
    test::FakeProcessList processes;
    QStringList disabled;
    AgentDetector detector{
        ExecutableFinder(scratch.filePath(QStringLiteral("home")), scratch.path()), processes,
        [this](const AgentProvider& candidate) { return !disabled.contains(candidate.rawValue()); }};
    std::vector<AgentEvent> events;
    std::map<std::string, AgentStatus> statuses;

    void SetUp() override
    {
        detector.onChange = [this](const AgentEvent& event) { events.push_back(event); };
        detector.onStatus = [this](const AgentProvider& about, AgentStatus status) {
            statuses[about.rawValue().toStdString()] = status;
        };
    }

    QString install(const QString& place)
    {
        const QString path = scratch.path() + place;
        EXPECT_TRUE(writeAtomically(path, "#!/bin/sh\n"));
        EXPECT_TRUE(QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
        return path;
    }
};

TEST_F(AgentDetectorTest, MatchesTheNameAtTheEndOfAWordInTheCommandLine)
{
    struct Row
    {
        const char* line;
        const char* provider;
        bool running;
    };
    const std::vector<Row> rows{
        {"claude", "claude", true},
        {"/home/a/.local/bin/claude --resume", "claude", true},
        {"node /usr/lib/node_modules/codex/bin/codex.js", "codex", true},
        {"my-codex", "codex", true},
        {"xcodex", "codex", true},
        {"codexy", "codex", false},
        {"codex_helper", "codex", false},
        {"codex2", "codex", false},
        {"codexy codex", "codex", true},
        {"codexé", "codex", false},
        {"Claude", "claude", false},
        {"/opt/cursor-agent --x", "cursor", true},
        {"/usr/share/cursor/cursor --type=renderer", "cursor", true},
        {"", "claude", false},
        // What is ours carries the agents' names and does not count.
        {"/opt/Nibbo.app/Contents/Helpers/helper claude", "claude", false},
        {"/home/a/Library/Application Support/Nibbo/x claude", "claude", false},
        {"/usr/libexec/nibbo/nibbo-bridge claude PreToolUse", "claude", false},
        {"/bin/sh /home/a/.nibbo/bin/launcher claude Stop", "claude", false},
        {"/usr/bin/nibbo --install-hooks claude", "claude", false},
        {"nibbo claude", "claude", false},
        // A folder of the user's that only happens to be called so does.
        {"claude --add-dir /home/a/src/nibbo", "claude", true},
        {"/usr/bin/nibbolet claude", "claude", true},
    };
    for (const Row& row : rows) {
        processes.set({QStringLiteral("/sbin/init"), QString::fromUtf8(row.line)});
        EXPECT_EQ(detector.isRunning(provider(row.provider)), row.running) << row.line;
    }
}

TEST_F(AgentDetectorTest, FindsToolsOnDisk)
{
    EXPECT_FALSE(detector.commandPath(provider("claude")));
    const QString system = install(QStringLiteral("/usr/bin/claude"));
    EXPECT_EQ(detector.commandPath(provider("claude")), system);
    const QString global = install(QStringLiteral("/home/.npm-global/bin/claude"));
    EXPECT_EQ(detector.commandPath(provider("claude")), global);
    // Either name will do, the first one is preferred wherever it lies.
    const QString editor = install(QStringLiteral("/home/.local/bin/cursor"));
    EXPECT_EQ(detector.commandPath(provider("cursor")), editor);
    const QString agent = install(QStringLiteral("/usr/bin/cursor-agent"));
    EXPECT_EQ(detector.commandPath(provider("cursor")), agent);
    // A provider of no registry goes by its id.
    const QString strange = install(QStringLiteral("/usr/bin/strange"));
    EXPECT_EQ(detector.commandPath(provider("strange")), strange);
}

TEST_F(AgentDetectorTest, ReportsStartAndStopOnce)
{
    install(QStringLiteral("/usr/bin/claude"));
    processes.set({QStringLiteral("claude"), QStringLiteral("claude --continue")});
    for (int count = 0; count < 3; ++count)
        detector.scan();
    ASSERT_EQ(events.size(), 1U);
    EXPECT_EQ(events[0].type, AgentEventType::agentStarted);
    EXPECT_EQ(events[0].provider, provider("claude"));
    EXPECT_EQ(events[0].message, QStringLiteral("Claude started"));
    EXPECT_FALSE(events[0].sessionId);
    EXPECT_EQ(statuses["claude"], AgentStatus::running);
    EXPECT_EQ(statuses["codex"], AgentStatus::notFound);
    EXPECT_EQ(processes.passes(), 3) << "one pass over the table a scan, whatever the number of providers";

    processes.set({});
    detector.scan();
    detector.scan();
    ASSERT_EQ(events.size(), 2U);
    EXPECT_EQ(events[1].type, AgentEventType::agentStopped);
    EXPECT_EQ(events[1].message, QStringLiteral("Claude stopped"));
    EXPECT_NE(events[0].id, events[1].id);
    EXPECT_EQ(statuses["claude"], AgentStatus::connected);

    processes.set({QStringLiteral("claude")});
    detector.scan();
    EXPECT_EQ(events.size(), 3U) << "a tool that comes back is announced again";
}

TEST_F(AgentDetectorTest, LeavesAloneWhatIsSwitchedOff)
{
    disabled = {QStringLiteral("claude")};
    processes.set({QStringLiteral("claude"), QStringLiteral("codex")});
    detector.scan();
    ASSERT_EQ(events.size(), 1U);
    EXPECT_EQ(events[0].provider, provider("codex"));
    EXPECT_EQ(statuses.count("claude"), 0U);
    EXPECT_EQ(statuses.size(), AgentProvider::allCases().size() - 1);

    // Switched off while it runs, it says nothing more; switched on again, it has never been away.
    disabled = {QStringLiteral("codex")};
    detector.scan();
    EXPECT_EQ(events.size(), 2U);
    disabled.clear();
    detector.scan();
    EXPECT_EQ(events.size(), 2U);
}

TEST_F(AgentDetectorTest, TellsTheStatusOfEveryProviderInOnePass)
{
    disabled = {QStringLiteral("claude")};
    install(QStringLiteral("/usr/bin/codex"));
    processes.set({QStringLiteral("claude")});
    const auto all = detector.statuses();
    const std::vector<AgentProvider> order = AgentProvider::allCases();
    ASSERT_EQ(all.size(), order.size());
    for (std::size_t index = 0; index < all.size(); ++index) {
        const AgentProvider& about = all[index].first;
        EXPECT_EQ(about, order[index]);
        const AgentStatus expected = about == provider("claude")  ? AgentStatus::running
                                     : about == provider("codex") ? AgentStatus::connected
                                                                  : AgentStatus::notFound;
        EXPECT_EQ(all[index].second, expected) << about.rawValue().toStdString();
    }
    EXPECT_EQ(processes.passes(), 1);
    EXPECT_TRUE(events.empty());
}

TEST_F(AgentDetectorTest, ScansAgainAndAgainUntilItIsStopped)
{
    std::atomic<int> started = 0;
    detector.onChange = [&started](const AgentEvent&) { ++started; };
    detector.onStatus = nullptr;
    processes.set({QStringLiteral("claude")});
    detector.start(Milliseconds(1), Milliseconds(1));
    EXPECT_TRUE(waitFor([this] { return processes.passes() >= 5; }));
    detector.stop();
    const int passes = processes.passes();
    EXPECT_EQ(started, 1);
    detector.stop();
    EXPECT_EQ(processes.passes(), passes);
}

TEST_F(AgentDetectorTest, StopsAtOnceBeforeTheFirstScan)
{
    detector.start(Milliseconds(3000), Milliseconds(3'600'000));
    detector.stop();
    EXPECT_EQ(processes.passes(), 0);
}

} // namespace
} // namespace nibbo
