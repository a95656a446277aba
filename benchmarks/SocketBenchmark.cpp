// Events per second and the 99th percentile of a hook's round trip through the socket server and the event
// bus, against a bare loop that accepts, reads, writes and closes, in turns on the same machine in the same
// run. usage: SocketBenchmark [SOCKET]   with SOCKET: through the application that listens there.
#include "base/AppPaths.h"
#include "base/FileDescriptor.h"
#include "base/Time.h"
#include "intake/AgentEventBus.h"
#include "platform/null/NullPlatform.h"

#include <QCoreApplication>
#include <QFile>
#include <QTemporaryDir>

#include <sys/socket.h>
#include <sys/un.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string_view>
#include <thread>
#include <vector>

namespace {

using namespace std::chrono;

constexpr int rounds = 15;
constexpr int eventsPerRound = 6400;
constexpr std::string_view line =
    "{\"provider\":\"claude\",\"type\":\"coding\",\"toolName\":\"Bash\",\"command\":\"npm test -- "
    "--watch=false\","
    "\"cwd\":\"/home/user/project\",\"sessionId\":\"3f1f9a52-6a0c-4f4e-9a55-0f6c3cf2a111\"}\n";

[[noreturn]] void fail(const char* what)
{
    std::perror(what);
    std::exit(1);
}

sockaddr_un addressOf(const QByteArray& path)
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() >= static_cast<qsizetype>(sizeof(address.sun_path)))
        fail("the path is too long");
    std::copy(path.begin(), path.end(), address.sun_path);
    return address;
}

/// The least that any server of this protocol has to do.
class BareServer final
{
public:
    explicit BareServer(const QByteArray& path)
        : m_listening(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0))
    {
        const sockaddr_un address = addressOf(path);
        if (::bind(m_listening.get(), reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0 ||
            ::listen(m_listening.get(), 16) != 0)
            fail("bare server");
        m_thread = std::thread([this] { run(); });
    }
    ~BareServer()
    {
        ::shutdown(m_listening.get(), SHUT_RDWR);
        m_thread.join();
    }
    BareServer(const BareServer&) = delete;
    BareServer& operator=(const BareServer&) = delete;

private:
    void run() const
    {
        constexpr std::string_view reply = "{\"ok\":true}\n";
        std::array<char, 65536> buffer{};
        for (;;) {
            const nibbo::FileDescriptor connection(::accept(m_listening.get(), nullptr, nullptr));
            if (!connection.isValid())
                return;
            if (::read(connection.get(), buffer.data(), buffer.size()) > 0 &&
                ::send(connection.get(), reply.data(), reply.size(), MSG_NOSIGNAL) < 0)
                continue;
        }
    }

    nibbo::FileDescriptor m_listening;
    std::thread m_thread;
};

/// One hook: connect, write, read to the end.
void roundTrip(const sockaddr_un& address)
{
    const nibbo::FileDescriptor client(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    if (::connect(client.get(), reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0)
        fail("connect");
    if (::send(client.get(), line.data(), line.size(), MSG_NOSIGNAL) != static_cast<ssize_t>(line.size()))
        fail("send");
    std::array<char, 64> buffer{};
    std::size_t used = 0;
    for (ssize_t count = 1; count > 0 && used < buffer.size(); used += static_cast<std::size_t>(count)) {
        count = ::read(client.get(), buffer.data() + used, buffer.size() - used);
        if (count < 0)
            fail("read");
    }
    if (std::string_view(buffer.data(), used) != "{\"ok\":true}\n")
        fail("an unexpected reply");
}

struct Measured
{
    double eventsPerSecond = 0;
    /// Microseconds.
    double p99 = std::numeric_limits<double>::max();
};

Measured better(const Measured& a, const Measured& b)
{
    return {std::max(a.eventsPerSecond, b.eventsPerSecond), std::min(a.p99, b.p99)};
}

Measured measure(const QByteArray& path, int clients)
{
    const sockaddr_un address = addressOf(path);
    const auto share = static_cast<std::size_t>(eventsPerRound / clients);
    std::vector<std::vector<double>> latencies(static_cast<std::size_t>(clients));
    std::atomic<bool> go = false;
    std::vector<std::thread> threads;
    for (auto& own : latencies)
        threads.emplace_back([&own, &go, &address, share] {
            own.reserve(share);
            go.wait(false);
            for (std::size_t index = 0; index < share; ++index) {
                const auto begin = steady_clock::now();
                roundTrip(address);
                own.push_back(duration<double, std::micro>(steady_clock::now() - begin).count());
            }
        });
    const auto begin = steady_clock::now();
    go = true;
    go.notify_all();
    for (std::thread& thread : threads)
        thread.join();
    const double seconds = duration<double>(steady_clock::now() - begin).count();
    std::vector<double> all;
    for (const auto& own : latencies)
        all.insert(all.end(), own.begin(), own.end());
    const auto nth = all.begin() + static_cast<std::ptrdiff_t>(all.size() * 99 / 100);
    std::nth_element(all.begin(), nth, all.end());
    return {static_cast<double>(all.size()) / seconds, *nth};
}

void compare(const QByteArray& bare, const QByteArray& ours)
{
    std::printf("%8s %14s %14s %6s %12s %12s %6s\n", "clients", "bare events/s", "events/s", "ratio",
                "bare p99 us", "p99 us", "ratio");
    for (const int clients : {1, 8, 64}) {
        // The two take turns, and the best round of each counts: whatever else the machine does can only slow
        // a round down.
        Measured floor;
        Measured mine;
        for (int round = 0; round < rounds; ++round) {
            floor = better(floor, measure(bare, clients));
            mine = better(mine, measure(ours, clients));
        }
        std::printf("%8d %14.0f %14.0f %6.2f %12.0f %12.0f %6.2f\n", clients, floor.eventsPerSecond,
                    mine.eventsPerSecond, floor.eventsPerSecond / mine.eventsPerSecond, floor.p99, mine.p99,
                    mine.p99 / floor.p99);
        std::fflush(stdout);
    }
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    const QTemporaryDir scratch(QStringLiteral("/tmp/nibbo-bench-XXXXXX"));
    const nibbo::AppPaths paths(scratch.path());
    const QByteArray barePath = QFile::encodeName(scratch.filePath(QStringLiteral("bare.sock")));
    const BareServer bare(barePath);

    nibbo::NullProcessList processes;
    const nibbo::SystemClock clock;
    const auto settings = std::make_shared<const nibbo::Settings>();
    nibbo::AgentEventBus bus(
        paths, [settings] { return settings; }, processes, clock);
    std::atomic<long> delivered = 0;
    QObject::connect(&bus, &nibbo::AgentEventBus::eventDelivered, [&delivered] { ++delivered; });
    QByteArray ours;
    if (argc > 1) {
        ours = argv[1];
    } else {
        bus.start();
        ours = QFile::encodeName(paths.socketFile());
        while (!bus.socketServer().running())
            std::this_thread::yield();
    }

    std::thread driver([&] {
        compare(barePath, ours);
        QMetaObject::invokeMethod(&application, &QCoreApplication::quit, Qt::QueuedConnection);
    });
    QCoreApplication::exec();
    driver.join();
    if (argc <= 1)
        std::printf("%ld events reached the main thread\n", delivered.load());
    return 0;
}
