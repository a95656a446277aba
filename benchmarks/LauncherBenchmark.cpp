// What the launcher adds to the helper: both are started as an agent starts a hook, without an application
// that would answer, until they end. The goal is at most 2 ms for the launcher on top of the helper.
#include "hooks/GeneratedFiles.h"

#include <benchmark/benchmark.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <array>
#include <cstdlib>
#include <fcntl.h>
#include <spawn.h>
#include <string>
#include <string_view>
#include <sys/wait.h>
#include <unistd.h>

namespace nibbo {
namespace {

constexpr char builtHelper[] = NIBBO_BUILD_DIR "/libexec/nibbo/nibbo-bridge";

class Home final
{
public:
    Home()
    {
        QDir(m_scratch.path()).mkpath(QStringLiteral(".nibbo/bin"));
        QFile file(m_launcher);
        if (!file.open(QIODevice::WriteOnly))
            std::abort();
        file.write(launcherScript({m_scratch.path(), QStringLiteral(NIBBO_BUILD_DIR)}));
        file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }

    std::string launcher() const { return m_launcher.toStdString(); }
    std::string variable() const { return "HOME=" + m_scratch.path().toStdString(); }

private:
    QTemporaryDir m_scratch;
    QString m_launcher = m_scratch.filePath(QLatin1String(launcherRelativePath));
};

// The payload is on a pipe that is full and closed before the start, so that only the programs are measured.
int openPayload()
{
    std::array<int, 2> ends{};
    constexpr std::string_view payload =
        R"({"session_id":"s","cwd":"/tmp","hook_event_name":"PostToolUse","tool_name":"Bash","tool_input":{"command":"ls"}})";
    if (::pipe2(ends.data(), O_CLOEXEC) != 0 ||
        ::write(ends[1], payload.data(), payload.size()) != static_cast<ssize_t>(payload.size()))
        std::abort();
    ::close(ends[1]);
    return ends[0];
}

void runHook(benchmark::State& state, const std::string& program, std::string home)
{
    std::array<std::string, 5> words = {program, "--source", "claude", "--event", "PostToolUse"};
    std::array<char*, 6> arguments = {words[0].data(), words[1].data(), words[2].data(),
                                      words[3].data(), words[4].data(), nullptr};
    std::string path = "PATH=/usr/bin:/bin";
    std::array<char*, 3> environment = {home.data(), path.data(), nullptr};
    for (auto _ : state) {
        const int payload = openPayload();
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_adddup2(&actions, payload, STDIN_FILENO);
        pid_t child = 0;
        int status = 0;
        if (posix_spawn(&child, program.c_str(), &actions, nullptr, arguments.data(), environment.data()) !=
            0)
            state.SkipWithError("the program does not start");
        else if (::waitpid(child, &status, 0) != child || status != 0)
            state.SkipWithError("the program fails");
        posix_spawn_file_actions_destroy(&actions);
        ::close(payload);
    }
}

void helperDirectly(benchmark::State& state)
{
    const Home home;
    runHook(state, builtHelper, home.variable());
}
BENCHMARK(helperDirectly)->Unit(benchmark::kMicrosecond)->UseRealTime();

void helperThroughLauncher(benchmark::State& state)
{
    const Home home;
    runHook(state, home.launcher(), home.variable());
}
BENCHMARK(helperThroughLauncher)->Unit(benchmark::kMicrosecond)->UseRealTime();

} // namespace
} // namespace nibbo

BENCHMARK_MAIN();
