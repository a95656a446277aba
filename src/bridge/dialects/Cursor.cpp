#include "bridge/Dialect.h"

#include <array>

namespace nibbo::bridge {

namespace {

constexpr auto eventRows = std::to_array<EventRow>({
    {"sessionStart", Meaning::sessionStarted},
    {"sessionEnd", Meaning::sessionEnded},
    {"beforeSubmitPrompt", Meaning::prompt},
    {"beforeShellExecution", Meaning::permission, "Bash"},
    {"afterShellExecution", Meaning::toolAfter, "Bash"},
    {"beforeMCPExecution", Meaning::permission},
    {"afterMCPExecution", Meaning::toolAfter},
    {"afterFileEdit", Meaning::toolAfter, "Edit"},
    {"postToolUseFailure", Meaning::toolFailed},
    {"preCompact", Meaning::compacting},
    {"afterAgentResponse", Meaning::turnFinished},
    {"stop", Meaning::turnFinished},
});

void refine(const HookFacts& facts, std::vector<Event>& events)
{
    if (facts.meaning != Meaning::turnFinished)
        return;
    const std::string status = textAt(facts.payload, "status");
    for (Event& event : events) {
        if (status == "aborted") {
            event.kind = EventKind::agentStopped;
            event.message = "Cursor was interrupted";
        } else if (status == "error") {
            event.kind = EventKind::taskFailed;
            event.message = "Cursor failed";
        }
    }
}

} // namespace

// Whoever is asked before an execution has to print some JSON; an object without a permission is no decision.
constinit const Dialect cursorDialect = {
    .id = "cursor",
    .title = "Cursor",
    .events = eventRows,
    .places = {.session = "conversation_id|session_id",
               .cwd = "cwd|workspace_roots.0",
               .say = "text",
               .transcript = ""},
    .answers = {R"({"permission":"allow"})",
                R"({"permission":"deny","user_message":"Denied on Nibbo.",)"
                R"("agent_message":"The user denied this on Nibbo."})",
                "{}"},
    .patience = std::chrono::seconds(86370),
    .promptFollowsHook = true,
    .caveat = "after Allow, Cursor may still ask",
    .refine = refine,
};

} // namespace nibbo::bridge
