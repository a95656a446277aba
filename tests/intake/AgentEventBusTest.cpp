#include "intake/AgentEventBus.h"

#include "approval/CommandLists.h"
#include "base/AtomicFile.h"
#include "base/Published.h"
#include "intake/FakeProcessList.h"
#include "intake/SocketClient.h"
#include "support/ManualTime.h"
#include "support/Wait.h"

#include <QDir>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <map>
#include <vector>

namespace nibbo {
namespace {

using test::replyTo;
using test::SocketClient;
using test::waitFor;

const QByteArray granted = "{\"approval\":\"granted\"}\n";
const QByteArray denied = "{\"approval\":\"denied\"}\n";

class AgentEventBusTest : public testing::Test
{
protected:
    QTemporaryDir home{QStringLiteral("/tmp/nibbo-XXXXXX")};
    AppPaths paths{home.path()};
    test::FakeProcessList processes;
    test::ManualTime time;
    Published<Settings> settings;
    std::unique_ptr<AgentEventBus> bus;
    std::vector<AgentEvent> delivered;

    void SetUp() override
    {
        set(ApprovalMode::manual);
        bus = std::make_unique<AgentEventBus>(
            paths, [this] { return settings.load(); }, processes, time);
        QObject::connect(bus.get(), &AgentEventBus::eventDelivered,
                         [this](const AgentEvent& event) { delivered.push_back(event); });
    }

    void set(ApprovalMode mode, bool bypass = false, AppLanguage language = AppLanguage::en)
    {
        Settings next;
        next.trustedCommands = defaultTrustedCommands();
        next.dangerousCommands = defaultDangerousCommands();
        next.approvalMode = mode;
        next.bypassRiskCheck = bypass;
        next.language = language;
        settings.store(std::make_shared<const Settings>(std::move(next)));
    }

    void start()
    {
        bus->start();
        ASSERT_TRUE(waitFor([this] { return bus->socketServer().running(); }));
    }
    bool waitForDelivered(std::size_t count)
    {
        return waitFor([this, count] { return delivered.size() >= count; });
    }
    std::string agentLog() const
    {
        const auto content = readWholeFile(paths.agentLogFile());
        return content ? content->toStdString() : content.error().toStdString();
    }

