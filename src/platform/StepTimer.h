#pragma once

#include <chrono>
#include <functional>
#include <memory>

namespace nibbo {

/// Steps at an even rate on the event loop, finer than whole milliseconds. A late wake-up tells how many
/// intervals have passed, so that nothing slows down on a busy machine. Main thread.
class StepTimer
{
public:
    using Steps = std::function<void(int count)>;

    virtual ~StepTimer() = default;
    /// Starts over with this interval; the first steps come after one.
    virtual void start(std::chrono::nanoseconds interval) = 0;
    virtual void stop() = 0;
    virtual bool isActive() const = 0;
};

std::unique_ptr<StepTimer> makeStepTimer(StepTimer::Steps steps);

} // namespace nibbo
