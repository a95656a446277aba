// From hook to reply: the whole life of a helper's process, as an agent that waits for its hook sees it.
// Measured from the spawning to the reaping, payload through a pipe, against a static C program that does the
// least possible and against one-liners in sh, python3 and node. The server answers at once in every case.

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <spawn.h>
#include <string>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

extern char** environ;

namespace {

using Clock = std::chrono::steady_clock;
using Microseconds = std::chrono::duration<double, std::micro>;

struct Contender
{
    std::string name;
    std::vector<std::string> arguments;
    int rounds;
};

struct Hook
{
    const char* name;
    const char* event;
    std::size_t bytes;
    std::string head;
    std::string tail;
};

std::string payloadOf(const Hook& hook)
{
    const std::size_t frame = hook.head.size() + hook.tail.size();
    return hook.head + std::string(hook.bytes > frame ? hook.bytes - frame : 0, 'x') + hook.tail;
}

/// Answers every connection at once, on a thread of its own.
void serve(int listening)
{
    while (true) {
        const int fd = ::accept(listening, nullptr, nullptr);
        if (fd < 0)
            return;
        std::array<char, 65536> bytes;
        bool approval = false;
        while (true) {
            const ssize_t got = ::read(fd, bytes.data(), bytes.size());
            if (got <= 0)
                break;
            const std::string_view block(bytes.data(), static_cast<std::size_t>(got));
            approval = approval || block.find("\"approvalRequired\"") != std::string_view::npos;
            if (block.ends_with('\n'))
                break;
        }
        const std::string_view reply = approval ? "{\"approval\":\"granted\"}\n" : "{\"ok\":true}\n";
        if (::send(fd, reply.data(), reply.size(), MSG_NOSIGNAL) < 0)
            std::perror("send");
        ::close(fd);
    }
}

double runOnce(const Contender& contender, const std::string& payload)
{
    std::vector<char*> arguments;
    for (const std::string& argument : contender.arguments)
        arguments.push_back(const_cast<char*>(argument.c_str()));
    arguments.push_back(nullptr);
    std::array<int, 2> input{};
    if (::pipe2(input.data(), O_CLOEXEC) != 0)
        std::abort();
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_adddup2(&actions, input[0], STDIN_FILENO);
    ::posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);

    const auto start = Clock::now();
    pid_t pid = 0;
    if (const int error = ::posix_spawn(&pid, arguments[0], &actions, nullptr, arguments.data(), environ)) {
        std::fprintf(stderr, "%s: %s\n", arguments[0], std::strerror(error));
        std::exit(1);
    }
    ::close(input[0]);
    std::string_view left = payload;
    while (!left.empty()) {
        const ssize_t written = ::write(input[1], left.data(), left.size());
        if (written <= 0)
            break;
        left.remove_prefix(static_cast<std::size_t>(written));
    }
    ::close(input[1]);
    int status = 0;
    while (::waitpid(pid, &status, 0) < 0 && errno == EINTR)
        continue;
    const double elapsed = Microseconds(Clock::now() - start).count();
    ::posix_spawn_file_actions_destroy(&actions);
    if (status != 0) {
        std::fprintf(stderr, "%s failed with status %d\n", contender.name.c_str(), status);
        std::exit(1);
    }
    return elapsed;
}

double quantile(std::vector<double>& times, double share)
{
    std::sort(times.begin(), times.end());
    return times[static_cast<std::size_t>(share * static_cast<double>(times.size() - 1))];
}

bool isExecutable(const char* path)
{
    return ::access(path, X_OK) == 0;
}