    static AgentEvent request(const QString& command)
    {
        AgentEvent event;
        event.type = AgentEventType::approvalRequired;
        event.message = QStringLiteral("Bash");
        event.command = command;
        event.toolName = QStringLiteral("Bash");
        event.say = QStringLiteral("Let me build it");
        event.phase = QStringLiteral("pre");
        event.cwd = QStringLiteral("/src");
        event.sessionId = QStringLiteral("s1");
        event.exitCode = 3;
        return event;
    }
};

TEST_F(AgentEventBusTest, DeliversOnTheMainThreadAfterPublishing)
{
    AgentEvent event;
    event.message = QStringLiteral("hello");
    bus->publish(event);
    EXPECT_TRUE(delivered.empty());
    EXPECT_FALSE(bus->lastEvent());
    ASSERT_TRUE(waitForDelivered(1));
    EXPECT_EQ(delivered.front(), event);
    EXPECT_EQ(bus->lastEvent(), event);
}

TEST_F(AgentEventBusTest, AnswersWhatTheTrustEngineAllowsAndShowsTheToolAtWork)
{
    set(ApprovalMode::manual, true);
    const AgentEvent event = request(QStringLiteral("rm -rf /"));
    std::vector<bool> verdicts;
    bus->publish(event, [&](bool allow) {
        EXPECT_TRUE(delivered.empty()) << "the verdict comes before anything is shown";
        verdicts.push_back(allow);
    });
    EXPECT_EQ(verdicts, std::vector<bool>{true});
    EXPECT_EQ(bus->waitingApprovals(), 0);
    ASSERT_TRUE(waitForDelivered(1));
    AgentEvent expected = event;
    expected.id = delivered.front().id;
    expected.type = AgentEventType::coding;
    expected.say.reset();
    expected.phase.reset();
    expected.exitCode.reset();
    EXPECT_EQ(delivered.front(), expected);
    EXPECT_NE(delivered.front().id, event.id);
}

TEST_F(AgentEventBusTest, JudgesTheMessageWhereThereIsNoCommand)
{
    set(ApprovalMode::smart);
    AgentEvent event = request({});
    event.command.reset();
    event.message = QStringLiteral("git status");
    int calls = 0;
    bus->publish(event, [&calls](bool allow) { calls += allow ? 1 : 100; });
    EXPECT_EQ(calls, 1);
    ASSERT_TRUE(waitForDelivered(1));
    EXPECT_EQ(delivered.front().command, QStringLiteral("git status"));

    // A command that is there but empty is what is judged.
    event.command = QLatin1String("");
    bus->publish(event, [&calls](bool) { calls += 100; });
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(bus->waitingApprovals(), 1);
}

TEST_F(AgentEventBusTest, KeepsARequestForTheUserAndAnswersItOnce)
{
    const AgentEvent event = request(QStringLiteral("make"));
    std::vector<bool> verdicts;
    bus->publish(event, [&verdicts](bool allow) { verdicts.push_back(allow); });
    ASSERT_TRUE(waitForDelivered(1));
    EXPECT_EQ(delivered.front(), event);
    EXPECT_TRUE(verdicts.empty());
    bus->resolveApproval(QUuid::createUuid(), true);
    EXPECT_TRUE(verdicts.empty());
    bus->resolveApproval(event.id, false);
    bus->resolveApproval(event.id, true);
    EXPECT_EQ(verdicts, std::vector<bool>{false});
    EXPECT_EQ(bus->waitingApprovals(), 0);

    // Without a responder there is nobody to answer; the pet shows it all the same.
    bus->publish(request(QStringLiteral("make")));
    ASSERT_TRUE(waitForDelivered(2));
    EXPECT_EQ(bus->waitingApprovals(), 0);
}

TEST_F(AgentEventBusTest, WritesOneLinePerEventToTheAgentLog)
{
    AgentEvent event;
    event.type = AgentEventType::coding;
    event.toolName = QStringLiteral("Bash");
    event.command = QStringLiteral("npm test\nnpm run build");
    bus->publish(event);
    time.advance(Seconds(61));
    event.provider = AgentProvider(QStringLiteral("my-agent two"));
    event.type = AgentEventType::taskCompleted;
    bus->publish(event);
    set(ApprovalMode::manual, false, AppLanguage::zh);
    event.provider = AgentProvider(QStringLiteral("qwen"));
    bus->publish(event);
    EXPECT_EQ(agentLog(), "[2023-11-14 23:13:20 +0000] Claude coding: Running npm test\n"
                          "[2023-11-14 23:14:21 +0000] My-Agent Two taskCompleted: Done\n"
                          "[2023-11-14 23:14:21 +0000] Qwen Code taskCompleted: 完成\n");
    EXPECT_EQ(QFile::permissions(paths.agentLogFile()) & (QFile::ReadGroup | QFile::ReadOther),
              QFile::Permissions());
}

TEST_F(AgentEventBusTest, LetsNobodyForgeALineOfTheLog)
{
    AgentEvent event;
    event.type = AgentEventType::coding;
    event.provider = AgentProvider(QStringLiteral("x\n[2023"));
    event.toolName = QStringLiteral("evil\n[2023-11-14 23:13:20 +0000] Claude\r\u2028\x1b[2Jdone");
    bus->publish(event);
    const std::string log = agentLog();
    EXPECT_EQ(std::count(log.begin(), log.end(), '\n'), 1);
    EXPECT_EQ(log.find('\r'), std::string::npos);
    EXPECT_EQ(log.find('\x1b'), std::string::npos);
    EXPECT_EQ(QString::fromStdString(log).count(QChar(0x2028)), 0);
}

TEST_F(AgentEventBusTest, DeliversWhereTheLogCannotBeWritten)
{
    ASSERT_TRUE(QDir().mkpath(paths.agentLogFile()));
    bus->publish(AgentEvent{});
    EXPECT_TRUE(waitForDelivered(1));
}

TEST_F(AgentEventBusTest, TakesUpALogThatWasTakenAway)
{
    bus->publish(AgentEvent{});
    ASSERT_TRUE(QDir(paths.logsDirectory()).removeRecursively());
    bus->publish(AgentEvent{});
    const std::string log = agentLog();
    EXPECT_EQ(std::count(log.begin(), log.end(), '\n'), 1) << log;
}

/// The whole way: a hook's line on the socket, the mode of the moment, the reply and what the pet is told.
TEST_F(AgentEventBusTest, DecidesRequestsFromTheSocketByTheModeOfTheMoment)
{
    start();
    struct Row
    {
        ApprovalMode mode;
        const char* command;
        bool asks;
    };
    const std::vector<Row> rows{
        {ApprovalMode::manual, "git status", true},  {ApprovalMode::smart, "git status", false},
        {ApprovalMode::smart, "rm -rf build", true}, {ApprovalMode::smart, "make", true},
        {ApprovalMode::fullAuto, "make", false},     {ApprovalMode::allowAll, "make test", false},
        {ApprovalMode::allowAll, "sudo ls", true},
    };
    std::size_t count = 0;
    bool allow = false;
    for (const Row& row : rows) {
        SCOPED_TRACE(row.command);
        set(row.mode);
        const SocketClient client(paths.socketFile());
        ASSERT_TRUE(client.send("{\"type\":\"approvalRequired\",\"sessionId\":\"s\",\"command\":\"" +
                                QByteArray(row.command) + "\"}\n"));
        ASSERT_TRUE(waitForDelivered(++count));
        const AgentEvent& event = delivered.back();
        EXPECT_EQ(event.type, row.asks ? AgentEventType::approvalRequired : AgentEventType::coding);
        EXPECT_EQ(event.command, QString::fromLatin1(row.command));
        EXPECT_EQ(bus->waitingApprovals(), row.asks ? 1 : 0);
        if (!row.asks) {
            EXPECT_EQ(client.readToEnd(), granted);
            continue;
        }
        EXPECT_FALSE(client.hasInput());
        // A mode that is changed afterwards answers nothing by itself.
        set(ApprovalMode::allowAll);
        allow = !allow;
        bus->resolveApproval(event.id, allow);
        EXPECT_EQ(client.readToEnd(), allow ? granted : denied);
    }
}

TEST_F(AgentEventBusTest, AnswersOnlyTheRequestThatWasMeant)
{
    start();
    std::vector<SocketClient> clients;
    for (const char* session : {"a", "b", "c"}) {
        clients.emplace_back(paths.socketFile());
        ASSERT_TRUE(
            clients.back().send("{\"type\":\"approvalRequired\",\"message\":\"Bash\",\"sessionId\":\"" +
                                QByteArray(session) + "\"}\n"));
        ASSERT_TRUE(waitForDelivered(clients.size()));
    }
    EXPECT_EQ(bus->waitingApprovals(), 3);
    bus->resolveApproval(delivered[1].id, true);
    EXPECT_EQ(clients[1].readToEnd(), granted);
    EXPECT_FALSE(clients[0].hasInput());
    EXPECT_FALSE(clients[2].hasInput());

    // One that is let go hears nothing, and one whose client has gone is answered into nothing.
    bus->abandonApproval(delivered[0].id);
    EXPECT_EQ(clients[0].readToEnd(), QByteArray());
    clients[2].close();
    ASSERT_TRUE(waitFor([this] { return bus->socketServer().waitingConnections() == 0; }));
    EXPECT_EQ(bus->waitingApprovals(), 1) << "the card of a request stays until it is answered";
    bus->resolveApproval(delivered[2].id, true);
    EXPECT_EQ(bus->waitingApprovals(), 0);
}

TEST_F(AgentEventBusTest, KeepsTheOrderOfEvents)
{
    start();
    for (int index = 0; index < 200; ++index)
        ASSERT_EQ(replyTo(paths.socketFile(), "{\"message\":\"" + QByteArray::number(index) + "\"}\n"),
                  "{\"ok\":true}\n");
    ASSERT_TRUE(waitForDelivered(200));
    for (int index = 0; index < 200; ++index)
        EXPECT_EQ(delivered[static_cast<std::size_t>(index)].message.toInt(), index);
}

TEST_F(AgentEventBusTest, LetsWaitingAgentsGoWhenItEnds)
{
    start();
    const SocketClient client(paths.socketFile());
    ASSERT_TRUE(client.send("{\"type\":\"approvalRequired\"}\n"));
    ASSERT_TRUE(waitForDelivered(1));
    bus.reset();
    EXPECT_EQ(client.readToEnd(), QByteArray());
}

TEST_F(AgentEventBusTest, PassesOnWhatTheDetectorSees)
{
    std::map<std::string, AgentStatus> statuses;
    QObject::connect(
        bus.get(), &AgentEventBus::statusDetected,
        [&statuses](const QString& id, AgentStatus status) { statuses[id.toStdString()] = status; });
    Settings some = *settings.load();
    some.enabled = {{QStringLiteral("codex"), false}, {QStringLiteral("kimi"), true}};
    settings.store(std::make_shared<const Settings>(some));
    processes.set(
        {QStringLiteral("claude"), QStringLiteral("codex"), QStringLiteral("kimi"), QStringLiteral("qwen")});
    start();
    ASSERT_TRUE(waitForDelivered(2));
    EXPECT_EQ(delivered[0].message, QStringLiteral("Claude started"));
    EXPECT_EQ(delivered[1].message, QStringLiteral("Kimi started"));
    EXPECT_EQ(statuses["claude"], AgentStatus::running);
    EXPECT_EQ(statuses["kimi"], AgentStatus::running);
    // Switched off by the user, and off because it is not confirmed and nothing was said of it.
    EXPECT_EQ(statuses.count("codex"), 0U);
    EXPECT_EQ(statuses.count("qwen"), 0U);
}

} // namespace
} // namespace nibbo
