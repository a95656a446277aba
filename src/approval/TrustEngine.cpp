#include "approval/TrustEngine.h"

#include <algorithm>
#include <optional>

namespace nibbo {
namespace {

/// The first non-empty entry whose lower-case form passes the test.
template <typename Test>
std::optional<QString> firstMatch(const QStringList& entries, Test test)
{
    const auto match = std::find_if(entries.begin(), entries.end(), [&test](const QString& entry) {
        return !entry.isEmpty() && test(entry.toLower());
    });
    return match == entries.end() ? std::nullopt : std::optional(*match);
}

std::optional<QString> dangerousEntry(const QString& lowered, const TrustPolicy& policy)
{
    return firstMatch(policy.dangerous, [&lowered](const QString& entry) { return lowered.contains(entry); });
}

} // namespace

TrustEngine::Explanation TrustEngine::explain(const QString& command, const TrustPolicy& policy)
{
    if (policy.bypassRiskCheck)
        return {Decision::allow, Rule::bypass, {}};
    const QString lowered = command.trimmed().toLower();
    if (const auto entry = dangerousEntry(lowered, policy))
        return {Decision::ask, Rule::dangerousEntry, *entry};
    switch (policy.mode) {
    case ApprovalMode::manual:
        break;
    case ApprovalMode::smart:
        if (const auto entry = firstMatch(
                policy.trusted, [&lowered](const QString& prefix) { return lowered.startsWith(prefix); }))
            return {Decision::allow, Rule::trustedEntry, *entry};
        return {Decision::ask, Rule::notTrusted, {}};
    case ApprovalMode::fullAuto:
    case ApprovalMode::allowAll:
        return {Decision::allow, Rule::automaticMode, {}};
    }
    return {Decision::ask, Rule::manualMode, {}};
}

TrustEngine::Decision TrustEngine::decide(const QString& command, const TrustPolicy& policy)
{
    return explain(command, policy).decision;
}

bool TrustEngine::isDangerous(const QString& command, const TrustPolicy& policy)
{
    return dangerousEntry(command.toLower(), policy).has_value();
}

} // namespace nibbo
