#include "bridge/Dialect.h"

#include <array>

namespace nibbo::bridge {

namespace {

constexpr auto eventRows = std::to_array<EventRow>({
    {"SessionStart", Meaning::sessionStarted},
    {"SessionEnd", Meaning::sessionEnded},
    {"BeforeAgent", Meaning::prompt},
    {"AfterAgent", Meaning::turnFinished},
    {"BeforeTool", Meaning::gate},
    {"AfterTool", Meaning::toolAfter},
    {"Notification", Meaning::notification},
    {"PreCompress", Meaning::compactingOnDemand},
});

// Sent only when Gemini's own prompt is about to show, after the hook before the tool has ended.
constexpr auto askingNotices = std::to_array<std::string_view>({"ToolPermission"});

bool isSpace(char c)
{
    return c == ' ' || c == '\n' || c == '\t' || c == '\r';
}

// Whether `text` ends in `tail`, white space in either of no account.
bool endsInWordsOf(std::string_view text, std::string_view tail)
{
    while (true) {
        while (!tail.empty() && isSpace(tail.back()))
            tail.remove_suffix(1);
        while (!text.empty() && isSpace(text.back()))
            text.remove_suffix(1);
        if (tail.empty() || text.empty() || text.back() != tail.back())
            return tail.empty();
        tail.remove_suffix(1);
        text.remove_suffix(1);
    }
}

// A streamed answer arrives with its later chunks a second time behind it, joined by blanks:
// "Wrote x.txt. x.txt.".
std::string_view withoutRepeatedTail(std::string_view text)
{
    constexpr std::size_t shortestTail = 4;
    // What is repeated lacks the first chunk, and so is the shorter part; extra blanks may make it a little
    // longer.
    for (std::size_t space = text.find(' ', text.size() / 3); space != std::string_view::npos;
         space = text.find(' ', space + 1)) {
        const std::string_view head = text.substr(0, space);
        const std::string_view tail = text.substr(space + 1);
        if (tail.size() < shortestTail)
            break;
        if (endsInWordsOf(head, tail))
            return head;
    }
    return text;
}

void refine(const HookFacts& facts, std::vector<Event>& events)
{
    if (facts.meaning != Meaning::turnFinished)
        return;
    for (Event& event : events) {
        if (event.say == "[no response text]")
            event.say.clear();
        event.say = std::string(withoutRepeatedTail(event.say));
    }
}

} // namespace

// A denial holds; an allowance does not spare the user Gemini's own prompt, and no hook can.
constinit const Dialect geminiDialect = {
    .id = "gemini",
    .title = "Gemini",
    .events = eventRows,
    .places = {.say = "prompt_response", .transcript = ""},
    .exitStatus = {"", "tool_response.llmContent", true, "tool_response.error"},
    .answers = {R"({"decision":"allow"})", R"({"decision":"deny","reason":"The user denied this on Nibbo."})",
                ""},
    .patience = std::chrono::seconds(3580),
    .promptFollowsHook = true,
    .askingNotices = askingNotices,
    .caveat = "after Allow, Gemini still asks in the terminal",
    .refine = refine,
};

} // namespace nibbo::bridge
