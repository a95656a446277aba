#include "platform/linux/TimerFdStepTimer.h"

#include "platform/null/NullStepTimer.h"

#include <QSocketNotifier>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <utility>

#include <sys/timerfd.h>
#include <unistd.h>

namespace nibbo {

TimerFdStepTimer::TimerFdStepTimer(Steps steps)
    : m_steps(std::move(steps))
    , m_descriptor(::timerfd_create(CLOCK_MONOTONIC, TFD_NONBLOCK | TFD_CLOEXEC))
{
    if (m_descriptor < 0)
        return;
    m_notifier = std::make_unique<QSocketNotifier>(m_descriptor, QSocketNotifier::Read);
    QObject::connect(m_notifier.get(), &QSocketNotifier::activated, m_notifier.get(), [this] { tick(); });
}

TimerFdStepTimer::~TimerFdStepTimer()
{
    m_notifier.reset();
    if (m_descriptor >= 0)
        ::close(m_descriptor);
}

void TimerFdStepTimer::start(std::chrono::nanoseconds interval)
{
    arm(interval);
    m_active = isUsable();
}

void TimerFdStepTimer::stop()
{
    arm(std::chrono::nanoseconds(0));
    m_active = false;
}

void TimerFdStepTimer::arm(std::chrono::nanoseconds interval)
{
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(interval);
    itimerspec time{};
    time.it_interval.tv_sec = seconds.count();
    time.it_interval.tv_nsec = (interval - seconds).count();
    time.it_value = time.it_interval;
    ::timerfd_settime(m_descriptor, 0, &time, nullptr);
}

void TimerFdStepTimer::tick()
{
    std::uint64_t count = 0;
    if (::read(m_descriptor, &count, sizeof count) != sizeof count || !m_active)
        return;
    m_steps(int(std::min<std::uint64_t>(count, std::numeric_limits<int>::max())));
}

std::unique_ptr<StepTimer> makeStepTimer(StepTimer::Steps steps)
{
    auto timer = std::make_unique<TimerFdStepTimer>(steps);
    if (timer->isUsable())
        return timer;
    return std::make_unique<NullStepTimer>(std::move(steps));
}

} // namespace nibbo
