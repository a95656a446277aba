#pragma once

// The one line that the helper writes to the application's socket, and the one it reads back.
// Pure functions on values; nothing here touches a descriptor.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace nibbo::bridge {

// The event kinds that the application knows and that some agent's hook can report.
enum class EventKind
{
    agentStarted,
    thinking,
    coding,
    contextCompacting,
    responding,
    approvalRequired,
    inputRequired,
    taskCompleted,
    taskFailed,
    agentStopped,
};

// What a hook call becomes. Empty texts are left out of the line. All texts are UTF-8.
struct Event
{
    EventKind kind = EventKind::thinking;
    std::string message;
    std::string command;
    std::string toolName;
    std::string say;
    bool afterTool = false; // the "post" half of a tool call
    std::string cwd;
    std::string sessionId;
    std::optional<std::int32_t> exitCode;
    bool isStep = false; // one of a turn's many steps, not a turn of events; not part of the line
};

enum class Verdict
{
    none,
    granted,
    denied,
};

// The server collects at most this many bytes of a line, line feed not counted.
inline constexpr std::size_t maxLineBytes = 65536;

// Ends a text of which the rest was left out.
inline constexpr std::string_view cutMark = " … [cut]";

struct WireLine
{
    std::string text; // ends in a line feed
    bool commandWasCut = false;
};

// Never longer than maxLineBytes plus the line feed. The smaller fields have fixed shares, cut between
// characters; the command takes all that is left and, where it is cut, ends in a mark that says so.
WireLine wireLine(std::string_view provider, const Event& event);

// Anything but a well-formed granted or denied reply is no verdict.
Verdict verdictOf(std::string_view reply);

// The longest prefix of at most `maxBytes` bytes that ends between two characters.
std::string_view cutAtCharacter(std::string_view text, std::size_t maxBytes);

} // namespace nibbo::bridge
