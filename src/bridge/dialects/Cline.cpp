#include "bridge/Dialect.h"

#include <algorithm>
#include <array>

namespace nibbo::bridge {

namespace {

constexpr auto eventRows = std::to_array<EventRow>({
    {"TaskStart", Meaning::sessionStarted},
    {"TaskResume", Meaning::sessionStarted},
    {"TaskCancel", Meaning::interrupted},
    {"TaskComplete", Meaning::taskFinished},
    {"TaskError", Meaning::turnFailed},
    {"UserPromptSubmit", Meaning::prompt},
    {"PreToolUse", Meaning::gate},
    {"PostToolUse", Meaning::toolAfter},
    {"SessionShutdown", Meaning::sessionEnded},
});

// A run of several commands tells success for each, never a status.
bool allSucceeded(const Json& payload)
{
    const Json* output = valueAt(payload, "tool_result.output");
    return output && output->is_array() && !output->empty() &&
           std::all_of(output->begin(), output->end(),
                       [](const Json& part) { return isTrueAt(part, "success"); });
}

void refine(const HookFacts& facts, std::vector<Event>& events)
{
    for (Event& event : events) {
        if (facts.meaning == Meaning::toolAfter && event.toolName == "Bash" && allSucceeded(facts.payload))
            event.exitCode = 0;
        if (facts.meaning == Meaning::taskFinished && textAt(facts.payload, "turn.status") == "failed")
            event.kind = EventKind::taskFailed;
    }
}

} // namespace

// Cline kills a hook before a tool after two minutes, whatever was registered, and lets the tool run.
constinit const Dialect clineDialect = {
    .id = "cline",
    .title = "Cline",
    .events = eventRows,
    .places = {.session = "sessionContext.rootSessionId|taskId",
               .cwd = "workspaceRoots.0|workspaceInfo.rootPath",
               .prompt = "userPromptSubmit.prompt",
               .tool = "tool_call.name|tool_result.name|preToolUse.toolName|postToolUse.toolName",
               .input = "tool_call.input|tool_result.input|preToolUse.parameters|postToolUse.parameters",
               .say = "turn.outputText",
               .transcript = "",
               .failure = "error.message",
               .subagentMark = "parent_agent_id"},
    .answers = {R"({"cancel":false})", R"({"cancel":true,"errorMessage":"The user denied this on Nibbo."})",
                ""},
    .patience = std::chrono::seconds(110),
    .promptFollowsHook = true,
    .caveat = "Deny stops Cline's whole run; after Allow, Cline may still ask in the terminal",
    .refine = refine,
};

} // namespace nibbo::bridge
