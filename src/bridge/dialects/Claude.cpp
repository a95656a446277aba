#include "bridge/dialects/ClaudeFamily.h"

namespace nibbo::bridge {

namespace {

constexpr auto askingNotices = std::to_array<std::string_view>({"idle_prompt", "elicitation_dialog"});

constexpr std::string_view taskNotification = "<task-notification>";

// The subagent that this event reports as ended. The event that would say so by itself is not among those
// that every version of Claude takes without complaint.
std::string endedSubagent(const HookFacts& facts)
{
    if (facts.meaning == Meaning::toolAfter &&
        textAt(facts.payload, "tool_response.status") != "async_launched")
        return textAt(facts.payload, "tool_response.agentId");
    if (facts.meaning != Meaning::prompt)
        return {};
    const std::string prompt = textAt(facts.payload, "prompt");
    constexpr std::string_view opening = "<task-id>";
    if (!prompt.starts_with(taskNotification))
        return {};
    const std::size_t begin = prompt.find(opening);
    if (begin == std::string::npos)
        return {};
    const std::size_t end = prompt.find('<', begin + opening.size());
    return end == std::string::npos ? std::string()
                                    : prompt.substr(begin + opening.size(), end - begin - opening.size());
}

void refine(const HookFacts& facts, std::vector<Event>& events)
{
    claudeFamily::endWhenInterrupted(facts, events);
    const std::string ended = endedSubagent(facts);
    const std::string session = textAt(facts.payload, "session_id");
    if (ended.empty() || session.empty())
        return;
    Event stopped;
    stopped.kind = EventKind::agentStopped;
    stopped.message = "Claude's subagent finished";
    stopped.sessionId = session + ':' + ended;
    events.insert(events.begin(), std::move(stopped));
}

} // namespace

// The dialog in the terminal is up together with the hook, and the first to answer wins. Nobody tells the
// hook when that was the terminal: the card goes with the next event of the same session.
constinit const Dialect claudeDialect = {
    .id = "claude",
    .title = "Claude",
    .events = claudeFamily::eventRows,
    .exitStatus = claudeFamily::exitStatus,
    .answers = claudeFamily::answers,
    .patience = claudeFamily::dayLessHalfAMinute,
    .askingNotices = askingNotices,
    .machinePrompt = taskNotification,
    .refine = refine,
};

} // namespace nibbo::bridge
