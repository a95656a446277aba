#pragma once

#include "base/FileDescriptor.h"

#include <QByteArray>
#include <QString>

namespace nibbo::test {

/// One connection to a Unix-domain socket, as a hook makes it. Any thread.
class SocketClient final
{
public:
    /// Connects, waiting for room in the listener's queue.
    explicit SocketClient(const QString& path);

    bool isConnected() const { return m_connected; }
    /// Writes everything; false when the other side has closed.
    bool send(const QByteArray& bytes) const;
    /// Says that nothing more will be written.
    void finishWriting() const;
    void close() { m_socket.reset(); }
    /// Everything up to the end of the stream; "(no end)" when none comes within the limit.
    QByteArray readToEnd(int limitMs = 30000) const;
    /// Whether anything, the end included, could be read without waiting.
    bool hasInput() const;

private:
    FileDescriptor m_socket;
    bool m_connected = false;
};

/// The whole reply to one line.
QByteArray replyTo(const QString& path, const QByteArray& line);

} // namespace nibbo::test
