#include "agents/AgentEvent.h"

#include <QJsonDocument>
#include <QSet>

#include <gtest/gtest.h>

#include <functional>
#include <vector>

namespace nibbo {
namespace {

const std::vector<const char*> typeNames{
    "agentStarted",  "thinking",      "coding",     "contextCompacting",   "responding",  "approvalRequired",
    "inputRequired", "taskCompleted", "taskFailed", "riskyActionDetected", "agentStopped"};

AgentEvent eventOf(const QByteArray& line)
{
    const auto incoming = IncomingEvent::decode(line);
    EXPECT_TRUE(incoming) << line.toStdString();
    return incoming ? incoming->toAgentEvent() : AgentEvent{};
}

TEST(AgentEventType, IsMatchedByItsExactName)
{
    for (std::size_t index = 0; index < typeNames.size(); ++index) {
        const auto type = static_cast<AgentEventType>(index);
        EXPECT_EQ(rawValue(type).toStdString(), typeNames[index]);
        EXPECT_EQ(agentEventType(QString::fromLatin1(typeNames[index])), type);
    }
    for (const char* unknown : {"", "Thinking", "taskcompleted", "coding ", "unknown"})
        EXPECT_FALSE(agentEventType(QString::fromLatin1(unknown))) << unknown;
}

TEST(IncomingEvent, NormalisesWhatIsMissingOrOdd)
{
    struct Row
    {
        const char* line;
        const char* provider;
        AgentEventType type;
        const char* message;
    };
    using T = AgentEventType;
    const std::vector<Row> rows{
        {"{}", "claude", T::thinking, ""},
        {"{\"provider\":null,\"type\":null,\"message\":null}", "claude", T::thinking, ""},
        {"{\"provider\":\"\"}", "claude", T::thinking, ""},
        {"{\"provider\":\"CoDeX\",\"type\":\"coding\"}", "codex", T::coding, ""},
        {"{\"provider\":\"Some New-Agent\"}", "some new-agent", T::thinking, ""},
        {"{\"type\":\"approvalRequired\",\"toolName\":\"Bash\",\"command\":\"rm -rf x\"}", "claude",
         T::approvalRequired, "Bash"},
        {"{\"message\":\"\",\"toolName\":\"Bash\"}", "claude", T::thinking, "Bash"},
        {"{\"message\":\"hello\",\"toolName\":\"Bash\"}", "claude", T::thinking, "hello"},
        {"{\"message\":\"\",\"toolName\":\"\"}", "claude", T::thinking, ""},
        {"{\"type\":\"Thinking\"}", "claude", T::thinking, ""},
        {"{\"type\":\"taskcompleted\"}", "claude", T::thinking, ""},
        {"{\"type\":\"taskCompleted\"}", "claude", T::taskCompleted, ""},
        {"{\"message\":\"\\u4f60 \\ud83d\\ude00\"}", "claude", T::thinking, "你 😀"},
        // Half of a surrogate pair: a text that somebody cut in the middle of an emoji is still an event.
        {"{\"type\":\"coding\",\"say\":\"\\ud83d\"}", "claude", T::coding, ""},
        {" \t{\"type\":\"coding\"} \r", "claude", T::coding, ""},
        {"{\"type\":\"coding\",\"type\":\"responding\"}", "claude", T::responding, ""},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.line);
        const AgentEvent event = eventOf(row.line);
        EXPECT_EQ(event.provider.rawValue().toStdString(), row.provider);
        EXPECT_EQ(event.type, row.type);
        EXPECT_EQ(event.message.toStdString(), row.message);
        EXPECT_FALSE(event.message.isNull());
        EXPECT_FALSE(event.id.isNull());
    }
}

TEST(IncomingEvent, KeepsAbsentApartFromEmpty)
{
    const AgentEvent absent = eventOf("{\"command\":null}");
    const AgentEvent empty =
        eventOf(R"({"command":"","toolName":"","say":"","phase":"","cwd":"","sessionId":"","exitCode":0})");
    using Field = std::function<std::optional<QString>(const AgentEvent&)>;
    const std::vector<Field> fields{
        [](const AgentEvent& event) { return event.command; },
        [](const AgentEvent& event) { return event.toolName; },
        [](const AgentEvent& event) { return event.say; },
        [](const AgentEvent& event) { return event.phase; },
        [](const AgentEvent& event) { return event.cwd; },
        [](const AgentEvent& event) { return event.sessionId; },
    };
    for (const Field& field : fields) {
        EXPECT_FALSE(field(absent));
        EXPECT_EQ(field(empty), QLatin1String(""));
    }
    EXPECT_FALSE(absent.exitCode);
    EXPECT_EQ(empty.exitCode, 0);
}

TEST(IncomingEvent, TakesExitCodesOf32Bits)
{
    struct Row
    {
        const char* number;
        std::optional<qint32> expected;
    };
    const std::vector<Row> rows{
        {"1", 1},
        {"-1", -1},
        {"2147483647", 2147483647},
        {"-2147483648", -2147483647 - 1},
        {"1.0", 1},
        {"2147483648", {}},
        {"-2147483649", {}},
        {"9223372036854775807", {}},
        {"1e30", {}},
        {"1.5", {}},
        {"\"1\"", {}},
        {"true", {}},
        {"[1]", {}},
        {"{}", {}},
    };
    for (const Row& row : rows) {
        const auto event = IncomingEvent::decode("{\"exitCode\":" + QByteArray(row.number) + "}");
        EXPECT_EQ(static_cast<bool>(event), row.expected.has_value()) << row.number;
        EXPECT_EQ(event ? event->exitCode : std::nullopt, row.expected) << row.number;
    }
}

TEST(IncomingEvent, RefusesWhatIsNoObjectOfItsShape)
{
    const std::vector<QByteArray> lines{
        "",
        " ",
        "null",
        "[]",
        "\"{}\"",
        "{",
        "{}}",
        "{} {}",
        "{'type':'coding'}",
        "{\"type\":1}",
        "{\"provider\":[]}",
        "{\"message\":{}}",
        "{\"say\":true}",
        "{\"message\":\"\xc0\x80\"}",
        "{\"message\":\"\xff\"}",
        "{\"message\":\"\xed\xa0\xbd\"}",
        "{\"message\":\"cut in the middle \xe4\xbd",
        QByteArray(60000, '['),
    };
    for (const QByteArray& line : lines)
        EXPECT_FALSE(IncomingEvent::decode(line)) << line.left(40).toStdString();
}

TEST(AgentEvent, GetsAFreshIdForEveryLine)
{
    QSet<QUuid> ids;
    for (int count = 0; count < 1000; ++count) {
        const QUuid id = eventOf("{\"type\":\"coding\"}").id;
        EXPECT_EQ(id.variant(), QUuid::DCE);
        EXPECT_EQ(id.version(), QUuid::Random);
        ids.insert(id);
    }
    EXPECT_EQ(ids.size(), 1000);
}

TEST(AgentEvent, ComesBackFromItsJson)
{
    AgentEvent least;
    least.message = QLatin1String("");
    EXPECT_EQ(least.toJson().keys(), (QStringList{QStringLiteral("id"), QStringLiteral("message"),
                                                  QStringLiteral("provider"), QStringLiteral("type")}));
    AgentEvent most = eventOf(
        R"({"provider":"Codex","type":"taskFailed","message":"m","command":"c","toolName":"","say":"s",)"
        R"("phase":"post","cwd":"/","sessionId":"i","exitCode":-7})");
    for (const AgentEvent& event : {least, most}) {
        const auto back =
            AgentEvent::fromJson(QJsonDocument::fromJson(QJsonDocument(event.toJson()).toJson()).object());
        ASSERT_TRUE(back);
        EXPECT_EQ(*back, event);
    }
}

TEST(AgentEvent, RequiresWhatEveryEventHas)
{
    const QJsonObject whole = eventOf("{}").toJson();
    ASSERT_TRUE(AgentEvent::fromJson(whole));
    for (const QString& key : whole.keys()) {
        QJsonObject lacking = whole;
        lacking.remove(key);
        EXPECT_FALSE(AgentEvent::fromJson(lacking)) << key.toStdString();
        QJsonObject wrong = whole;
        wrong.insert(key, 1);
        EXPECT_FALSE(AgentEvent::fromJson(wrong)) << key.toStdString();
    }
    QJsonObject odd = whole;
    odd.insert(QStringLiteral("type"), QStringLiteral("unheardOf"));
    EXPECT_FALSE(AgentEvent::fromJson(odd)) << "stored events are exact, only the wire is lenient";
    odd = whole;
    odd.insert(QStringLiteral("exitCode"), 2147483648.0);
    EXPECT_FALSE(AgentEvent::fromJson(odd));
}

} // namespace
} // namespace nibbo
