#include "bridge/Dialect.h"

#include <array>

namespace nibbo::bridge {

namespace {

constexpr auto eventRows = std::to_array<EventRow>({
    {"sessionStart", Meaning::sessionStarted},
    {"sessionEnd", Meaning::sessionEnded},
    {"userPromptSubmitted", Meaning::prompt},
    {"preToolUse", Meaning::toolBefore},
    {"postToolUse", Meaning::toolAfter},
    {"postToolUseFailure", Meaning::toolFailed},
    {"permissionRequest", Meaning::permission},
    {"notification", Meaning::notification},
    {"preCompact", Meaning::compacting},
    {"agentStop", Meaning::turnFinished},
    {"errorOccurred", Meaning::turnFailed},
});

// The permission notice comes when Copilot's own prompt shows, which no longer waits for the pet.
constexpr auto askingNotices =
    std::to_array<std::string_view>({"permission_prompt", "elicitation_dialog", "agent_idle"});

void refine(const HookFacts& facts, std::vector<Event>& events)
{
    if (facts.meaning != Meaning::sessionEnded)
        return;
    const std::string reason = textAt(facts.payload, "reason");
    if (reason != "error" && reason != "timeout")
        return;
    for (Event& event : events) {
        event.kind = EventKind::taskFailed;
        event.message = reason == "error" ? "Copilot CLI ended with an error" : "Copilot CLI ran out of time";
    }
}

} // namespace

// Here no decision must be silence and a clean exit: anything else on stdout counts as a denial.
constinit const Dialect copilotDialect = {
    .id = "copilot",
    .title = "Copilot CLI",
    .events = eventRows,
    .places = {.session = "sessionId|session_id",
               .tool = "toolName|tool_name",
               .input = "toolArgs|toolInput|tool_input",
               .transcript = "transcriptPath|transcript_path",
               .failure = "error.message|error"},
    .exitStatus = {"", "toolResult.textResultForLlm|tool_result.text_result_for_llm", false, ""},
    .answers = {R"({"behavior":"allow"})",
                R"({"behavior":"deny","message":"The user denied this on Nibbo."})", ""},
    .patience = std::chrono::seconds(86370),
    .promptFollowsHook = true,
    .askingNotices = askingNotices,
    .machinePrompt = "<system_notification>",
    .permissionComesFirst = true,
    .refine = refine,
};

} // namespace nibbo::bridge
