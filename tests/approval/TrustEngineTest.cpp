#include "approval/TrustEngine.h"
#include "approval/ApprovalRisk.h"
#include "approval/CommandLists.h"

#include <gtest/gtest.h>

#include <ostream>
#include <vector>

namespace nibbo {

void PrintTo(const TrustEngine::Decision& decision, std::ostream* out)
{
    *out << (decision == TrustEngine::Decision::allow ? "allow"
             : decision == TrustEngine::Decision::ask ? "ask"
                                                      : "block");
}

namespace {

using Decision = TrustEngine::Decision;
using Rule = TrustEngine::Rule;
constexpr Decision allow = Decision::allow;
constexpr Decision ask = Decision::ask;

TrustPolicy defaults(ApprovalMode mode)
{
    return {defaultTrustedCommands(), defaultDangerousCommands(), false, mode};
}

TEST(TrustEngine, DecidesByModeWithTheDefaultLists)
{
    struct Row
    {
        const char* command;
        Decision manual;
        Decision smart;
        Decision automatic;
        bool dangerous;
    };
    const std::vector<Row> rows{
        {"git status", ask, allow, allow, false},
        {"git status --short", ask, allow, allow, false},
        {"git statusx", ask, allow, allow, false},
        {"  \n\t git status", ask, allow, allow, false},
        {"GIT DIFF HEAD", ask, allow, allow, false},
        {"git log", ask, ask, allow, false},
        {"cd x && git status", ask, ask, allow, false},
        {"make", ask, ask, allow, false},
        {"", ask, ask, allow, false},
        {"   ", ask, ask, allow, false},
        {"  RM -RF build/  ", ask, ask, ask, true},
        {"git status && rm -rf /", ask, ask, ask, true},
        {"git status\nrm -rf /", ask, ask, ask, true},
        {"sudo make install", ask, ask, ask, true},
        {"sudoku-solver --run", ask, ask, ask, true},
        {"visudo -c", ask, ask, ask, true},
        {"psql -c 'DROP DATABASE x'", ask, ask, ask, true},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.command);
        const QString command = QString::fromUtf8(row.command);
        EXPECT_EQ(TrustEngine::decide(command, defaults(ApprovalMode::manual)), row.manual);
        EXPECT_EQ(TrustEngine::decide(command, defaults(ApprovalMode::smart)), row.smart);
        EXPECT_EQ(TrustEngine::decide(command, defaults(ApprovalMode::fullAuto)), row.automatic);
        EXPECT_EQ(TrustEngine::decide(command, defaults(ApprovalMode::allowAll)), row.automatic);
        EXPECT_EQ(TrustEngine::isDangerous(command, defaults(ApprovalMode::manual)), row.dangerous);
        TrustPolicy bypass = defaults(ApprovalMode::manual);
        bypass.bypassRiskCheck = true;
        EXPECT_EQ(TrustEngine::decide(command, bypass), allow);
        // The bypass answers requests; it does not make the card say that a command is harmless.
        EXPECT_EQ(TrustEngine::isDangerous(command, bypass), row.dangerous);
    }
}

TEST(TrustEngine, ComparesEntriesAsTheyAreWritten)
{
    TrustPolicy policy;
    policy.mode = ApprovalMode::smart;
    policy.trusted = {QLatin1String(""), QStringLiteral("Make "), QStringLiteral("  ls")};
    policy.dangerous = {QLatin1String(""), QStringLiteral("DD if="), QStringLiteral("kill \n")};
    EXPECT_EQ(TrustEngine::decide(QStringLiteral("anything"), policy), ask) << "an empty entry matched";
    EXPECT_EQ(TrustEngine::decide(QStringLiteral("make all"), policy), allow);
    EXPECT_EQ(TrustEngine::decide(QStringLiteral("make"), policy), ask) << "the entry's blank counts";
    EXPECT_EQ(TrustEngine::decide(QStringLiteral("  ls"), policy), ask)
        << "the command is trimmed, the entry not";
    EXPECT_TRUE(TrustEngine::isDangerous(QStringLiteral("dd IF=/dev/zero"), policy));
    // The card looks at the command untrimmed, the decision at the trimmed one.
    const QString trailing = QStringLiteral("kill \n");
    EXPECT_TRUE(TrustEngine::isDangerous(trailing, policy));
    policy.mode = ApprovalMode::fullAuto;
    EXPECT_EQ(TrustEngine::decide(trailing, policy), allow);
}

TEST(TrustEngine, ExplainsWithTheRuleAndTheEntryThatMatched)
{
    const auto explained = [](const char* command, ApprovalMode mode, bool bypass = false) {
        TrustPolicy policy = defaults(mode);
        policy.bypassRiskCheck = bypass;
        policy.dangerous.prepend(QStringLiteral("Shut Down"));
        return TrustEngine::explain(QString::fromUtf8(command), policy);
    };
    using E = TrustEngine::Explanation;
    EXPECT_EQ(explained("sudo ls", ApprovalMode::allowAll, true), (E{allow, Rule::bypass, {}}));
    EXPECT_EQ(explained("shut down now", ApprovalMode::allowAll),
              (E{ask, Rule::dangerousEntry, QStringLiteral("Shut Down")}));
    EXPECT_EQ(explained("sudo rm -rf /", ApprovalMode::manual),
              (E{ask, Rule::dangerousEntry, QStringLiteral("rm -rf")}))
        << "the list's order decides which entry is named";
    EXPECT_EQ(explained("git status", ApprovalMode::manual), (E{ask, Rule::manualMode, {}}));
    EXPECT_EQ(explained("git status", ApprovalMode::smart),
              (E{allow, Rule::trustedEntry, QStringLiteral("git status")}));
    EXPECT_EQ(explained("make", ApprovalMode::smart), (E{ask, Rule::notTrusted, {}}));
    EXPECT_EQ(explained("make", ApprovalMode::fullAuto), (E{allow, Rule::automaticMode, {}}));
    EXPECT_EQ(explained("make", ApprovalMode::allowAll), (E{allow, Rule::automaticMode, {}}));
}

} // namespace
} // namespace nibbo
