#pragma once

#include <map>
#include <optional>
#include <string>
#include <sys/types.h>
#include <thread>
#include <vector>

namespace nibbo::bridge::test {

/// How a run of the helper ended, and all that it printed.
struct HelperResult
{
    int waitStatus = -1; ///< as wait() gives it
    std::string out;
    std::string err;

    bool exitedWithZero() const { return waitStatus == 0; }
};

/// The built helper as a real process. Its stdin takes what is written to it; stdout and stderr are collected
/// by a thread. What still runs at the end of a test is killed.
class HelperProcess final
{
public:
    struct Options
    {
        std::vector<std::string> arguments;
        std::string home; ///< empty: no HOME in the environment
        std::vector<std::string> prefix =
            {};                  ///< a command that starts the helper, given as its last arguments
        bool readsOutput = true; ///< false: the reader of stdout and stderr goes away at once
    };

    explicit HelperProcess(Options options);
    ~HelperProcess();
    HelperProcess(const HelperProcess&) = delete;
    HelperProcess& operator=(const HelperProcess&) = delete;

    pid_t pid() const { return m_pid; }
    /// False when the helper stopped reading.
    bool write(std::string_view bytes);
    void closeInput();
    void signal(int number) const;
    /// Waits for the end; fails the test and kills the helper when it does not come for a long time.
    HelperResult wait();

    /// A whole run: input written and closed, output collected.
    static HelperResult run(Options options, std::string_view input);

private:
    pid_t m_pid = -1;
    int m_input = -1;
    int m_output = -1;
    int m_errors = -1;
    std::thread m_collector;
    HelperResult m_result;
    bool m_waited = false;
};

/// The usual arguments.
std::vector<std::string> hookArguments(const std::string& agent, const std::string& event);

} // namespace nibbo::bridge::test
