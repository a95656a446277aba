#include "HelperProcess.h"

#include <gtest/gtest.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace nibbo::bridge::test {

namespace {

constexpr int longTime = 60'000; // milliseconds

struct Pipe
{
    std::array<int, 2> ends{-1, -1};
    Pipe() { EXPECT_EQ(::pipe2(ends.data(), O_CLOEXEC), 0); }
};

std::vector<char*> pointers(std::vector<std::string>& texts)
{
    std::vector<char*> result;
    for (std::string& text : texts)
        result.push_back(text.data());
    result.push_back(nullptr);
    return result;
}

void collect(int output, int errors, HelperResult& result)
{
    std::array<pollfd, 2> watched{{{output, POLLIN, 0}, {errors, POLLIN, 0}}};
    const std::array<std::string*, 2> targets{&result.out, &result.err};
    while (watched[0].fd >= 0 || watched[1].fd >= 0) {
        if (::poll(watched.data(), watched.size(), -1) < 0 && errno != EINTR)
            return;
        for (std::size_t i = 0; i < watched.size(); ++i) {
            if (watched[i].fd < 0 || watched[i].revents == 0)
                continue;
            std::array<char, 4096> bytes{};
            const ssize_t got = ::read(watched[i].fd, bytes.data(), bytes.size());
            if (got > 0)
                targets[i]->append(bytes.data(), static_cast<std::size_t>(got));
            else
                watched[i].fd = -1;
        }
    }
}

} // namespace

HelperProcess::HelperProcess(Options options)
{
    // The helper may stop reading before all is written.
    std::signal(SIGPIPE, SIG_IGN);
    Pipe input;
    Pipe output;
    Pipe errors;
    std::vector<std::string> arguments = options.prefix;
    arguments.emplace_back(NIBBO_BUILD_DIR "/libexec/nibbo/nibbo-bridge");
    arguments.insert(arguments.end(), options.arguments.begin(), options.arguments.end());
    std::vector<std::string> environment{"PATH=/usr/local/bin:/usr/bin:/bin"};
    if (!options.home.empty())
        environment.push_back("HOME=" + options.home);
    // The sanitizers' helper reports like any other process of the tests.
    for (const char* name : {"ASAN_OPTIONS", "LSAN_OPTIONS", "UBSAN_OPTIONS", "TSAN_OPTIONS"}) {
        if (const char* value = std::getenv(name))
            environment.push_back(std::string(name) + '=' + value);
    }
    const std::vector<char*> argumentPointers = pointers(arguments);
    const std::vector<char*> environmentPointers = pointers(environment);

    m_pid = ::fork();
    if (m_pid == 0) {
        ::dup2(input.ends[0], STDIN_FILENO);
        ::dup2(output.ends[1], STDOUT_FILENO);
        ::dup2(errors.ends[1], STDERR_FILENO);
        std::signal(SIGPIPE, SIG_DFL);
        ::execve(argumentPointers[0], argumentPointers.data(), environmentPointers.data());
        ::_exit(127);
    }
    EXPECT_GT(m_pid, 0);
    ::close(input.ends[0]);
    ::close(output.ends[1]);
    ::close(errors.ends[1]);
    m_input = input.ends[1];
    m_output = output.ends[0];
    m_errors = errors.ends[0];
    if (options.readsOutput) {
        m_collector = std::thread([this] { collect(m_output, m_errors, m_result); });
    } else {
        ::close(std::exchange(m_output, -1));
        ::close(std::exchange(m_errors, -1));
    }
}

HelperProcess::~HelperProcess()
{
    if (!m_waited) {
        signal(SIGKILL);
        wait();
    }
}

bool HelperProcess::write(std::string_view bytes)
{
    while (!bytes.empty()) {
        const ssize_t written = ::write(m_input, bytes.data(), bytes.size());
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            return false;
        bytes.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
}

void HelperProcess::closeInput()
{
    if (m_input >= 0)
        ::close(std::exchange(m_input, -1));
}

void HelperProcess::signal(int number) const
{
    ::kill(m_pid, number);
}

HelperResult HelperProcess::wait()
{
    const int handle = static_cast<int>(::syscall(SYS_pidfd_open, m_pid, 0));
    pollfd end{handle, POLLIN, 0};
    if (handle >= 0 && ::poll(&end, 1, longTime) == 0) {
        ADD_FAILURE() << "the helper does not end";
        signal(SIGKILL);
    }
    ::close(handle);
    ::waitpid(m_pid, &m_result.waitStatus, 0);
    m_waited = true;
    closeInput();
    if (m_collector.joinable())
        m_collector.join();
    for (int* fd : {&m_output, &m_errors}) {
        if (*fd >= 0)
            ::close(std::exchange(*fd, -1));
    }
    return m_result;
}

HelperResult HelperProcess::run(Options options, std::string_view input)
{
    HelperProcess helper(std::move(options));
    helper.write(input);
    helper.closeInput();
    return helper.wait();
}

std::vector<std::string> hookArguments(const std::string& agent, const std::string& event)
{
    return {"--source", agent, "--event", event};
}

} // namespace nibbo::bridge::test
