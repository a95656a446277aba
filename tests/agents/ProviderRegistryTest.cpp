#include "agents/ProviderRegistry.h"

#include "agents/AgentProvider.h"

#include <gtest/gtest.h>

#include <vector>

namespace nibbo {
namespace {

TEST(ProviderRegistry, KeepsItsOrderEverywhere)
{
    const QStringList order{QStringLiteral("claude"),    QStringLiteral("codex"),   QStringLiteral("gemini"),
                            QStringLiteral("opencode"),  QStringLiteral("qwen"),    QStringLiteral("qoder"),
                            QStringLiteral("codebuddy"), QStringLiteral("kimi"),    QStringLiteral("iflow"),
                            QStringLiteral("cursor"),    QStringLiteral("copilot"), QStringLiteral("cline")};
    QStringList listed;
    for (const ProviderSpec& spec : ProviderRegistry::all())
        listed.append(spec.id);
    EXPECT_EQ(listed, order);
    QStringList cases;
    for (const AgentProvider& provider : AgentProvider::allCases())
        cases.append(provider.rawValue());
    EXPECT_EQ(cases, order);
    EXPECT_EQ(ProviderRegistry::byID().size(), order.size());
}

TEST(ProviderRegistry, FindsByIdWhateverTheCase)
{
    ASSERT_TRUE(ProviderRegistry::spec(QStringLiteral("Claude")));
    EXPECT_EQ(ProviderRegistry::spec(QStringLiteral("CLAUDE"))->title, QStringLiteral("Claude"));
    EXPECT_EQ(ProviderRegistry::byID().value(QStringLiteral("Claude")), nullptr);
    for (const char* id : {"", "claude ", "unknown"})
        EXPECT_EQ(ProviderRegistry::spec(QString::fromLatin1(id)), nullptr) << id;
}

TEST(ProviderRegistry, FitsTheToolsTogether)
{
    const auto spec = [](const char* id) { return *ProviderRegistry::spec(QString::fromLatin1(id)); };
    for (const char* id : {"qwen", "qoder", "codebuddy", "kimi", "iflow"}) {
        EXPECT_EQ(spec(id).events, spec("claude").events) << id;
        EXPECT_EQ(spec(id).family, ProviderFamily::claude) << id;
        EXPECT_EQ(spec(id).configRelativePath.toStdString(), std::string(".") + id + "/settings.json");
        EXPECT_FALSE(spec(id).confirmed) << id;
    }
    for (const char* id : {"claude", "codex", "gemini", "opencode"})
        EXPECT_TRUE(spec(id).confirmed) << id;
    EXPECT_FALSE(spec("codex").events.contains(QStringLiteral("SessionEnd")));
    EXPECT_FALSE(spec("codex").events.contains(QStringLiteral("Notification")));
    EXPECT_TRUE(spec("opencode").events.isEmpty());
    EXPECT_EQ(spec("cursor").executableNames,
              (QStringList{QStringLiteral("cursor-agent"), QStringLiteral("cursor")}));
    for (const ProviderSpec& each : ProviderRegistry::all()) {
        EXPECT_FALSE(each.executableNames.isEmpty()) << each.id.toStdString();
        EXPECT_FALSE(each.configRelativePath.startsWith(QLatin1Char('/'))) << each.id.toStdString();
        EXPECT_EQ(each.id, each.id.toLower());
    }
}

TEST(ProviderRegistry, GivesEachFamilyItsTimeoutsAndMatchers)
{
    struct Row
    {
        ProviderFamily family;
        const char* event;
        int timeout;
        /// Null where no matcher is written.
        const char* matcher;
    };
    using F = ProviderFamily;
    const std::vector<Row> rows{
        {F::claude, "PermissionRequest", 86400, "*"},
        {F::claude, "permissionRequest", 5, nullptr},
        {F::claude, "PreToolUse", 5, "*"},
        {F::claude, "PostToolUse", 5, "*"},
        {F::claude, "Notification", 5, "*"},
        {F::claude, "Stop", 5, nullptr},
        {F::codex, "PermissionRequest", 7200, nullptr},
        {F::codex, "PreToolUse", 5, ""},
        {F::codex, "PostToolUse", 5, ""},
        {F::codex, "Stop", 5, nullptr},
        {F::gemini, "BeforeTool", 3600000, ""},
        {F::gemini, "AfterTool", 5000, ""},
        {F::gemini, "SessionStart", 5000, nullptr},
        {F::cursor, "beforeShellExecution", 86400, nullptr},
        {F::cursor, "beforeMCPExecution", 86400, nullptr},
        {F::cursor, "afterShellExecution", 5, nullptr},
        {F::copilot, "permissionRequest", 86400, nullptr},
        {F::copilot, "PermissionRequest", 5, nullptr},
        {F::cline, "PreToolUse", 86400, nullptr},
        {F::cline, "PostToolUse", 5, nullptr},
        {F::bespoke, "PermissionRequest", 5, nullptr},
        {F::bespoke, "PreToolUse", 5, nullptr},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(testing::Message() << static_cast<int>(row.family) << ' ' << row.event);
        const QString event = QString::fromLatin1(row.event);
        EXPECT_EQ(hookTimeout(row.family, event), row.timeout);
        const std::optional<QString> matcher = hookMatcher(row.family, event);
        EXPECT_EQ(matcher, row.matcher ? std::optional(QString::fromLatin1(row.matcher)) : std::nullopt);
    }
}

TEST(AgentProvider, IsItsLowerCaseId)
{
    const AgentProvider known(QStringLiteral("Claude"));
    EXPECT_EQ(known, AgentProvider(QStringLiteral("cLAUDE")));
    EXPECT_EQ(qHash(known), qHash(AgentProvider(QStringLiteral("claude"))));
    ASSERT_TRUE(known.spec());
    EXPECT_EQ(known.displayName(), QStringLiteral("Claude"));
    EXPECT_EQ(AgentProvider(QStringLiteral("copilot")).displayName(), QStringLiteral("Copilot CLI"));

    const std::vector<std::pair<const char*, const char*>> unknown{
        {"new agent", "New Agent"}, {"NEW-AGENT", "New-Agent"}, {"x", "X"}, {"", ""}, {"élan", "Élan"},
    };
    for (const auto& [id, name] : unknown) {
        const AgentProvider provider(QString::fromUtf8(id));
        EXPECT_EQ(provider.spec(), nullptr) << id;
        EXPECT_EQ(provider.displayName().toStdString(), name);
    }
}

} // namespace
} // namespace nibbo
