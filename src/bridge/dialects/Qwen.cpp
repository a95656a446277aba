#include "bridge/dialects/ClaudeFamily.h"

namespace nibbo::bridge {

namespace {

// The permission notice comes only when the hook gave no verdict, so a person is waited for in the terminal.
// The idle notice follows every turn at once and would turn "done" into "needs you".
constexpr auto askingNotices = std::to_array<std::string_view>({"permission_prompt", "elicitation_dialog"});

} // namespace

// Qwen reads a hook's time-out of 1000 and more as milliseconds: the registered 86400 are 86.4 seconds here.
// Its own dialog comes only after the hook has ended.
constinit const Dialect qwenDialect = {
    .id = "qwen",
    .title = "Qwen Code",
    .events = claudeFamily::eventRows,
    .exitStatus = {"", "error|tool_response.llmContent", false, ""},
    .answers = claudeFamily::answers,
    .patience = std::chrono::seconds(84),
    .promptFollowsHook = true,
    .askingNotices = askingNotices,
    .emptyPromptContinues = true,
    .refine = claudeFamily::endWhenInterrupted,
};

} // namespace nibbo::bridge
