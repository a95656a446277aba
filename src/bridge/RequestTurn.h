#pragma once

// The turn of a session at the card. Agents run tools side by side, and each tool has a hook process of its
// own; the application shows one request a session, and takes the next event of that session for a sign that
// the request is settled. Where the agent's own prompt comes only after its hook, that sign would be false:
// so the hook that waits holds its session's turn, a second request waits for it, and steps of other tools
// are not reported meanwhile.
//
// A turn is a socket name that exists as long as its holder: the kernel gives it back however the holder
// ends, and waiting for it is waiting for a connection to break. Other users' sockets of that name do not
// count. On systems without such names every turn is free at once.

#include "bridge/AgentWatch.h"

#include <optional>
#include <string>
#include <string_view>

namespace nibbo::bridge {

// Which session's turn it is.
struct SessionAddress
{
    std::string_view application; // the path of its socket: each application has its own card
    std::string_view agent;
    std::string_view session;
};

class RequestTurn final
{
public:
    // Waits until the turn is free. None when the deadline or the agent's end came first.
    static std::optional<RequestTurn> take(const SessionAddress& session, const AgentWatch& watch,
                                           AgentWatch::Deadline deadline);

    static bool isTaken(const SessionAddress& session);

private:
    explicit RequestTurn(Descriptor holder)
        : m_holder(std::move(holder))
    {}

    Descriptor m_holder;
};

} // namespace nibbo::bridge
