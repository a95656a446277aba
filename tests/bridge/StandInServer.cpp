#include "StandInServer.h"

#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>
#include <utility>

namespace nibbo::bridge::test {

namespace {

using namespace std::chrono_literals;
constexpr auto longTime = 60s;
constexpr std::string_view bookmark = "bookmark";
constexpr std::string_view theEnd = "end";

sockaddr_un addressOf(const std::string& path)
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    EXPECT_LT(path.size(), sizeof address.sun_path);
    std::memcpy(address.sun_path, path.c_str(), std::min(path.size() + 1, sizeof address.sun_path - 1));
    return address;
}

void sendLine(const std::string& path, std::string_view line)
{
    const int fd = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const sockaddr_un address = addressOf(path);
    ASSERT_EQ(::connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    const std::string text = std::string(line) + '\n';
    EXPECT_EQ(::send(fd, text.data(), text.size(), MSG_NOSIGNAL), static_cast<ssize_t>(text.size()));
    ::close(fd);
}

std::string readLine(int fd)
{
    std::string line;
    char byte = 0;
    while (::read(fd, &byte, 1) == 1 && byte != '\n')
        line += byte;
    return line;
}

} // namespace

ScratchHome::ScratchHome()
{
    std::string path = "/tmp/nibbo-bridge-XXXXXX";
    EXPECT_NE(::mkdtemp(path.data()), nullptr);
    m_path = path;
    std::filesystem::create_directories(std::filesystem::path(socketPath()).parent_path());
}

ScratchHome::~ScratchHome()
{
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
}

std::string ScratchHome::write(const std::string& name, const std::string& text) const
{
    const std::filesystem::path path = std::filesystem::path(m_path) / name;
    std::filesystem::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary) << text;
    return path.string();
}

StandInServer::StandInServer(const ScratchHome& home, Answer answer)
    : m_path(home.socketPath())
    , m_answer(std::move(answer))
    , m_listening(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0))
{
    const sockaddr_un address = addressOf(m_path);
    EXPECT_EQ(::bind(m_listening, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    EXPECT_EQ(::listen(m_listening, 16), 0);
    m_thread = std::thread([this] { serve(); });
}

StandInServer::~StandInServer()
{
    dropClient();
    sendLine(m_path, theEnd);
    m_thread.join();
    ::close(m_listening);
}

void StandInServer::serve()
{
    while (true) {
        const int fd = ::accept4(m_listening, nullptr, nullptr, SOCK_CLOEXEC);
        if (fd < 0)
            continue;
        const std::string line = readLine(fd);
        std::optional<std::string> reply = "";
        const std::unique_lock lock(m_mutex);
        ++m_served;
        if (line != bookmark && line != theEnd) {
            m_lines.push_back(line);
            reply = m_answer(line);
        }
        if (reply) {
            [[maybe_unused]] const ssize_t sent = ::send(fd, reply->data(), reply->size(), MSG_NOSIGNAL);
            ::close(fd);
        } else {
            m_kept = fd;
        }
        m_changed.notify_all();
        if (line == theEnd)
            return;
    }
}

std::vector<std::string> StandInServer::lines()
{
    // Connections are served in order: once ours has been, all earlier ones have.
    std::unique_lock lock(m_mutex);
    const std::size_t before = m_lines.size();
    const std::size_t served = m_served;
    lock.unlock();
    sendLine(m_path, bookmark);
    lock.lock();
    EXPECT_TRUE(
        m_changed.wait_for(lock, longTime, [&] { return m_served - served > m_lines.size() - before; }));
    return m_lines;
}

std::vector<std::string> StandInServer::waitForLines(std::size_t count)
{
    std::unique_lock lock(m_mutex);
    EXPECT_TRUE(m_changed.wait_for(lock, longTime, [&] { return m_lines.size() >= count; }));
    return m_lines;
}

bool StandInServer::clientGone()
{
    std::unique_lock lock(m_mutex);
    m_changed.wait_for(lock, longTime, [&] { return m_kept >= 0; });
    pollfd end{m_kept, POLLIN, 0};
    char byte = 0;
    return ::poll(&end, 1, 60'000) == 1 && ::recv(m_kept, &byte, 1, 0) <= 0;
}

void StandInServer::dropClient()
{
    const std::lock_guard lock(m_mutex);
    if (m_kept >= 0)
        ::close(std::exchange(m_kept, -1));
}

} // namespace nibbo::bridge::test
