#include "intake/LocalSocketServer.h"

#include "base/NibboLog.h"

#include <QFile>

#include <poll.h>
#include <pthread.h>
#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <mutex>
#include <string_view>
#include <unordered_map>
#include <utility>

namespace nibbo {
namespace {

constexpr int backlog = 16;
/// What the helper and the plug-in check a path against too; shorter than what Linux would take.
constexpr qsizetype pathLimit = 104;
/// Connections taken in ahead of their turn.
constexpr std::size_t acceptedLimit = 256;
/// How long a failing accept is left alone, in milliseconds.
constexpr int acceptPause = 100;
constexpr rlim_t descriptorsWanted = 8192;
/// How long a moment without events is, in milliseconds, and how long a stream of them is let run.
constexpr int quiet = 2;
constexpr std::chrono::milliseconds longestStream{10};

constexpr std::string_view accepted = "{\"ok\":true}\n";
constexpr std::string_view refused = "{\"ok\":false}\n";
constexpr std::string_view granted = "{\"approval\":\"granted\"}\n";
constexpr std::string_view denied = "{\"approval\":\"denied\"}\n";

/// One write, whatever comes of it: a client that has gone away must neither stop nor kill us.
void reply(int connection, std::string_view line)
{
    [[maybe_unused]] const ssize_t sent =
        ::send(connection, line.data(), line.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
}

/// The file that a path names right now, to tell our own socket from one bound after it.
std::optional<std::pair<dev_t, ino_t>> fileAt(const QByteArray& path)
{
    struct stat status
    {};
    if (::lstat(path.constData(), &status) != 0)
        return std::nullopt;
    return std::pair(status.st_dev, status.st_ino);
}

} // namespace

/// The connections that wait for a verdict, under numbers that are never used twice: a descriptor's number
/// may already belong to another connection when a late verdict arrives. Any thread.
class WaitingConnections final
{
public:
    WaitingConnections()
        : m_hangups(::epoll_create1(EPOLL_CLOEXEC))
    {}

    /// Readable when one of the clients has hung up.
    int hangups() const { return m_hangups.get(); }

    std::uint64_t add(FileDescriptor connection)
    {
        const std::lock_guard lock(m_mutex);
        const std::uint64_t number = ++m_last;
        // Without asking for anything, only a hang-up and an error are reported; a client that merely
        // finished writing goes on waiting.
        epoll_event event{};
        event.data.u64 = number;
        ::epoll_ctl(m_hangups.get(), EPOLL_CTL_ADD, connection.get(), &event);
        m_connections.emplace(number, std::move(connection));
        return number;
    }

    void answer(std::uint64_t number, bool allow)
    {
        const std::lock_guard lock(m_mutex);
        const auto found = m_connections.find(number);
        if (found == m_connections.end())
            return;
        reply(found->second.get(), allow ? granted : denied);
        m_connections.erase(found);
    }

    void drop(std::uint64_t number)
    {
        const std::lock_guard lock(m_mutex);
        m_connections.erase(number);
    }

    void dropHungUp()
    {
        std::array<epoll_event, 64> events{};
        const int count = ::epoll_wait(m_hangups.get(), events.data(), static_cast<int>(events.size()), 0);
        for (int index = 0; index < count; ++index)
            drop(events[static_cast<std::size_t>(index)].data.u64);
    }

    void dropAll()
    {
        const std::lock_guard lock(m_mutex);
        m_connections.clear();
    }

    int count() const
    {
        const std::lock_guard lock(m_mutex);
        return static_cast<int>(m_connections.size());
    }

private:
    FileDescriptor m_hangups;
    mutable std::mutex m_mutex;
    std::unordered_map<std::uint64_t, FileDescriptor> m_connections;
    std::uint64_t m_last = 0;
};

namespace {

/// What all copies of one responder share.
class Verdict final
{
public:
    Verdict(const std::shared_ptr<WaitingConnections>& waiting, std::uint64_t number)
        : m_waiting(waiting)
        , m_number(number)
    {}
    Verdict(const Verdict&) = delete;
    Verdict& operator=(const Verdict&) = delete;
    ~Verdict()
    {
        if (const auto waiting = m_waiting.lock())
            waiting->drop(m_number);
    }

