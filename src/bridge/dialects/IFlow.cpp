#include "bridge/Dialect.h"

#include <array>

namespace nibbo::bridge {

namespace {

// Claude's events without a permission hook; its tools are named like Gemini's.
constexpr auto eventRows = std::to_array<EventRow>({
    {"SessionStart", Meaning::sessionStarted},
    {"SessionEnd", Meaning::sessionEnded},
    {"UserPromptSubmit", Meaning::prompt},
    {"PreToolUse", Meaning::toolBefore},
    {"PostToolUse", Meaning::toolAfter},
    {"Notification", Meaning::notification},
    {"PreCompact", Meaning::compacting},
    {"Stop", Meaning::turnFinished},
    {"SubagentStop", Meaning::subagentEnded},
});

// No hook shows its requests, so a permission notice is all that tells of one.
constexpr auto askingNotices = std::to_array<std::string_view>({"idle_prompt", "permission_prompt"});

} // namespace

constinit const Dialect iFlowDialect = {
    .id = "iflow",
    .title = "iFlow",
    .events = eventRows,
    .askingNotices = askingNotices,
};

} // namespace nibbo::bridge
