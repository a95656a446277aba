#include "bridge/SocketClient.h"

#include <cerrno>
#include <cstring>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>

namespace nibbo::bridge {

namespace {

#ifdef MSG_NOSIGNAL
constexpr int sendFlags = MSG_NOSIGNAL;
#else
constexpr int sendFlags = 0;
#endif

} // namespace

#ifdef SO_PEERCRED
bool belongsToThisUser(const Descriptor& socket)
{
    struct ucred peer = {};
    socklen_t size = sizeof peer;
    return ::getsockopt(socket.get(), SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 && peer.uid == ::geteuid();
}
#else
bool belongsToThisUser(const Descriptor& socket)
{
    uid_t user = 0;
    gid_t group = 0;
    return ::getpeereid(socket.get(), &user, &group) == 0 && user == ::geteuid();
}
#endif

std::string socketPath(std::string_view home)
{
    return std::string(home) + "/Library/Application Support/Nibbo/nibbo.sock";
}

Descriptor connectTo(const std::string& path)
{
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    // The application does not listen at a path of 104 bytes or more either.
    if (path.size() >= sizeof address.sun_path || path.size() >= 104)
        return Descriptor();
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    Descriptor socket(::socket(AF_UNIX, SOCK_STREAM, 0));
    if (!socket)
        return Descriptor();
    // Bounds the connecting as well, which waits while the server's backlog is full.
    const timeval limit = {2, 0};
    ::setsockopt(socket.get(), SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof limit);
    int result = 0;
    do {
        result = ::connect(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address);
    } while (result != 0 && errno == EINTR);
    if (result != 0 || !belongsToThisUser(socket))
        return Descriptor();
    return socket;
}

bool sendAll(const Descriptor& socket, std::string_view bytes)
{
    while (!bytes.empty()) {
        const ssize_t sent = ::send(socket.get(), bytes.data(), bytes.size(), sendFlags);
        if (sent < 0 && errno == EINTR)
            continue;
        if (sent <= 0)
            return false;
        bytes.remove_prefix(static_cast<std::size_t>(sent));
    }
    return true;
}

} // namespace nibbo::bridge
