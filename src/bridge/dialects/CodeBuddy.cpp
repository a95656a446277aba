#include "bridge/dialects/ClaudeFamily.h"

namespace nibbo::bridge {

namespace {

// Its own dialog comes after the hook, so a permission notice means that the terminal waits.
constexpr auto askingNotices =
    std::to_array<std::string_view>({"idle_prompt", "permission_prompt", "elicitation_dialog"});

} // namespace

constinit const Dialect codeBuddyDialect = {
    .id = "codebuddy",
    .title = "CodeBuddy",
    .events = claudeFamily::eventRows,
    .exitStatus = {"tool_response.exitCode", "error", false, ""},
    .answers = claudeFamily::answers,
    .patience = claudeFamily::dayLessHalfAMinute,
    .promptFollowsHook = true,
    .askingNotices = askingNotices,
    .refine = claudeFamily::endWhenInterrupted,
};

} // namespace nibbo::bridge
