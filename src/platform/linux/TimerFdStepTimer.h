#pragma once

#include "platform/StepTimer.h"

#include <memory>

class QSocketNotifier;

namespace nibbo {

/// Steps from a timer descriptor of the kernel, which counts the intervals itself.
class TimerFdStepTimer final : public StepTimer
{
public:
    explicit TimerFdStepTimer(Steps steps);
    ~TimerFdStepTimer() override;

    /// False when the system gave no descriptor; the object then never steps.
    bool isUsable() const { return m_descriptor >= 0; }

    void start(std::chrono::nanoseconds interval) override;
    void stop() override;
    bool isActive() const override { return m_active; }

private:
    void arm(std::chrono::nanoseconds interval);
    void tick();

    Steps m_steps;
    int m_descriptor;
    bool m_active = false;
    std::unique_ptr<QSocketNotifier> m_notifier;
};

} // namespace nibbo
