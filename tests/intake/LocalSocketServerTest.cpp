#include "intake/LocalSocketServer.h"

#include "base/AtomicFile.h"
#include "base/NibboLog.h"
#include "intake/SocketClient.h"
#include "support/Wait.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <mutex>
#include <thread>
#include <vector>

namespace nibbo {
namespace {

using test::replyTo;
using test::SocketClient;
using test::waitFor;

const QByteArray ok = "{\"ok\":true}\n";
const QByteArray no = "{\"ok\":false}\n";
const QByteArray granted = "{\"approval\":\"granted\"}\n";
const QByteArray denied = "{\"approval\":\"denied\"}\n";
const QByteArray request = "{\"type\":\"approvalRequired\",\"command\":\"make\"}\n";

/// A server in a home of its own that notes what it hands out.
class LocalSocketServerTest : public testing::Test
{
protected:
    QTemporaryDir home{QStringLiteral("/tmp/nibbo-XXXXXX")};
    AppPaths paths{home.path()};
    QString socketFile = home.path() + QStringLiteral("/Library/Application Support/Nibbo/nibbo.sock");
    std::unique_ptr<LocalSocketServer> server = std::make_unique<LocalSocketServer>(paths);

    void TearDown() override { NibboLog::setFile({}); }

    void listen(LocalSocketServer& which)
    {
        which.onEvent = [this](const AgentEvent& event, const LocalSocketServer::Responder& respond) {
            const std::lock_guard lock(m_mutex);
            m_events.push_back(event);
            m_responders.push_back(respond);
        };
        which.start();
        ASSERT_TRUE(waitFor([&which] { return which.running(); }));
    }
    void listen() { listen(*server); }

