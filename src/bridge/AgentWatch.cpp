#include "bridge/AgentWatch.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <string>
#include <string_view>
#include <sys/syscall.h>
#include <unistd.h>

namespace nibbo::bridge {

namespace {

using Milliseconds = std::chrono::milliseconds;

// Where there are no process handles, the parent is looked at in this interval.
constexpr Milliseconds lookInterval{2000};

#if defined(__linux__) && defined(SYS_pidfd_open)

// Not the parent-death signal: that one comes when the thread that forked ends, and an agent with a pool of
// threads ends threads all the time.
int processHandle(pid_t pid)
{
    return pid > 1 ? static_cast<int>(::syscall(SYS_pidfd_open, pid, 0)) : -1;
}

struct ProcessFacts
{
    std::string name;
    pid_t parent = 0;
};

ProcessFacts factsOf(pid_t pid)
{
    ProcessFacts facts;
    std::array<char, 512> text{};
    std::snprintf(text.data(), text.size(), "/proc/%d/stat", static_cast<int>(pid));
    const Descriptor file(::open(text.data(), O_RDONLY | O_CLOEXEC));
    const ssize_t size = file ? ::read(file.get(), text.data(), text.size() - 1) : 0;
    if (size <= 0)
        return facts;
    const std::string_view line(text.data(), static_cast<std::size_t>(size));
    const std::size_t open = line.find('(');
    const std::size_t close = line.rfind(')');
    if (open == std::string_view::npos || close == std::string_view::npos || close + 4 >= line.size())
        return facts;
    facts.name = line.substr(open + 1, close - open - 1);
    facts.parent = static_cast<pid_t>(std::strtol(text.data() + close + 4, nullptr, 10));
    return facts;
}

// A shell that waits for the helper outlives an agent that was killed; then the agent is one step further up.
int agentBehindShell(pid_t parent)
{
    const ProcessFacts facts = factsOf(parent);
    constexpr auto shells = std::to_array<std::string_view>({"sh", "dash", "bash", "zsh", "fish", "ksh"});
    if (std::find(shells.begin(), shells.end(), facts.name) == shells.end())
        return -1;
    return processHandle(facts.parent);
}

#else

int processHandle(pid_t)
{
    return -1;
}

int agentBehindShell(pid_t)
{
    return -1;
}

#endif

extern "C" void endQuietly(int)
{
    ::_exit(0);
}

} // namespace

AgentWatch::AgentWatch()
    : m_parent(::getppid())
    , m_parentHandle(processHandle(m_parent))
    , m_grandparentHandle(agentBehindShell(m_parent))
{}

bool AgentWatch::parentGone() const
{
    return ::getppid() != m_parent;
}

WaitResult AgentWatch::waitReadable(int fd, Deadline deadline) const
{
    // Of stdout only the fault is of interest: that its reader has gone.
    std::array<pollfd, 4> watched = {{
        {fd, POLLIN, 0},
        {STDOUT_FILENO, 0, 0},
        {m_parentHandle.get(), POLLIN, 0},
        {m_grandparentHandle.get(), POLLIN, 0},
    }};
    while (true) {
        if (parentGone())
            return WaitResult::agentGone;
        const auto left = std::chrono::ceil<Milliseconds>(deadline - std::chrono::steady_clock::now());
        if (left <= Milliseconds::zero())
            return WaitResult::timedOut;
        const Milliseconds step = m_parentHandle ? left : std::min(left, lookInterval);
        const int ready =
            ::poll(watched.data(), watched.size(), static_cast<int>(std::min<long>(step.count(), 1 << 30)));
        if (ready < 0 && errno != EINTR)
            return WaitResult::agentGone;
        if (ready <= 0)
            continue;
        if (watched[0].revents != 0)
            return WaitResult::readable;
        return WaitResult::agentGone;
    }
}

void endQuietlyOnSignals()
{
    struct sigaction quiet = {};
    quiet.sa_handler = endQuietly;
    for (const int signal : {SIGTERM, SIGINT, SIGHUP, SIGQUIT})
        ::sigaction(signal, &quiet, nullptr);
    struct sigaction ignored = {};
    ignored.sa_handler = SIG_IGN;
    ::sigaction(SIGPIPE, &ignored, nullptr);
}

} // namespace nibbo::bridge