    void give(bool allow) const
    {
        if (const auto waiting = m_waiting.lock())
            waiting->answer(m_number, allow);
    }

private:
    std::weak_ptr<WaitingConnections> m_waiting;
    std::uint64_t m_number;
};

} // namespace

void raiseDescriptorLimit()
{
    rlimit limit{};
    if (::getrlimit(RLIMIT_NOFILE, &limit) != 0)
        return;
    const rlim_t wanted = std::min(limit.rlim_max, descriptorsWanted);
    if (limit.rlim_cur >= wanted)
        return;
    limit.rlim_cur = wanted;
    if (::setrlimit(RLIMIT_NOFILE, &limit) != 0)
        NibboLog::log(QStringLiteral("setrlimit() failed errno=%1").arg(errno));
}

LocalSocketServer::LocalSocketServer(AppPaths paths, uid_t owner)
    : m_paths(std::move(paths))
    , m_owner(owner)
    , m_waiting(std::make_shared<WaitingConnections>())
    , m_wake(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
{}

LocalSocketServer::~LocalSocketServer()
{
    stop();
}

void LocalSocketServer::start()
{
    if (m_thread.joinable() || m_stopping)
        return;
    raiseDescriptorLimit();
    m_thread = std::thread([this] { run(); });
}

void LocalSocketServer::stop()
{
    m_stopping = true;
    if (m_thread.joinable()) {
        ::eventfd_write(m_wake.get(), 1);
        m_thread.join();
    }
    m_waiting->dropAll();
}

int LocalSocketServer::waitingConnections() const
{
    return m_waiting->count();
}

void LocalSocketServer::run()
{
    ::pthread_setname_np(::pthread_self(), "nibbo.socket");
    if (!bindAndListen())
        return;
    const QByteArray path = QFile::encodeName(m_paths.socketFile());
    const auto bound = fileAt(path);
    m_running = true;
    while (!m_stopping) {
        if (m_accepted.empty()) {
            waitForInput(-1);
            continue;
        }
        FileDescriptor connection = std::move(m_accepted.front());
        m_accepted.pop_front();
        serveLine(std::move(connection));
        // Only now, that nobody waits for a reply any more; often the next one is there already.
        acceptPending(acceptedLimit);
        if (m_settleBy && std::chrono::steady_clock::now() >= *m_settleBy)
            settle();
    }
    settle();
    m_running = false;
    m_accepted.clear();
    m_listening.reset();
    // A helper that finds no socket gives up sooner than one that finds a deaf one.
    if (bound && fileAt(path) == bound)
        ::unlink(path.constData());
}

bool LocalSocketServer::bindAndListen()
{
    const QString path = m_paths.socketFile();
    const QByteArray bytes = QFile::encodeName(path);
    const auto failed = [](const char* call) {
        NibboLog::log(QStringLiteral("%1() failed errno=%2").arg(QLatin1String(call)).arg(errno));
        return false;
    };
    // One instance per user is assured before: what lies here is left over from a run that crashed.
    ::unlink(bytes.constData());
    FileDescriptor listening(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (!listening.isValid())
        return failed("socket");
    if (bytes.size() >= pathLimit) {
        NibboLog::log(QStringLiteral("socket path too long (%1 >= %2)").arg(bytes.size()).arg(pathLimit));
        return false;
    }
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::copy(bytes.begin(), bytes.end(), address.sun_path);
    if (::bind(listening.get(), reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0)
        return failed("bind");
    if (::listen(listening.get(), backlog) != 0)
        return failed("listen");
    m_listening = std::move(listening);
    NibboLog::log(QStringLiteral("nibbo socket listening at ") + path);
    return true;
}

/// Takes in what waits at the socket until `limit` are in. Out of descriptors or of memory, accept is left
/// alone for a while: the same failure would come back at once, for as long as the client waits.
void LocalSocketServer::acceptPending(std::size_t limit)
{
    while (m_accepted.size() < limit && !m_acceptPaused) {
        FileDescriptor connection(::accept4(m_listening.get(), nullptr, nullptr, SOCK_CLOEXEC));
        if (connection.isValid()) {
            if (isOurOwn(connection.get()))
                m_accepted.push_back(std::move(connection));
            continue;
        }
        if (errno == EAGAIN)
            return;
        m_acceptPaused = errno != EINTR && errno != ECONNABORTED;
    }
}

bool LocalSocketServer::isOurOwn(int connection) const
{
    ucred peer{};
    socklen_t size = sizeof(peer);
    if (::getsockopt(connection, SOL_SOCKET, SO_PEERCRED, &peer, &size) != 0 || peer.uid != m_owner) {
        NibboLog::log(QStringLiteral("socket: turned away a process of user %1").arg(peer.uid));
        return false;
    }
    return true;
}

/// Sleeps until there is something to do, and does what is not this connection's: takes in new connections
/// and lets go of those whose client hung up. False when the server is to stop.
bool LocalSocketServer::waitForInput(int connection)
{
    const bool takesMore = !m_acceptPaused && m_accepted.size() < acceptedLimit;
    // A negative descriptor is passed over.
    std::array<pollfd, 4> polled{{{m_wake.get(), POLLIN, 0},
                                  {m_waiting->hangups(), POLLIN, 0},
                                  {takesMore ? m_listening.get() : -1, POLLIN, 0},
                                  {connection, POLLIN, 0}}};
    const int timeout = m_settleBy ? quiet : m_acceptPaused ? acceptPause : -1;
    const int ready = ::poll(polled.data(), polled.size(), timeout);
    if (m_stopping)
        return false;
    if (ready == 0 && m_settleBy) {
        settle();
        return true;
    }
    if (ready == 0 || polled[1].revents != 0)
        m_acceptPaused = false;
    if (polled[1].revents != 0)
        m_waiting->dropHungUp();
    if (polled[2].revents != 0)
        acceptPending(connection < 0 ? 1 : acceptedLimit);
    return true;
}

void LocalSocketServer::settle()
{
    if (m_settleBy && onQuiet)
        onQuiet();
    m_settleBy.reset();
}

/// Reads up to the line feed, the end of the stream, an error or the limit, and gives the line's length in
/// `m_line`; nothing when the server is to stop. Whole blocks are read: what follows the line feed is of no
/// use to anybody, because a connection carries one line.
std::optional<std::size_t> LocalSocketServer::readLine(int connection)
{
    std::size_t used = 0;
    while (used < m_line.size()) {
        const ssize_t count = ::recv(connection, m_line.data() + used, m_line.size() - used, MSG_DONTWAIT);
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0 && errno == EAGAIN) {
            if (!waitForInput(connection))
                return std::nullopt;
            continue;
        }
        if (count <= 0)
            break;
        const char* block = m_line.data() + used;
        const auto length = static_cast<std::size_t>(count);
        if (const void* lineFeed = std::memchr(block, '\n', length))
            return used + static_cast<std::size_t>(static_cast<const char*>(lineFeed) - block);
        used += length;
    }
    return used;
}

void LocalSocketServer::serveLine(FileDescriptor connection)
{
    const std::optional<std::size_t> length = readLine(connection.get());
    if (!length)
        return;
    const auto incoming =
        IncomingEvent::decode(QByteArray::fromRawData(m_line.data(), static_cast<qsizetype>(*length)));
    if (!incoming)
        return reply(connection.get(), refused);
    const AgentEvent event = incoming->toAgentEvent();
    if (!m_settleBy)
        m_settleBy = std::chrono::steady_clock::now() + longestStream;
    if (event.type == AgentEventType::approvalRequired) {
        const auto verdict =
            std::make_shared<const Verdict>(m_waiting, m_waiting->add(std::move(connection)));
        if (onEvent)
            onEvent(event, [verdict](bool allow) { verdict->give(allow); });
        return;
    }
    if (onEvent)
        onEvent(event, [](bool) {});
    reply(connection.get(), accepted);
}

} // namespace nibbo
