#pragma once

#include <QDateTime>

#include <chrono>
#include <functional>
#include <memory>

namespace nibbo {

using Milliseconds = std::chrono::milliseconds;
using Seconds = std::chrono::duration<double>;

/// What time it is. `now` is monotonic and starts anywhere; `wallNow` is what a calendar shows. Any thread.
class Clock
{
public:
    virtual ~Clock() = default;
    virtual std::chrono::nanoseconds now() const = 0;
    virtual QDateTime wallNow() const = 0;
};

/// A step that was put off. Destroying or cancelling the handle takes it back; one that has run is harmless
/// to cancel.
class ScheduledStep
{
public:
    virtual ~ScheduledStep() = default;
    virtual void cancel() = 0;
};
using ScheduledHandle = std::unique_ptr<ScheduledStep>;

/// Runs steps later on the thread it was made on. The handle owns the step: keep it as long as the step shall
/// happen.
class Scheduler
{
public:
    virtual ~Scheduler() = default;
    [[nodiscard]] virtual ScheduledHandle after(Milliseconds delay, std::function<void()> step) = 0;
    /// The first run comes after one interval.
    [[nodiscard]] virtual ScheduledHandle every(Milliseconds interval, std::function<void()> step) = 0;
};

/// The time of this machine.
class SystemClock final : public Clock
{
public:
    std::chrono::nanoseconds now() const override;
    QDateTime wallNow() const override;
};

/// Steps on the event loop of the thread that made it. Coarse timers from 20 ms on, precise ones below.
class EventLoopScheduler final : public Scheduler
{
public:
    ScheduledHandle after(Milliseconds delay, std::function<void()> step) override;
    ScheduledHandle every(Milliseconds interval, std::function<void()> step) override;
};

} // namespace nibbo
