#pragma once

#include "agents/AgentEvent.h"
#include "base/AppPaths.h"
#include "base/FileDescriptor.h"

#include <sys/types.h>

#include <array>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <thread>

namespace nibbo {

class WaitingConnections;

/// The application's only inbound channel: one JSON line from each connection of the Unix-domain socket in
/// the support folder, answered with one line. A thread of its own, "nibbo.socket", serves one connection
/// after the other in the order of their arrival; reading has no time limit, because hooks send their line at
/// once.
///
/// Progress is acknowledged and its connection closed. A permission request keeps its connection, for hours
/// if need be, until its responder is called; when its client hangs up before, the descriptor is given back
/// and the late verdict goes nowhere. A peer that is another user is turned away unread.
///
/// Nothing here fails towards the caller: without a socket the application runs without events and the log
/// says why.
class LocalSocketServer final
{
public:
    /// Writes the verdict and closes the connection. Any thread, at any later time, also after the server is
    /// gone; only the first call counts. Once the last copy is destroyed uncalled, the connection is closed
    /// without a verdict, so that the agent goes on as if nobody had been asked.
    using Responder = std::function<void(bool allow)>;
    using Handler = std::function<void(const AgentEvent& event, const Responder& respond)>;

    /// `owner` is the only user whose processes are listened to.
    explicit LocalSocketServer(AppPaths paths, uid_t owner = ::geteuid());
    ~LocalSocketServer();
    LocalSocketServer(const LocalSocketServer&) = delete;
    LocalSocketServer& operator=(const LocalSocketServer&) = delete;

    /// The one consumer, called on the server's thread. Set it before `start`. The responder of an event that
    /// waits for nothing does nothing.
    Handler onEvent;
    /// Called on the server's thread after events once nothing has come for a moment, and every few
    /// milliseconds as long as they keep coming: the place for what can be done for many events at once. Set
    /// it before `start`.
    std::function<void()> onQuiet;

    /// Binds and listens on the server's thread and returns at once. Once in the server's life.
    void start();
    /// Ends the thread and closes every connection, the waiting ones without a verdict.
    void stop();

    /// True once it listens. Any thread.
    bool running() const { return m_running; }
    /// How many connections wait for a verdict. Any thread.
    int waitingConnections() const;

private:
    static constexpr std::size_t lineLimit = 65536;

    void run();
    bool bindAndListen();
    void acceptPending(std::size_t limit);
    void serveLine(FileDescriptor connection);
    std::optional<std::size_t> readLine(int connection);
    bool waitForInput(int connection);
    void settle();
    bool isOurOwn(int connection) const;

    AppPaths m_paths;
    uid_t m_owner;
    std::shared_ptr<WaitingConnections> m_waiting;
    FileDescriptor m_wake;
    std::thread m_thread;
    std::atomic<bool> m_running = false;
    std::atomic<bool> m_stopping = false;

    // Touched on the server's thread only.
    FileDescriptor m_listening;
    /// Taken off the system's short queue at once, so that a burst never fills it, and served in turn.
    std::deque<FileDescriptor> m_accepted;
    bool m_acceptPaused = false;
    /// When `onQuiet` is due at the latest; nothing while there is nothing to call it for.
    std::optional<std::chrono::steady_clock::time_point> m_settleBy;
    std::array<char, lineLimit> m_line{};
};

/// Lets the process hold as many descriptors as the system allows it, within reason.
void raiseDescriptorLimit();

} // namespace nibbo
