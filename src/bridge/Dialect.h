#pragma once

// What one agent's hooks say and expect, as data. One constant per agent, in a file of its own under
// dialects/, and one row in Dialects.cpp; Translation.cpp walks the tables.

#include "bridge/JsonPath.h"
#include "bridge/Wire.h"

#include <chrono>
#include <span>
#include <string_view>
#include <vector>

namespace nibbo::bridge {

// Words for a bubble, not an archive.
inline constexpr std::size_t maxWordBytes = 4096;

// What a hook event means, whatever its agent calls it.
enum class Meaning
{
    sessionStarted,
    sessionEnded,
    prompt,
    toolBefore,
    toolAfter,
    toolFailed, // the tool's own failure, not the task's
    permission, // the agent asks; its hook may answer
    gate,       // comes before every tool and may stop it; asks for what writes, runs or reaches the network
    terminalPrompt, // the agent asks in its terminal and no hook may answer
    promptAnswered, // the user has answered in the terminal
    compacting,
    compactingOnDemand, // announced before every request; only the user's own call is a compaction
    compacted,
    turnFinished,
    taskFinished,
    turnFailed,
    interrupted,
    notification,
    subagentEnded,
};

struct EventRow
{
    std::string_view event;
    Meaning meaning;
    // For events that are about one fixed tool and carry its input in the payload itself.
    std::string_view tool = {};
};

// Where things are in the payload; see JsonPath.h for the form.
struct Places
{
    std::string_view session = "session_id";
    std::string_view cwd = "cwd";
    std::string_view prompt = "prompt";
    std::string_view tool = "tool_name";
    std::string_view input = "tool_input";
    std::string_view say = "last_assistant_message";
    std::string_view transcript = "transcript_path";
    std::string_view failure = "last_assistant_message|error_details|error";
    std::string_view agent = "agent_id"; // present only in what a subagent sends ...
    std::string_view subagentMark = {};  // ... or, where everybody sends it, only together with this
    std::string_view noticeType = "notification_type";
    std::string_view noticeText = "message";
};

// How the exit status of a finished command is told.
struct ExitStatus
{
    std::string_view number = {};     // where it stands as a number
    std::string_view text = {};       // where "Exit code: N" stands in a text
    bool zeroWhenSilent = false;      // a command's success is told by the absence of a status
    std::string_view unfinished = {}; // present and not false: the command has not come to its end
};

// Printed on stdout for an event that waits for a verdict.
struct Answers
{
    std::string_view granted = {};
    std::string_view denied = {};
    std::string_view none = {};
};

struct HookFacts
{
    const Json& payload;
    Meaning meaning;
    std::string_view home;
};

struct Dialect
{
    std::string_view id;
    std::string_view title;
    std::span<const EventRow> events;
    Places places = {};
    ExitStatus exitStatus = {};
    Answers answers = {};
    // Ends a little before the agent kills the hook, so that the agent's own prompt takes over in order.
    std::chrono::seconds patience{0};
    // The agent's own prompt comes only after the hook: as long as a hook waits, its request is open.
    bool promptFollowsHook = false;
    // Types of notification that mean "a person is waited for". All others are nothing.
    std::span<const std::string_view> askingNotices = {};
    // Said on the card where the verdict is not the last word.
    std::string_view caveat = {};
    // Prompts beginning like this were made by a machine and are not the user's words.
    std::string_view machinePrompt = {};
    // An empty prompt announces a continuation, not a new turn.
    bool emptyPromptContinues = false;
    // The permission hook is called before the agent looks whether it has to ask: reads and searches pass at
    // once.
    bool permissionComesFirst = false;
    // The last touch, where a table cannot say it: may change, drop and add events.
    void (*refine)(const HookFacts& facts, std::vector<Event>& events) = nullptr;
};

extern const Dialect claudeDialect;
extern const Dialect codexDialect;
extern const Dialect geminiDialect;
extern const Dialect openCodeDialect;
extern const Dialect qwenDialect;
extern const Dialect qoderDialect;
extern const Dialect codeBuddyDialect;
extern const Dialect kimiDialect;
extern const Dialect iFlowDialect;
extern const Dialect cursorDialect;
extern const Dialect copilotDialect;
extern const Dialect clineDialect;

std::span<const Dialect* const> allDialects();

// The id is compared in lower case; nullptr for an agent that nobody knows.
const Dialect* dialectNamed(std::string_view id);

// Whether the dialect answers this event at all, be it only to say "no decision".
bool answers(const Dialect& dialect, std::string_view event);

} // namespace nibbo::bridge
