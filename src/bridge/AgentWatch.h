#pragma once

// Waiting without outliving the agent. The agent counts as gone when the process that started the helper has
// ended or nobody reads the helper's stdout any more. Waiting costs no CPU: it is one poll on all of that.

#include "bridge/Descriptor.h"

#include <array>
#include <chrono>
#include <sys/types.h>

namespace nibbo::bridge {

enum class WaitResult
{
    readable,
    agentGone,
    timedOut,
};

class AgentWatch final
{
public:
    using Deadline = std::chrono::steady_clock::time_point;

    // Takes note of the parent; made at the start, before the parent has had time to go.
    AgentWatch();

    WaitResult waitReadable(int fd, Deadline deadline) const;

private:
    bool parentGone() const;

    pid_t m_parent;
    Descriptor m_parentHandle;
    Descriptor m_grandparentHandle;
};

// From here on the signals that end a process end this one quietly with status 0: some agents take a hook
// that a signal killed for a denial. A write to a closed pipe is an error, not a signal.
void endQuietlyOnSignals();

} // namespace nibbo::bridge
