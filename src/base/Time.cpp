#include "base/Time.h"

#include <QTimer>

#include <utility>

namespace nibbo {
namespace {

class TimerStep final : public ScheduledStep
{
public:
    TimerStep(Milliseconds delay, bool repeats, std::function<void()> step)
    {
        m_timer.setSingleShot(!repeats);
        m_timer.setTimerType(delay < Milliseconds(20) ? Qt::PreciseTimer : Qt::CoarseTimer);
        // A step may destroy its own handle, and the closure with it, while it runs.
        QObject::connect(&m_timer, &QTimer::timeout, &m_timer,
                         [step = std::make_shared<std::function<void()>>(std::move(step))] {
                             (*std::shared_ptr(step))();
                         });
        m_timer.start(delay);
    }

    void cancel() override { m_timer.stop(); }

private:
    QTimer m_timer;
};

} // namespace

std::chrono::nanoseconds SystemClock::now() const
{
    return std::chrono::steady_clock::now().time_since_epoch();
}

QDateTime SystemClock::wallNow() const
{
    return QDateTime::currentDateTimeUtc();
}

ScheduledHandle EventLoopScheduler::after(Milliseconds delay, std::function<void()> step)
{
    return std::make_unique<TimerStep>(delay, false, std::move(step));
}

ScheduledHandle EventLoopScheduler::every(Milliseconds interval, std::function<void()> step)
{
    return std::make_unique<TimerStep>(interval, true, std::move(step));
}

} // namespace nibbo
