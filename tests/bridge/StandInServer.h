#pragma once

#include <condition_variable>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace nibbo::bridge::test {

/// A scratch home folder; removed with all that is in it.
class ScratchHome final
{
public:
    ScratchHome();
    ~ScratchHome();
    ScratchHome(const ScratchHome&) = delete;
    ScratchHome& operator=(const ScratchHome&) = delete;

    const std::string& path() const { return m_path; }
    std::string socketPath() const { return m_path + "/Library/Application Support/Nibbo/nibbo.sock"; }
    /// Writes a file below the home folder and gives its path.
    std::string write(const std::string& name, const std::string& text) const;

private:
    std::string m_path;
};

/// Stands in for the application at the socket of a home folder: takes one line a connection, one after the
/// other, and answers what the test says.
class StandInServer final
{
public:
    /// The reply to a line, with its line feed; nothing keeps the connection open without an answer, and an
    /// empty text closes it.
    using Answer = std::function<std::optional<std::string>(const std::string& line)>;

    StandInServer(const ScratchHome& home, Answer answer);
    ~StandInServer();
    StandInServer(const StandInServer&) = delete;
    StandInServer& operator=(const StandInServer&) = delete;

    /// All lines of clients that connected before this call.
    std::vector<std::string> lines();
    /// Waits until this many lines have come.
    std::vector<std::string> waitForLines(std::size_t count);
    /// Waits until the client of the connection that is kept open has gone.
    bool clientGone();
    /// Closes the connection that is kept open, as a killed application does.
    void dropClient();

private:
    void serve();

    std::string m_path;
    Answer m_answer;
    int m_listening = -1;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::vector<std::string> m_lines;
    std::size_t m_served = 0;
    int m_kept = -1;
    std::thread m_thread;
};

} // namespace nibbo::bridge::test