    std::vector<AgentEvent> events() const
    {
        const std::lock_guard lock(m_mutex);
        return m_events;
    }
    std::size_t eventCount() const { return events().size(); }
    LocalSocketServer::Responder responder(std::size_t index) const
    {
        const std::lock_guard lock(m_mutex);
        return m_responders.at(index);
    }
    void forgetResponders()
    {
        const std::lock_guard lock(m_mutex);
        m_responders.clear();
    }

private:
    mutable std::mutex m_mutex;
    std::vector<AgentEvent> m_events;
    std::vector<LocalSocketServer::Responder> m_responders;
};

TEST_F(LocalSocketServerTest, AnswersOneLineAndCloses)
{
    listen();
    struct Row
    {
        const char* what;
        QByteArray line;
        QByteArray reply;
    };
    const std::vector<Row> rows{
        {"an event", "{\"type\":\"thinking\"}\n", ok},
        {"an empty object", "{}\n", ok},
        {"a carriage return", "{\"type\":\"coding\"}\r\n", ok},
        {"unknown keys", "{\"type\":\"coding\",\"later\":[1,{\"a\":null}]}\n", ok},
        {"what follows the line", "{\"type\":\"coding\"}\nnonsense\n", ok},
        {"no JSON", "nonsense\n", no},
        {"half an object", "{\"type\":\n", no},
        {"an array", "[]\n", no},
        {"an empty line", "\n", no},
        {"a later line does not help", "\n{\"type\":\"thinking\"}\n", no},
        {"a wrong type", "{\"exitCode\":\"1\"}\n", no},
        {"no UTF-8", "{\"message\":\"\xff\xfe\"}\n", no},
        {"a surrogate in UTF-8", "{\"message\":\"\xed\xa0\x80\"}\n", no},
        {"a zero byte", QByteArray("{}\0\n", 4), no},
    };
    std::size_t accepted = 0;
    for (const Row& row : rows) {
        EXPECT_EQ(replyTo(socketFile, row.line).toStdString(), row.reply.toStdString()) << row.what;
        accepted += row.reply == ok ? 1 : 0;
    }
    EXPECT_EQ(eventCount(), accepted) << "only what was accepted is handed on";
}

TEST_F(LocalSocketServerTest, TakesTheLastLineAtTheEndOfTheStream)
{
    listen();
    const SocketClient client(socketFile);
    ASSERT_TRUE(client.send("{\"message\":\"no line feed\"}"));
    client.finishWriting();
    EXPECT_EQ(client.readToEnd(), ok);
    const SocketClient silent(socketFile);
    silent.finishWriting();
    EXPECT_EQ(silent.readToEnd(), no);
    ASSERT_EQ(eventCount(), 1U);
    EXPECT_EQ(events().front().message, QStringLiteral("no line feed"));
}

TEST_F(LocalSocketServerTest, PutsALineTogetherThatArrivesInPieces)
{
    listen();
    const SocketClient client(socketFile);
    for (const char letter : QByteArray("{\"message\":\"in pieces\"}\n"))
        ASSERT_TRUE(client.send(QByteArray(1, letter)));
    EXPECT_EQ(client.readToEnd(), ok);
    EXPECT_EQ(events().front().message, QStringLiteral("in pieces"));
}

TEST_F(LocalSocketServerTest, CutsALineAt65536Bytes)
{
    listen();
    const QByteArray head = "{\"message\":\"";
    const QByteArray tail = "\"}";
    const auto lineOf = [&](int length) {
        return head + QByteArray(length - head.size() - tail.size(), 'x') + tail;
    };
    // The client neither writes a line feed nor finishes: the length alone ends the line.
    EXPECT_EQ(replyTo(socketFile, lineOf(65536)), ok);
    EXPECT_EQ(replyTo(socketFile, lineOf(65535) + '\n'), ok);
    EXPECT_EQ(replyTo(socketFile, lineOf(65536) + '\n'), ok);
    EXPECT_EQ(replyTo(socketFile, lineOf(65537) + '\n'), no);
    EXPECT_EQ(replyTo(socketFile, lineOf(3'000'000) + '\n'), no);
    EXPECT_EQ(replyTo(socketFile, "{}\n"), ok) << "the rest of a long line is no line of its own";
    ASSERT_EQ(eventCount(), 4U);
    EXPECT_EQ(events().front().message.size(), 65536 - head.size() - tail.size());
}

TEST_F(LocalSocketServerTest, HoldsARequestUntilItsVerdict)
{
    listen();
    for (const bool allow : {true, false}) {
        const SocketClient client(socketFile);
        ASSERT_TRUE(client.send(request));
        const std::size_t before = allow ? 0 : 2;
        ASSERT_TRUE(waitFor([&] { return eventCount() == before + 1; }));
        // Others are served meanwhile.
        EXPECT_EQ(replyTo(socketFile, "{}\n"), ok);
        EXPECT_FALSE(client.hasInput());
        EXPECT_EQ(server->waitingConnections(), 1);
        responder(before)(allow);
        EXPECT_EQ(client.readToEnd(), allow ? granted : denied);
        responder(before)(!allow);
        EXPECT_EQ(server->waitingConnections(), 0);
    }
}

TEST_F(LocalSocketServerTest, AnswersAClientThatFinishedWriting)
{
    listen();
    const SocketClient client(socketFile);
    ASSERT_TRUE(client.send(request));
    client.finishWriting();
    ASSERT_TRUE(waitFor([&] { return eventCount() == 1; }));
    EXPECT_EQ(replyTo(socketFile, "{}\n"), ok);
    EXPECT_EQ(server->waitingConnections(), 1);
    responder(0)(true);
    EXPECT_EQ(client.readToEnd(), granted);
}

TEST_F(LocalSocketServerTest, GivesBackTheDescriptorOfAClientThatHungUp)
{
    listen();
    SocketClient gone(socketFile);
    ASSERT_TRUE(gone.send(request));
    ASSERT_TRUE(waitFor([&] { return eventCount() == 1; }));
    EXPECT_EQ(server->waitingConnections(), 1);
    gone.close();
    ASSERT_TRUE(waitFor([&] { return server->waitingConnections() == 0; }));

    // The next one gets the same descriptor; the late verdict must not reach it.
    const SocketClient next(socketFile);
    ASSERT_TRUE(next.send(request));
    ASSERT_TRUE(waitFor([&] { return eventCount() == 2; }));
    responder(0)(true);
    EXPECT_FALSE(next.hasInput());
    responder(1)(false);
    EXPECT_EQ(next.readToEnd(), denied);
}

TEST_F(LocalSocketServerTest, NoticesAHangUpWhileAnotherClientIsSilent)
{
    listen();
    SocketClient gone(socketFile);
    ASSERT_TRUE(gone.send(request));
    ASSERT_TRUE(waitFor([&] { return server->waitingConnections() == 1; }));
    const SocketClient silent(socketFile);
    gone.close();
    ASSERT_TRUE(waitFor([&] { return server->waitingConnections() == 0; }));
    ASSERT_TRUE(silent.send("{}\n"));
    EXPECT_EQ(silent.readToEnd(), ok);
}

TEST_F(LocalSocketServerTest, LetsARequestGoThatNobodyWillAnswer)
{
    listen();
    const SocketClient client(socketFile);
    ASSERT_TRUE(client.send(request));
    ASSERT_TRUE(waitFor([&] { return eventCount() == 1; }));
    forgetResponders();
    EXPECT_EQ(client.readToEnd(), QByteArray());
    EXPECT_EQ(server->waitingConnections(), 0);
}

TEST_F(LocalSocketServerTest, SurvivesClientsThatLeaveBeforeTheReply)
{
    listen();
    for (int round = 0; round < 50; ++round) {
        SocketClient client(socketFile);
        client.send(round % 2 ? "{\"type\":\"thinking\"}\n" : "nonsense\n");
        client.close();
    }
    EXPECT_EQ(replyTo(socketFile, "{}\n"), ok);
    EXPECT_EQ(eventCount(), 26U);
}

TEST_F(LocalSocketServerTest, LosesNothingOfABurst)
{
    listen();
    constexpr int clients = 64;
    std::vector<std::thread> threads;
    std::array<QByteArray, clients> replies;
    for (int index = 0; index < clients; ++index)
        threads.emplace_back([&, index] {
            replies[static_cast<std::size_t>(index)] =
                replyTo(socketFile, "{\"message\":\"" + QByteArray::number(index) + "\"}\n");
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(std::count(replies.begin(), replies.end(), ok), clients);
    std::vector<int> seen;
    for (const AgentEvent& event : events())
        seen.push_back(event.message.toInt());
    std::sort(seen.begin(), seen.end());
    std::vector<int> all;
    for (int index = 0; index < clients; ++index)
        all.push_back(index);
    EXPECT_EQ(seen, all);
}

TEST_F(LocalSocketServerTest, ServesInOrderOfArrivalBehindASilentClient)
{
    listen();
    const SocketClient silent(socketFile);
    std::vector<SocketClient> waiting;
    for (int index = 0; index < 64; ++index) {
        waiting.emplace_back(socketFile);
        ASSERT_TRUE(waiting.back().isConnected());
        ASSERT_TRUE(waiting.back().send("{\"message\":\"" + QByteArray::number(index) + "\"}\n"));
    }
    EXPECT_EQ(eventCount(), 0U);
    EXPECT_FALSE(waiting.front().hasInput());
    ASSERT_TRUE(silent.send("{\"message\":\"first\"}\n"));
    for (const SocketClient& client : waiting)
        EXPECT_EQ(client.readToEnd(), ok);
    const std::vector<AgentEvent> served = events();
    ASSERT_EQ(served.size(), 65U);
    EXPECT_EQ(served.front().message, QStringLiteral("first"));
    for (int index = 0; index < 64; ++index)
        EXPECT_EQ(served[static_cast<std::size_t>(index) + 1].message.toInt(), index);
}

TEST_F(LocalSocketServerTest, BindsOverWhateverAnEarlierRunLeft)
{
    const QString folder = paths.applicationSupport();
    const QString precious = home.filePath(QStringLiteral("precious"));
    ASSERT_TRUE(writeAtomically(precious, "keep"));
    const std::vector<std::function<void()>> leftovers{
        [&] { ASSERT_TRUE(writeAtomically(socketFile, "a plain file")); },
        [&] { ASSERT_TRUE(QFile::link(precious, socketFile)); },
        [&] {
            // A socket that nobody listens on: bound, and its owner gone.
            ASSERT_EQ(::mknod(QFile::encodeName(socketFile).constData(), S_IFSOCK | 0600, 0), 0);
        },
    };
    for (const auto& leave : leftovers) {
        leave();
        LocalSocketServer fresh(paths);
        listen(fresh);
        EXPECT_EQ(replyTo(socketFile, "{}\n"), ok);
        fresh.stop();
        EXPECT_FALSE(QFileInfo::exists(socketFile));
    }
    EXPECT_EQ(readWholeFile(precious).value(), "keep");
    EXPECT_EQ(QFileInfo(folder).permissions() & (QFile::ReadGroup | QFile::ReadOther | QFile::ExeOther),
              QFile::Permissions())
        << "the support folder is closed to other users";
}

TEST_F(LocalSocketServerTest, RunsWithoutEventsWhereItCannotBind)
{
    const QString log = home.filePath(QStringLiteral("log"));
    NibboLog::setFile(log);
    const auto logHolds = [&log](const QString& text) {
        const auto content = readWholeFile(log);
        return content && QString::fromUtf8(*content).contains(text);
    };

    const AppPaths deep(home.path() + QLatin1Char('/') + QString(80, QLatin1Char('d')));
    LocalSocketServer tooLong(deep);
    tooLong.start();
    const auto length = QFile::encodeName(deep.socketFile()).size();
    EXPECT_TRUE(
        waitFor([&] { return logHolds(QStringLiteral("socket path too long (%1 >= 104)\n").arg(length)); }));
    tooLong.stop();
    EXPECT_FALSE(tooLong.running());

    // A folder with something in it cannot be removed like a left-over socket.
    ASSERT_TRUE(QDir().mkpath(socketFile + QStringLiteral("/inside")));
    server->start();
    EXPECT_TRUE(
        waitFor([&] { return logHolds(QStringLiteral("bind() failed errno=%1\n").arg(EADDRINUSE)); }));
    server->stop();
    EXPECT_FALSE(server->running());
}

TEST_F(LocalSocketServerTest, TakesAPathOf103Bytes)
{
    const QString rest = QStringLiteral("/Library/Application Support/Nibbo/nibbo.sock");
    const auto fill = 103 - rest.size() - home.path().size() - 1;
    const AppPaths exact(home.path() + QLatin1Char('/') + QString(fill, QLatin1Char('d')));
    ASSERT_EQ(QFile::encodeName(exact.socketFile()).size(), 103);
    LocalSocketServer longest(exact);
    listen(longest);
    EXPECT_EQ(replyTo(exact.socketFile(), "{}\n"), ok);
}

TEST_F(LocalSocketServerTest, TurnsAnotherUserAwayUnread)
{
    LocalSocketServer foreign(paths, ::geteuid() + 1);
    listen(foreign);
    for (const QByteArray& line : {QByteArray("{}\n"), request}) {
        const SocketClient client(socketFile);
        client.send(line);
        EXPECT_EQ(client.readToEnd(), QByteArray());
    }
    EXPECT_EQ(eventCount(), 0U);
    EXPECT_EQ(foreign.waitingConnections(), 0);
}

TEST_F(LocalSocketServerTest, StopsInTheMiddleOfEverything)
{
    listen();
    const SocketClient waiting(socketFile);
    ASSERT_TRUE(waiting.send(request));
    ASSERT_TRUE(waitFor([&] { return server->waitingConnections() == 1; }));
    const SocketClient silent(socketFile);
    ASSERT_TRUE(silent.send("{\"type\":"));
    const SocketClient behind(socketFile);
    ASSERT_TRUE(behind.send("{}\n"));
    server->stop();
    EXPECT_FALSE(server->running());
    for (const SocketClient* client : {&waiting, &silent, &behind})
        EXPECT_EQ(client->readToEnd(), QByteArray());
    EXPECT_FALSE(QFileInfo::exists(socketFile));
    server.reset();
    responder(0)(true);
}

TEST_F(LocalSocketServerTest, LeavesTheSocketOfALaterRunAlone)
{
    listen();
    LocalSocketServer later(paths);
    later.start();
    ASSERT_TRUE(waitFor([&] { return later.running(); }));
    server->stop();
    EXPECT_EQ(replyTo(socketFile, "{}\n"), ok);
}

/// Raises and lowers the soft limit of descriptors and puts it back.
class DescriptorLimit final
{
public:
    DescriptorLimit() { ::getrlimit(RLIMIT_NOFILE, &m_before); }
    ~DescriptorLimit() { ::setrlimit(RLIMIT_NOFILE, &m_before); }
    DescriptorLimit(const DescriptorLimit&) = delete;
    DescriptorLimit& operator=(const DescriptorLimit&) = delete;

    static void setSoft(rlim_t soft)
    {
        rlimit limit{};
        ::getrlimit(RLIMIT_NOFILE, &limit);
        limit.rlim_cur = std::min(soft, limit.rlim_max);
        ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &limit), 0);
    }
    rlim_t hard() const { return m_before.rlim_max; }

private:
    rlimit m_before{};
};

TEST_F(LocalSocketServerTest, RaisesTheLimitOfDescriptors)
{
    const DescriptorLimit limit;
    DescriptorLimit::setSoft(256);
    listen();
    rlimit now{};
    ::getrlimit(RLIMIT_NOFILE, &now);
    EXPECT_GE(now.rlim_cur, std::min<rlim_t>(limit.hard(), 4096));
}

/// The time on a processor, in clock ticks, of the thread whose `stat` file this is.
qint64 ticksOf(const FileDescriptor& stat)
{
    std::array<char, 1024> buffer{};
    const ssize_t count = ::pread(stat.get(), buffer.data(), buffer.size() - 1, 0);
    const QByteArray text(buffer.data(), std::max<ssize_t>(count, 0));
    const QList<QByteArray> fields = text.mid(text.lastIndexOf(')') + 2).split(' ');
    return fields.size() > 12 ? fields[11].toLongLong() + fields[12].toLongLong() : -1;
}

FileDescriptor statOfThread(const QByteArray& name)
{
    const QDir tasks(QStringLiteral("/proc/self/task"));
    for (const QString& task : tasks.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        QFile comm(tasks.filePath(task + QStringLiteral("/comm")));
        if (comm.open(QIODevice::ReadOnly) && comm.readAll().trimmed() == name)
            return FileDescriptor(::open(
                QFile::encodeName(tasks.filePath(task + QStringLiteral("/stat"))).constData(), O_RDONLY));
    }
    return FileDescriptor();
}

TEST_F(LocalSocketServerTest, WaitsPatientlyForADescriptor)
{
    const DescriptorLimit limit;
    listen();
    const FileDescriptor stat = statOfThread("nibbo.socket");
    ASSERT_TRUE(stat.isValid());
    DescriptorLimit::setSoft(256);
    std::vector<FileDescriptor> fillers;
    for (;;) {
        FileDescriptor filler(::open("/dev/null", O_RDONLY | O_CLOEXEC));
        if (!filler.isValid())
            break;
        fillers.push_back(std::move(filler));
    }
    ASSERT_FALSE(fillers.empty());
    // The client takes the last descriptor, so that none is left to accept it with.
    fillers.pop_back();
    const SocketClient client(socketFile);
    ASSERT_TRUE(client.isConnected());
    ASSERT_TRUE(client.send("{}\n"));

    const qint64 before = ticksOf(stat);
    ASSERT_GE(before, 0);
    QElapsedTimer timer;
    timer.start();
    ASSERT_TRUE(waitFor([&] { return timer.elapsed() >= 1000; }));
    EXPECT_LE(ticksOf(stat) - before, ::sysconf(_SC_CLK_TCK) / 5) << "the thread spins while accept fails";
    EXPECT_FALSE(client.hasInput());

    fillers.clear();
    EXPECT_EQ(client.readToEnd(), ok);
}

} // namespace
} // namespace nibbo
