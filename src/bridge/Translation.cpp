#include "bridge/Translation.h"

#include "bridge/Tools.h"
#include "bridge/Transcript.h"

#include <algorithm>
#include <charconv>

namespace nibbo::bridge {

namespace {

struct Call
{
    const Dialect& dialect;
    const EventRow& row;
    const Json& payload;
    bool pruned;
};

// A subagent's events and requests travel as a session of their own. The application takes a waiting card
// away when a later event of the same session shows that its agent has moved on; what another subagent does
// meanwhile, or the main agent while its subagent asks, says nothing about that.
std::string subagentOf(const Call& call)
{
    const Places& places = call.dialect.places;
    if (!places.subagentMark.empty() && !valueAt(call.payload, places.subagentMark))
        return {};
    std::string agent = textAt(call.payload, places.agent);
    return agent == "main" ? std::string() : agent;
}

std::string sessionOf(const Call& call)
{
    std::string session = textAt(call.payload, call.dialect.places.session);
    const std::string agent = subagentOf(call);
    if (!session.empty() && !agent.empty())
        session += ':' + agent;
    return session;
}

std::string titled(const Call& call, std::string_view what)
{
    return std::string(call.dialect.title).append(what);
}

std::string promptIn(const Call& call)
{
    const Json* prompt = valueAt(call.payload, call.dialect.places.prompt);
    if (!prompt)
        return {};
    if (prompt->is_string())
        return prompt->get<std::string>();
    std::string text;
    if (prompt->is_array()) {
        for (const Json& part : *prompt) {
            const std::string piece = textAt(part, "text");
            if (!text.empty() && !piece.empty())
                text += ' ';
            text += piece;
        }
    }
    return text;
}

Tool toolIn(const Call& call)
{
    return toolNamed(call.row.tool.empty() ? textAt(call.payload, call.dialect.places.tool) : call.row.tool);
}

const Json& inputIn(const Call& call)
{
    static const Json nothing;
    if (!call.row.tool.empty())
        return call.payload;
    const Json* input = valueAt(call.payload, call.dialect.places.input);
    return input ? *input : nothing;
}

// The last "exit code N" of a text; the command's own output comes before what its agent says about it.
std::optional<std::int32_t> statusIn(std::string_view text)
{
    // The end of a text that was cut is not its end.
    if (text.ends_with(cutMark))
        return std::nullopt;
    constexpr std::string_view words = "xit code";
    std::size_t at = text.size();
    while (at != 0 && (at = text.rfind('x', at - 1)) != std::string_view::npos) {
        const std::string_view here = text.substr(at);
        const auto sameLetter = [](char known, char given) {
            return known == given || (known == 'c' && given == 'C');
        };
        if (here.size() <= words.size() || !std::equal(words.begin(), words.end(), here.begin(), sameLetter))
            continue;
        std::string_view rest = here.substr(words.size());
        while (!rest.empty() && (rest.front() == ':' || rest.front() == ' '))
            rest.remove_prefix(1);
        std::int32_t status = 0;
        const auto [end, error] = std::from_chars(rest.data(), rest.data() + rest.size(), status);
        if (error == std::errc() && end != rest.data())
            return status;
    }
    return std::nullopt;
}

std::optional<std::int32_t> exitStatusIn(const Call& call, const Tool& tool)
{
    if (tool.kind != ToolClass::shell)
        return std::nullopt;
    const ExitStatus& rules = call.dialect.exitStatus;
    const Json* number = valueAt(call.payload, rules.number);
    if (number && number->is_number_integer()) {
        const auto value = number->get<std::int64_t>();
        if (value >= INT32_MIN && value <= INT32_MAX)
            return static_cast<std::int32_t>(value);
    }
    if (const auto status = statusIn(textAt(call.payload, rules.text)))
        return status;
    const Json* unfinished = valueAt(call.payload, rules.unfinished);
    const bool ended = rules.unfinished.empty() || !unfinished || *unfinished == false;
    if (rules.zeroWhenSilent && call.row.meaning == Meaning::toolAfter && ended)
        return 0;
    return std::nullopt;
}

void askInTerminal(const Call& call, Event& event, const std::string& text)
{
    event.kind = EventKind::inputRequired;
    event.message = text.empty() ? titled(call, " asks in the terminal") : text;
}

void describeTool(const Call& call, Event& event)
{
    const Tool tool = toolIn(call);
    event.toolName = tool.shown;
    event.command = subjectOf(tool, inputIn(call));
}

bool beforeTool(const Call& call, Event& event)
{
    const Tool tool = toolIn(call);
    if (tool.kind == ToolClass::question) {
        askInTerminal(call, event, questionIn(inputIn(call)));
        return true;
    }
    event.kind = EventKind::coding;
    event.isStep = true;
    describeTool(call, event);
    return true;
}

bool afterTool(const Call& call, Event& event)
{
    const Tool tool = toolIn(call);
    event.isStep = true;
    // Between its tools a subagent thinks; said so, its session ends by itself when no further tool comes.
    // The end of a question means the same: the user has answered, and the agent goes on.
    if (!subagentOf(call).empty() || tool.kind == ToolClass::question) {
        event.kind = EventKind::thinking;
        return true;
    }
    event.kind = EventKind::coding;
    event.afterTool = true;
    describeTool(call, event);
    event.exitCode = exitStatusIn(call, tool);
    return true;
}

bool mayActOnItsOwn(const Tool& tool)
{
    switch (tool.kind) {
    case ToolClass::shell:
    case ToolClass::write:
    case ToolClass::patch:
    case ToolClass::web:
        return true;
    case ToolClass::other:
        // Tools of a foreign server can do anything; the agent's own remaining ones keep house.
        return tool.shown.starts_with("mcp") || tool.shown.find("__") != std::string::npos ||
               tool.shown == "use_mcp_tool" || tool.shown == "browser_action";
    default:
        return false;
    }
}

bool request(const Call& call, Event& event)
{
    const Tool tool = toolIn(call);
    if (tool.kind == ToolClass::question) {
        askInTerminal(call, event, questionIn(inputIn(call)));
        return true;
    }
    if (tool.shown.empty())
        return false;
    event.toolName = tool.shown;
    event.command = requestOf(tool, inputIn(call), event.cwd);
    if (call.pruned) {
        event = tooLongToDecide(call.dialect, std::move(event));
        return true;
    }
    event.kind = EventKind::approvalRequired;
    event.message = tool.shown;
    if (!call.dialect.caveat.empty())
        event.message.append(" · ").append(call.dialect.caveat);
    return true;
}

bool permission(const Call& call, Event& event)
{
    if (call.dialect.permissionComesFirst) {
        const ToolClass kind = toolIn(call).kind;
        if (kind == ToolClass::read || kind == ToolClass::list || kind == ToolClass::search)
            return false;
    }
    return request(call, event);
}

bool gate(const Call& call, Event& event)
{
    return mayActOnItsOwn(toolIn(call)) ? request(call, event) : beforeTool(call, event);
}

bool notice(const Call& call, Event& event)
{
    const std::string type = textAt(call.payload, call.dialect.places.noticeType);
    const auto& asking = call.dialect.askingNotices;
    if (std::find(asking.begin(), asking.end(), type) == asking.end())
        return false;
    askInTerminal(call, event, textAt(call.payload, call.dialect.places.noticeText));
    return true;
}

void turnFinished(const Call& call, Event& event)
{
    event.kind = EventKind::responding;
    event.say = textAt(call.payload, call.dialect.places.say);
    if (event.say.empty() && !call.dialect.places.transcript.empty())
        event.say = latestWords(textAt(call.payload, call.dialect.places.transcript));
    event.say = cutAtCharacter(event.say, maxWordBytes);
}

bool prompted(const Call& call, Event& event)
{
    event.kind = EventKind::thinking;
    event.message = promptIn(call);
    if (event.message.empty() && call.dialect.emptyPromptContinues)
        return false;
    const std::string_view machine = call.dialect.machinePrompt;
    if (!machine.empty() && event.message.starts_with(machine))
        event.message.clear();
    event.message = cutAtCharacter(event.message, maxWordBytes);
    return true;
}

// False when the pet is told nothing.
bool describe(const Call& call, Event& event)
{
    switch (call.row.meaning) {
    case Meaning::sessionStarted:
        // A session that goes on after a compaction is not a new one.
        event.kind =
            textAt(call.payload, "source") == "compact" ? EventKind::thinking : EventKind::agentStarted;
        event.message = event.kind == EventKind::thinking ? std::string() : titled(call, " started");
        return true;
    case Meaning::sessionEnded:
        event.kind = EventKind::agentStopped;
        event.message = titled(call, " stopped");
        return true;
    case Meaning::subagentEnded:
        event.kind = EventKind::agentStopped;
        event.message = titled(call, "'s subagent finished");
        return !subagentOf(call).empty();
    case Meaning::prompt:
        return prompted(call, event);
    case Meaning::toolBefore:
        return beforeTool(call, event);
    case Meaning::toolAfter:
    case Meaning::toolFailed:
        return afterTool(call, event);
    case Meaning::permission:
        return permission(call, event);
    case Meaning::gate:
        return gate(call, event);
    case Meaning::terminalPrompt: {
        const Tool tool = toolIn(call);
        const std::string question =
            tool.kind == ToolClass::question ? questionIn(inputIn(call)) : textAt(call.payload, "action");
        askInTerminal(call, event, question);
        return true;
    }
    case Meaning::promptAnswered:
    case Meaning::compacted:
        event.kind = EventKind::thinking;
        return true;
    case Meaning::compactingOnDemand:
        if (textAt(call.payload, "trigger") != "manual")
            return false;
        [[fallthrough]];
    case Meaning::compacting:
        event.kind = EventKind::contextCompacting;
        return true;
    case Meaning::turnFinished:
        turnFinished(call, event);
        return true;
    case Meaning::taskFinished:
        turnFinished(call, event);
        event.kind = EventKind::taskCompleted;
        event.message = event.say;
        return true;
    case Meaning::turnFailed:
        event.kind = EventKind::taskFailed;
        event.message = cutAtCharacter(textAt(call.payload, call.dialect.places.failure), maxWordBytes);
        if (event.message.empty())
            event.message = titled(call, " failed");
        return true;
    case Meaning::interrupted:
        event.kind = EventKind::agentStopped;
        event.message = titled(call, " was interrupted");
        return true;
    case Meaning::notification:
        return notice(call, event);
    }
    return false;
}

} // namespace

std::vector<Event> translate(const Dialect& dialect, std::string_view hookEvent, const Payload& payload,
                             std::string_view home)
{
    const auto row = std::find_if(dialect.events.begin(), dialect.events.end(),
                                  [&](const EventRow& candidate) { return candidate.event == hookEvent; });
    if (row == dialect.events.end())
        return {};
    const Call call{dialect, *row, payload.root, payload.pruned};
    Event event;
    event.sessionId = sessionOf(call);
    event.cwd = textAt(payload.root, dialect.places.cwd);
    std::vector<Event> events;
    if (describe(call, event))
        events.push_back(std::move(event));
    if (dialect.refine)
        dialect.refine({payload.root, row->meaning, home}, events);
    return events;
}

Event tooLongToDecide(const Dialect& dialect, Event request)
{
    request.kind = EventKind::inputRequired;
    request.message = std::string(dialect.title).append(" asks for something too long to show here");
    return request;
}

} // namespace nibbo::bridge
