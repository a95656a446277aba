// The helper's tables against the application's registry: both are about the same agents.
#include "agents/ProviderRegistry.h"
#include "bridge/Dialect.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace nibbo::bridge::test {
namespace {

TEST(Dialects, knowEveryRegisteredEventOfEveryProvider)
{
    ASSERT_EQ(allDialects().size(), ProviderRegistry::all().size());
    for (const ProviderSpec& spec : ProviderRegistry::all()) {
        const std::string id = spec.id.toStdString();
        const Dialect* dialect = dialectNamed(id);
        ASSERT_NE(dialect, nullptr) << id;
        EXPECT_EQ(dialect->title, spec.title.toStdString());
        for (const QString& event : spec.events) {
            // iFlow has no such event; it is registered with the list that it shares with Claude.
            if (id == "iflow" && event == QStringLiteral("PermissionRequest"))
                continue;
            const bool known =
                std::any_of(dialect->events.begin(), dialect->events.end(),
                            [&](const EventRow& row) { return row.event == event.toStdString(); });
            EXPECT_TRUE(known) << id << ' ' << event.toStdString();
        }
    }
}

// Whoever waits longer than its hook may is killed, and some agents take that for a denial.
TEST(Dialects, givesUpBeforeTheirAgentsKillTheHook)
{
    using std::chrono::seconds;
    for (const ProviderSpec& spec : ProviderRegistry::all()) {
        const Dialect& dialect = *dialectNamed(spec.id.toStdString());
        for (const QString& event : spec.events) {
            if (!answers(dialect, event.toStdString()))
                continue;
            SCOPED_TRACE(spec.id.toStdString() + ' ' + event.toStdString());
            double limit = hookTimeout(spec.family, event);
            if (spec.family == ProviderFamily::gemini || dialect.id == "qwen")
                limit /= 1000;
            if (dialect.id == "cline")
                limit = 120;
            EXPECT_GT(dialect.patience, seconds(0));
            EXPECT_LT(static_cast<double>(dialect.patience.count()), limit);
            EXPECT_GT(static_cast<double>(dialect.patience.count()), limit * 0.9);
        }
    }
}

TEST(Dialects, areFoundWhateverTheCaseOfTheirName)
{
    EXPECT_EQ(dialectNamed("ClauDe"), &claudeDialect);
    EXPECT_EQ(dialectNamed("claud"), nullptr);
    EXPECT_EQ(dialectNamed("claude "), nullptr);
    EXPECT_EQ(dialectNamed(""), nullptr);
}

} // namespace
} // namespace nibbo::bridge::test
