#pragma once

#include "approval/ApprovalMode.h"

#include <QString>
#include <QStringList>

namespace nibbo {

/// Everything of the user's settings that decides about commands.
struct TrustPolicy
{
    /// Prefixes that `smart` lets through.
    QStringList trusted;
    /// Fragments that always ask, wherever they stand in the command.
    QStringList dangerous;
    bool bypassRiskCheck = false;
    ApprovalMode mode = ApprovalMode::manual;

    bool operator==(const TrustPolicy&) const = default;
};

/// Decides whether a command of an agent runs at once or waits for the user. Stateless; any thread.
///
/// Both lists are compared without regard to case and as they are written: blanks at the ends of an entry
/// count, and an empty entry matches nothing. A dangerous command is never allowed but through the bypass.
class TrustEngine final
{
public:
    enum class Decision
    {
        /// Granted at once, without asking.
        allow,
        /// Held until the user decides on the card.
        ask,
        /// Denied at once. No rule answers this yet; a stricter policy may.
        block
    };

    /// The rule that gave a decision.
    enum class Rule
    {
        bypass,
        dangerousEntry,
        manualMode,
        trustedEntry,
        notTrusted,
        automaticMode
    };

    struct Explanation
    {
        Decision decision = Decision::ask;
        Rule rule = Rule::manualMode;
        /// The entry that matched, as the user wrote it; empty for the rules without one.
        QString entry;

        bool operator==(const Explanation&) const = default;
    };

    static Decision decide(const QString& command, const TrustPolicy& policy);
    /// The decision with its reason: the same rules, for whoever wants to show them.
    static Explanation explain(const QString& command, const TrustPolicy& policy);
    /// Whether the card calls the command risky. Unlike `decide` it does not trim the command.
    static bool isDangerous(const QString& command, const TrustPolicy& policy);
};

} // namespace nibbo
