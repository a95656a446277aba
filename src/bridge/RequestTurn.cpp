#include "bridge/RequestTurn.h"

#include "bridge/SocketClient.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <sys/socket.h>
#include <sys/un.h>

namespace nibbo::bridge {

#ifdef __linux__

namespace {

struct TurnName
{
    sockaddr_un address = {};
    socklen_t size = 0;

    const sockaddr* get() const { return reinterpret_cast<const sockaddr*>(&address); }
};

// FNV-1a: only to make a name of fixed length of whatever the agent calls its session.
std::uint64_t digestOf(const SessionAddress& session)
{
    std::uint64_t digest = 14695981039346656037ULL;
    for (const std::string_view text : {session.application, session.agent, session.session}) {
        for (const char byte : text)
            digest = (digest ^ static_cast<unsigned char>(byte)) * 1099511628211ULL;
        digest = (digest ^ 0xFFU) * 1099511628211ULL; // no text holds this byte
    }
    return digest;
}

TurnName nameOf(const SessionAddress& session)
{
    TurnName name;
    name.address.sun_family = AF_UNIX;
    // The leading zero byte makes it a name of the kernel's, not of the file system's.
    char* text = name.address.sun_path + 1;
    const int length = std::snprintf(text, sizeof name.address.sun_path - 1, "nibbo-request/%016llx",
                                     static_cast<unsigned long long>(digestOf(session)));
    name.size =
        static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + 1 + static_cast<std::size_t>(length));
    return name;
}

Descriptor newSocket()
{
    return Descriptor(::socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
}

enum class Holder
{
    nobody,
    ours,
    crowded, // so many wait already that no more can be told
    foreign,
};

Holder holderOf(const Descriptor& socket, const TurnName& name)
{
    if (::connect(socket.get(), name.get(), name.size) != 0)
        return errno == EAGAIN ? Holder::crowded : errno == ECONNREFUSED ? Holder::nobody : Holder::foreign;
    return belongsToThisUser(socket) ? Holder::ours : Holder::foreign;
}

} // namespace

std::optional<RequestTurn> RequestTurn::take(const SessionAddress& session, const AgentWatch& watch,
                                             AgentWatch::Deadline deadline)
{
    const TurnName name = nameOf(session);
    // Turns are a courtesy among our own: whoever cannot have one, or is kept from it, asks without.
    constexpr int patienceWithNobody = 200;
    int looks = 0;
    while (true) {
        Descriptor mine = newSocket();
        if (!mine)
            return RequestTurn(Descriptor());
        if (::bind(mine.get(), name.get(), name.size) == 0) {
            ::listen(mine.get(), SOMAXCONN);
            return RequestTurn(std::move(mine));
        }
        if (errno != EADDRINUSE || ++looks > patienceWithNobody)
            return RequestTurn(Descriptor());
        const Descriptor other = newSocket();
        switch (holderOf(other, name)) {
        case Holder::ours:
            // Breaks when the holder ends.
            if (watch.waitReadable(other.get(), deadline) != WaitResult::readable)
                return std::nullopt;
            looks = 0;
            break;
        case Holder::nobody:
            // It ended just now, or has not begun to listen: look again, in a moment.
            if (watch.waitReadable(-1, std::min(deadline, std::chrono::steady_clock::now() +
                                                              std::chrono::milliseconds(5))) ==
                    WaitResult::agentGone ||
                std::chrono::steady_clock::now() >= deadline)
                return std::nullopt;
            break;
        case Holder::crowded:
        case Holder::foreign:
            return RequestTurn(Descriptor());
        }
    }
}

bool RequestTurn::isTaken(const SessionAddress& session)
{
    const Holder holder = holderOf(newSocket(), nameOf(session));
    return holder == Holder::ours || holder == Holder::crowded;
}

#else

std::optional<RequestTurn> RequestTurn::take(const SessionAddress&, const AgentWatch&, AgentWatch::Deadline)
{
    return RequestTurn(Descriptor());
}

bool RequestTurn::isTaken(const SessionAddress&)
{
    return false;
}

#endif

} // namespace nibbo::bridge