std::vector<Contender> contendersFor(const Hook& hook, const std::string& socketPath)
{
    const bool asks = std::string_view(hook.event) == "PermissionRequest";
    const std::string line = asks ? R"({"provider":"claude","type":"approvalRequired","command":"make"})"
                                  : R"({"provider":"claude","type":"coding","command":"make"})";
    constexpr int many = 400;
    constexpr int few = 40;
    std::vector<Contender> contenders = {
        {"bare C program", {NIBBO_BUILD_DIR "/benchmarks/HookBenchmark-floor", socketPath, line}, many},
        {"nibbo-bridge",
         {NIBBO_BUILD_DIR "/libexec/nibbo/nibbo-bridge", "--source", "claude", "--event", hook.event},
         many},
    };
    if (isExecutable("/usr/bin/nc"))
        contenders.push_back(
            {"sh and nc",
             {"/bin/sh", "-c", R"(cat >/dev/null; printf '%s\n' "$2" | nc -U "$1")", "sh", socketPath, line},
             few});
    if (isExecutable("/usr/bin/python3"))
        contenders.push_back({"python3",
                              {"/usr/bin/python3", "-c",
                               "import socket,sys; sys.stdin.buffer.read(); s=socket.socket(socket.AF_UNIX); "
                               "s.connect(sys.argv[1]); s.sendall(sys.argv[2].encode()+b'\\n'); s.recv(4096)",
                               socketPath, line},
                              few});
    if (isExecutable("/usr/bin/node"))
        contenders.push_back(
            {"node",
             {"/usr/bin/node", "-e",
              "require('fs').readFileSync(0); const [p,l]=process.argv.slice(1); "
              "const s=require('net').connect(p,()=>s.write(l+'\\n')); s.on('data',()=>process.exit(0))",
              socketPath, line},
             few});
    return contenders;
}

void measure(const Hook& hook, const std::string& socketPath)
{
    const std::string payload = payloadOf(hook);
    std::vector<Contender> contenders = contendersFor(hook, socketPath);
    std::vector<std::vector<double>> times(contenders.size());
    // Turn by turn, so that what else the machine does falls on all alike.
    const int rounds = contenders.front().rounds;
    for (int round = 0; round < rounds; ++round) {
        for (std::size_t i = 0; i < contenders.size(); ++i) {
            if (round % (rounds / contenders[i].rounds) == 0)
                times[i].push_back(runOnce(contenders[i], payload));
        }
    }
    std::printf("\n%s, %zu bytes\n%-18s %12s %12s %8s\n", hook.name, payload.size(), "", "median ms",
                "p90 ms", "ratio");
    const double floorTime = quantile(times.front(), 0.5);
    for (std::size_t i = 0; i < contenders.size(); ++i) {
        const double median = quantile(times[i], 0.5);
        std::printf("%-18s %12.3f %12.3f %7.2fx\n", contenders[i].name.c_str(), median / 1000,
                    quantile(times[i], 0.9) / 1000, median / floorTime);
    }
}

} // namespace

int main()
{
    std::string home = "/tmp/nibbo-hook-XXXXXX";
    if (!::mkdtemp(home.data()))
        return 1;
    const std::string folder = home + "/Library/Application Support/Nibbo";
    std::filesystem::create_directories(folder);
    const std::string socketPath = folder + "/nibbo.sock";
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, socketPath.c_str(), socketPath.size() + 1);
    const int listening = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (::bind(listening, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        ::listen(listening, 16) != 0)
        return 1;
    ::setenv("HOME", home.c_str(), 1);
    std::thread server(serve, listening);

    constexpr std::size_t kilobyte = 1024;
    constexpr std::size_t megabyte = 1024 * 1024;
    const std::string common =
        R"({"session_id":"8ce3fe29-be0b-4068","cwd":"/home/user/project","tool_name":"Bash",)"
        R"("tool_input":{"command":"make"},)";
    const std::string result = common + R"("tool_response":{"stdout":")";
    const std::string request = common + R"("permission_suggestions":[")";
    for (const std::size_t size : {kilobyte, megabyte}) {
        measure({"event", "PostToolUse", size, result, "\"}}"}, socketPath);
        measure({"permission request", "PermissionRequest", size, request, "\"]}"}, socketPath);
    }
    ::shutdown(listening, SHUT_RDWR);
    server.join();
    std::filesystem::remove_all(home);
    return 0;
}
