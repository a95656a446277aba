#include "app/TerminationSignals.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>

namespace nibbo {
namespace {

std::array<int, 2> pipeEnds{-1, -1};
constexpr std::array handled{SIGTERM, SIGINT, SIGHUP};

void onSignal(int)
{
    // Only what is safe in a signal handler; a full pipe has said enough already.
    const int kept = errno;
    [[maybe_unused]] const ssize_t written = ::write(pipeEnds[1], "x", 1);
    errno = kept;
}

} // namespace

TerminationSignals::TerminationSignals(QObject* parent)
    : QObject(parent)
{
    if (::pipe2(pipeEnds.data(), O_CLOEXEC | O_NONBLOCK) != 0)
        return;
    m_notifier = std::make_unique<QSocketNotifier>(pipeEnds[0], QSocketNotifier::Read);
    connect(m_notifier.get(), &QSocketNotifier::activated, this, [this] {
        std::array<char, 16> drained{};
        while (::read(pipeEnds[0], drained.data(), drained.size()) > 0) {
        }
        Q_EMIT terminationRequested();
    });
    struct sigaction action = {};
    action.sa_handler = onSignal;
    action.sa_flags = SA_RESTART;
    for (const int number : handled)
        ::sigaction(number, &action, nullptr);
}

TerminationSignals::~TerminationSignals()
{
    for (const int number : handled)
        std::signal(number, SIG_DFL);
    m_notifier.reset();
    for (int& end : pipeEnds) {
        if (end >= 0)
            ::close(end);
        end = -1;
    }
}

} // namespace nibbo
