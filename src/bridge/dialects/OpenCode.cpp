#include "bridge/Dialect.h"
#include "bridge/Tools.h"

#include <array>

namespace nibbo::bridge {

namespace {

// OpenCode loads a plug-in that speaks to the application itself. This dialect reads the same events for
// whoever hands them to a process instead.
constexpr auto eventRows = std::to_array<EventRow>({
    {"session.created", Meaning::sessionStarted},
    {"session.deleted", Meaning::sessionEnded},
    {"session.idle", Meaning::turnFinished},
    {"session.status", Meaning::turnFinished},
    {"session.error", Meaning::turnFailed},
    {"message.part.updated", Meaning::toolBefore},
    {"permission.asked", Meaning::permission},
    {"permission.replied", Meaning::promptAnswered},
    {"question.asked", Meaning::terminalPrompt},
    {"question.replied", Meaning::promptAnswered},
});

void finishTool(const HookFacts& facts, Event& event)
{
    const std::string status = textAt(facts.payload, "properties.part.state.status");
    event.afterTool = status == "completed" || status == "error";
    if (const Json* exit = valueAt(facts.payload, "properties.part.state.metadata.exit");
        event.afterTool && exit && exit->is_number_integer())
        event.exitCode = exit->get<std::int32_t>();
}

bool concernsThePet(const HookFacts& facts)
{
    if (facts.meaning == Meaning::turnFinished)
        return textAt(facts.payload, "properties.status.type|type") != "busy" &&
               textAt(facts.payload, "properties.status.type") != "retry";
    return facts.meaning != Meaning::toolBefore || textAt(facts.payload, "properties.part.type") == "tool";
}

void refine(const HookFacts& facts, std::vector<Event>& events)
{
    if (!concernsThePet(facts))
        events.clear();
    for (Event& event : events) {
        if (!event.sessionId.empty())
            event.sessionId.insert(0, "opencode-");
        if (!event.toolName.empty() && event.toolName.front() >= 'a' && event.toolName.front() <= 'z')
            event.toolName.front() = static_cast<char>(event.toolName.front() - 'a' + 'A');
        if (event.kind == EventKind::approvalRequired)
            event.message = event.toolName;
        if (event.kind == EventKind::coding)
            finishTool(facts, event);
        if (facts.meaning == Meaning::terminalPrompt) {
            if (const Json* asked = valueAt(facts.payload, "properties"))
                event.message = questionIn(*asked);
        }
        if (facts.meaning == Meaning::turnFailed &&
            textAt(facts.payload, "properties.error.name") == "MessageAbortedError") {
            event.kind = EventKind::agentStopped;
            event.message = "OpenCode was interrupted";
        }
    }
}

} // namespace

constinit const Dialect openCodeDialect = {
    .id = "opencode",
    .title = "OpenCode",
    .events = eventRows,
    .places = {.session = "properties.sessionID|properties.info.id",
               .cwd = "properties.info.directory",
               .tool = "properties.part.tool|properties.permission",
               .input = "properties.part.state.input|properties.metadata",
               .say = "",
               .transcript = "",
               .failure = "properties.error.data.message|properties.error.name"},
    .answers = {R"({"reply":"once"})", R"({"reply":"reject"})", ""},
    .patience = std::chrono::seconds(7180),
    .refine = refine,
};

} // namespace nibbo::bridge
