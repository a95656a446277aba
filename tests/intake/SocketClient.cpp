#include "intake/SocketClient.h"

#include <QElapsedTimer>
#include <QFile>

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <algorithm>
#include <array>
#include <cerrno>

namespace nibbo::test {

SocketClient::SocketClient(const QString& path)
    : m_socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0))
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const QByteArray bytes = QFile::encodeName(path);
    if (bytes.size() >= static_cast<qsizetype>(sizeof(address.sun_path)))
        return;
    std::copy(bytes.begin(), bytes.end(), address.sun_path);
    m_connected =
        ::connect(m_socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0;
}

bool SocketClient::send(const QByteArray& bytes) const
{
    qsizetype sent = 0;
    while (sent < bytes.size()) {
        const ssize_t count = ::send(m_socket.get(), bytes.constData() + sent,
                                     static_cast<std::size_t>(bytes.size() - sent), MSG_NOSIGNAL);
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            return false;
        sent += count;
    }
    return true;
}

void SocketClient::finishWriting() const
{
    ::shutdown(m_socket.get(), SHUT_WR);
}

bool SocketClient::hasInput() const
{
    pollfd polled{m_socket.get(), POLLIN, 0};
    return ::poll(&polled, 1, 0) > 0;
}

QByteArray SocketClient::readToEnd(int limitMs) const
{
    QElapsedTimer timer;
    timer.start();
    QByteArray result;
    for (;;) {
        pollfd polled{m_socket.get(), POLLIN, 0};
        const auto left = static_cast<int>(std::max<qint64>(0, limitMs - timer.elapsed()));
        const int ready = ::poll(&polled, 1, left);
        if (ready < 0 && errno == EINTR)
            continue;
        if (ready <= 0)
            return result + "(no end)";
        std::array<char, 4096> block{};
        const ssize_t count = ::recv(m_socket.get(), block.data(), block.size(), 0);
        if (count < 0 && errno == EINTR)
            continue;
        // A server that left something unread resets the connection: an end as well.
        if (count <= 0)
            return result;
        result.append(block.data(), count);
    }
}

QByteArray replyTo(const QString& path, const QByteArray& line)
{
    const SocketClient client(path);
    client.send(line);
    return client.readToEnd();
}

} // namespace nibbo::test
