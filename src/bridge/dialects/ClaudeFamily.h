#pragma once

// What Claude and the agents that took over its hooks have in common.

#include "bridge/Dialect.h"

#include <array>

namespace nibbo::bridge::claudeFamily {

inline constexpr auto eventRows = std::to_array<EventRow>({
    {"SessionStart", Meaning::sessionStarted},
    {"SessionEnd", Meaning::sessionEnded},
    {"UserPromptSubmit", Meaning::prompt},
    {"PreToolUse", Meaning::toolBefore},
    {"PostToolUse", Meaning::toolAfter},
    {"PostToolUseFailure", Meaning::toolFailed},
    {"PermissionRequest", Meaning::permission},
    {"Notification", Meaning::notification},
    {"PreCompact", Meaning::compacting},
    {"PostCompact", Meaning::compacted},
    {"Stop", Meaning::turnFinished},
    {"StopFailure", Meaning::turnFailed},
    {"SubagentStop", Meaning::subagentEnded},
});

// All of them take the event's name inside the answer, and some refuse an answer without it.
inline constexpr Answers answers = {
    R"({"hookSpecificOutput":{"hookEventName":"PermissionRequest","decision":{"behavior":"allow"}}})",
    R"({"hookSpecificOutput":{"hookEventName":"PermissionRequest","decision":{"behavior":"deny",)"
    R"("message":"The user denied this on Nibbo."}}})",
    "",
};

// A failing command is told in words only, and success by the plain event.
inline constexpr ExitStatus exitStatus = {"", "error", true,
                                          "tool_response.interrupted|tool_response.backgroundTaskId"};

inline constexpr std::chrono::seconds dayLessHalfAMinute{86370};

// A tool that the user broke off ends the turn, and no further event says so.
inline void endWhenInterrupted(const HookFacts& facts, std::vector<Event>& events)
{
    if (facts.meaning != Meaning::toolFailed || !isTrueAt(facts.payload, "is_interrupt"))
        return;
    for (Event& event : events) {
        Event stopped;
        stopped.kind = EventKind::agentStopped;
        stopped.message = "Interrupted";
        stopped.cwd = event.cwd;
        stopped.sessionId = event.sessionId;
        event = stopped;
    }
}

} // namespace nibbo::bridge::claudeFamily
