// nibbo-bridge --source AGENT --event EVENT
//
// Started by an agent's hook with the hook's payload on stdin. Tells the application what happened; for a
// permission request waits for the user's answer and prints it in the agent's own form. Whatever goes wrong,
// it prints no decision and exits 0, so that the agent goes on as if there were no hook.

#include "bridge/AgentWatch.h"
#include "bridge/PayloadReader.h"
#include "bridge/RequestTurn.h"
#include "bridge/SocketClient.h"
#include "bridge/Translation.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <memory>
#include <string>
#include <unistd.h>

namespace nibbo::bridge {

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

// How long the payload may stand still. Hooks that do not wait for a decision are killed after five seconds.
constexpr auto payloadPause = 4s;
// An application that is well acknowledges at once; one that is not must not hold up the agent.
constexpr auto acknowledgeLimit = 250ms;
constexpr auto crowdingLimit = 3s;
constexpr std::size_t maxReplyBytes = 4096;

struct Arguments
{
    std::string_view source;
    std::string_view event;
};

Arguments argumentsIn(int count, char** values)
{
    Arguments arguments;
    for (int i = 1; i + 1 < count; ++i) {
        const std::string_view name = values[i];
        if (name == "--source")
            arguments.source = values[++i];
        else if (name == "--event")
            arguments.event = values[++i];
    }
    return arguments;
}

void writeOut(std::string_view text)
{
    while (!text.empty()) {
        const ssize_t written = ::write(STDOUT_FILENO, text.data(), text.size());
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            return;
        text.remove_prefix(static_cast<std::size_t>(written));
    }
}

void printAnswer(const Answers& answers, Verdict verdict)
{
    const std::string_view answer = verdict == Verdict::granted  ? answers.granted
                                    : verdict == Verdict::denied ? answers.denied
                                                                 : answers.none;
    if (!answer.empty())
        writeOut(std::string(answer) + '\n');
}

// What the user is to decide on is wanted whole. Stdin is read to the end of the payload, however much there
// is: an agent that finds nobody reading may take it for an error of the hook.
std::optional<Payload> readPayload(const AgentWatch& watch, bool whole)
{
    constexpr std::size_t chunkBytes = 65536;
    const auto buffer = std::make_unique<char[]>(chunkBytes);
    PayloadReader reader(whole ? PayloadReader::wholeLineBytes : PayloadReader::shownBytes);
    while (!reader.finished()) {
        // Readable at once in nearly every case; the watch is for an agent that never closes the pipe.
        if (watch.waitReadable(STDIN_FILENO, Clock::now() + payloadPause) != WaitResult::readable)
            break;
        const ssize_t got = ::read(STDIN_FILENO, buffer.get(), chunkBytes);
        if (got < 0 && errno == EINTR)
            continue;
        if (got <= 0)
            break;
        reader.feed(std::string_view(buffer.get(), static_cast<std::size_t>(got)));
    }
    return reader.take();
}

struct Reply
{
    bool wasLetGo = false; // the application closed the connection without a whole line
    std::string text;      // empty when there is no whole line
};

Reply readReply(const Descriptor& socket, const AgentWatch& watch, AgentWatch::Deadline deadline)
{
    std::string reply;
    while (reply.size() < maxReplyBytes &&
           watch.waitReadable(socket.get(), deadline) == WaitResult::readable) {
        std::array<char, 512> bytes{};
        const ssize_t got = ::read(socket.get(), bytes.data(), bytes.size());
        if (got < 0 && errno == EINTR)
            continue;
        if (got <= 0)
            return {true, {}};
        reply.append(bytes.data(), static_cast<std::size_t>(got));
        if (const std::size_t end = reply.find('\n'); end != std::string::npos)
            return {false, reply.substr(0, end)};
    }
    return {};
}

Reply exchange(const std::string& path, std::string_view line, const AgentWatch& watch,
               AgentWatch::Deadline deadline)
{
    const Descriptor socket = connectTo(path);
    if (!socket || !sendAll(socket, line))
        return {};
    return readReply(socket, watch, deadline);
}

// A step of another tool that was reported in the very moment of the request can make the application take
// the request for settled and let it go. So early that is the likeliest cause: it is made once more.
Verdict ask(const std::string& path, std::string_view line, const AgentWatch& watch,
            AgentWatch::Deadline deadline, bool mayBeCrowdedOut)
{
    const auto start = Clock::now();
    Reply reply = exchange(path, line, watch, deadline);
    const auto waited = Clock::now() - start;
    if (mayBeCrowdedOut && reply.wasLetGo && waited < crowdingLimit)
        reply = exchange(path, line, watch, deadline);
    return verdictOf(reply.text);
}

// The verdict, where the event is one that waits for it.
Verdict deliver(const Dialect& dialect, Event event, const std::string& path, const AgentWatch& watch)
{
    WireLine line = wireLine(dialect.id, event);
    if (event.kind == EventKind::approvalRequired && line.commandWasCut) {
        event = tooLongToDecide(dialect, std::move(event));
        line = wireLine(dialect.id, event);
    }
    const SessionAddress session{path, dialect.id, event.sessionId};
    const bool takesTurns = dialect.promptFollowsHook && !event.sessionId.empty();
    if (event.kind != EventKind::approvalRequired) {
        if (!(event.isStep && takesTurns && RequestTurn::isTaken(session)))
            exchange(path, line.text, watch, Clock::now() + acknowledgeLimit);
        return Verdict::none;
    }
    const auto deadline = Clock::now() + dialect.patience;
    std::optional<RequestTurn> turn;
    if (takesTurns && !(turn = RequestTurn::take(session, watch, deadline)))
        return Verdict::none;
    return ask(path, line.text, watch, deadline, takesTurns);
}

Verdict handleHook(const Dialect& dialect, std::string_view hookEvent)
{
    const AgentWatch watch;
    const auto payload = readPayload(watch, answers(dialect, hookEvent));
    const char* home = std::getenv("HOME");
    if (!payload || !home || *home == '\0')
        return Verdict::none;
    const std::string path = socketPath(home);
    Verdict verdict = Verdict::none;
    for (Event& event : translate(dialect, hookEvent, *payload, home))
        verdict = deliver(dialect, std::move(event), path, watch);
    return verdict;
}

// Descriptors that the agent left closed are taken by /dev/null, lest the socket become somebody's stdout.
void fillStandardDescriptors()
{
    int fd = ::open("/dev/null", O_RDWR);
    while (fd >= 0 && fd <= STDERR_FILENO)
        fd = ::open("/dev/null", O_RDWR);
    if (fd > STDERR_FILENO)
        ::close(fd);
}

void run(int count, char** values)
{
    const Arguments arguments = argumentsIn(count, values);
    const Dialect* dialect = dialectNamed(arguments.source);
    if (!dialect)
        return;
    Verdict verdict = Verdict::none;
    try {
        verdict = handleHook(*dialect, arguments.event);
    } catch (...) {
        // Out of memory, most likely: no decision.
        verdict = Verdict::none;
    }
    if (answers(*dialect, arguments.event))
        printAnswer(dialect->answers, verdict);
}

bool answerPerson(int count, char** values)
{
    const std::string_view first = count > 1 ? values[1] : "";
    if (first == "--version") {
        writeOut("nibbo-bridge " NIBBO_VERSION "\n");
        return true;
    }
    if (first != "--help")
        return false;
    writeOut("Usage: nibbo-bridge --source AGENT --event EVENT < PAYLOAD\n"
             "Started by the hooks of coding agents; tells Nibbo what they do and brings back its user's "
             "verdict.\n");
    return true;
}

} // namespace

} // namespace nibbo::bridge

int main(int count, char** values)
{
    nibbo::bridge::endQuietlyOnSignals();
    nibbo::bridge::fillStandardDescriptors();
    if (!nibbo::bridge::answerPerson(count, values))
        nibbo::bridge::run(count, values);
    // No destructors run: there is nothing left to put in order.
    ::_exit(0);
}
