#include "bridge/Dialect.h"
#include "bridge/Transcript.h"

#include <array>

namespace nibbo::bridge {

namespace {

// Its permission event only tells; no hook can answer it. The agent's words stand in no payload.
constexpr auto eventRows = std::to_array<EventRow>({
    {"SessionStart", Meaning::sessionStarted},
    {"SessionEnd", Meaning::sessionEnded},
    {"UserPromptSubmit", Meaning::prompt},
    {"PreToolUse", Meaning::toolBefore},
    {"PostToolUse", Meaning::toolAfter},
    {"PostToolUseFailure", Meaning::toolFailed},
    {"PermissionRequest", Meaning::terminalPrompt},
    {"PermissionResult", Meaning::promptAnswered},
    {"Notification", Meaning::notification}, // about background work only
    {"PreCompact", Meaning::compacting},
    {"PostCompact", Meaning::compacted},
    {"Stop", Meaning::turnFinished},
    {"StopFailure", Meaning::turnFailed},
    {"Interrupt", Meaning::interrupted},
});

void refine(const HookFacts& facts, std::vector<Event>& events)
{
    if (facts.meaning != Meaning::turnFinished)
        return;
    for (Event& event : events) {
        if (event.say.empty())
            event.say = cutAtCharacter(
                latestWords(kimiTranscript(facts.home, textAt(facts.payload, "session_id"))), maxWordBytes);
    }
}

} // namespace

constinit const Dialect kimiDialect = {
    .id = "kimi",
    .title = "Kimi",
    .events = eventRows,
    .places = {.failure = "error_message|error_type"},
    .exitStatus = {"", "error.message", true, ""},
    .refine = refine,
};

} // namespace nibbo::bridge
