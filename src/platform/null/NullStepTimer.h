#pragma once

#include "platform/StepTimer.h"

#include <QElapsedTimer>
#include <QTimer>

#include <algorithm>
#include <utility>

namespace nibbo {

/// Steps counted from the elapsed time of an ordinary timer.
class NullStepTimer final : public StepTimer
{
public:
    explicit NullStepTimer(Steps steps)
        : m_steps(std::move(steps))
    {
        m_timer.setTimerType(Qt::PreciseTimer);
        QObject::connect(&m_timer, &QTimer::timeout, &m_timer, [this] { tick(); });
    }

    void start(std::chrono::nanoseconds interval) override
    {
        m_interval = interval;
        m_done = 0;
        m_elapsed.start();
        m_timer.start(std::max<int>(1, int(interval / std::chrono::milliseconds(1))));
    }
    void stop() override { m_timer.stop(); }
    bool isActive() const override { return m_timer.isActive(); }

private:
    void tick()
    {
        const qint64 due = m_elapsed.nsecsElapsed() / m_interval.count();
        const qint64 missing = due - std::exchange(m_done, due);
        if (missing > 0)
            m_steps(int(missing));
    }

    Steps m_steps;
    QTimer m_timer;
    QElapsedTimer m_elapsed;
    std::chrono::nanoseconds m_interval{1};
    qint64 m_done = 0;
};

} // namespace nibbo
