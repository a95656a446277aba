#include "bridge/dialects/ClaudeFamily.h"

namespace nibbo::bridge {

namespace {

constexpr auto eventRows = std::to_array<EventRow>({
    {"SessionStart", Meaning::sessionStarted},
    {"SessionEnd", Meaning::sessionEnded},
    {"UserPromptSubmit", Meaning::prompt},
    {"PreToolUse", Meaning::toolBefore},
    {"PostToolUse", Meaning::toolAfter},
    {"PermissionRequest", Meaning::permission},
    {"PreCompact", Meaning::compacting},
    {"PostCompact", Meaning::compacted},
    {"Stop", Meaning::turnFinished},
    {"Interrupt", Meaning::interrupted},
    {"SubagentStop", Meaning::subagentEnded},
});

} // namespace

// Any member beyond those of the answer makes Codex reject the whole. Exit statuses are told nowhere.
constinit const Dialect codexDialect = {
    .id = "codex",
    .title = "Codex",
    .events = eventRows,
    .answers = claudeFamily::answers,
    .patience = std::chrono::seconds(7180),
    .promptFollowsHook = true,
};

} // namespace nibbo::bridge
