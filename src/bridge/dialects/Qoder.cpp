#include "bridge/dialects/ClaudeFamily.h"

namespace nibbo::bridge {

namespace {

// The idle notice follows every turn at once, and the permission notice speaks of a request that the pet
// already shows.
constexpr auto askingNotices = std::to_array<std::string_view>({"elicitation_dialog"});

} // namespace

constinit const Dialect qoderDialect = {
    .id = "qoder",
    .title = "Qoder",
    .events = claudeFamily::eventRows,
    .exitStatus = claudeFamily::exitStatus,
    .answers = claudeFamily::answers,
    .patience = claudeFamily::dayLessHalfAMinute,
    .askingNotices = askingNotices,
    .refine = claudeFamily::endWhenInterrupted,
};

} // namespace nibbo::bridge
