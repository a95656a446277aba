#pragma once

#include "base/Random.h"
#include "base/Time.h"

#include <algorithm>
#include <deque>
#include <memory>
#include <utility>
#include <vector>

namespace nibbo::test {

/// A clock and scheduler in one that move only when told to. `advance` runs what falls due, in order of time.
class ManualTime final : public Clock, public Scheduler
{
public:
    std::chrono::nanoseconds now() const override { return m_now; }
    QDateTime wallNow() const override
    {
        return QDateTime::fromMSecsSinceEpoch(
            1'700'000'000'000 + std::chrono::duration_cast<Milliseconds>(m_now).count(), Qt::UTC);
    }

    ScheduledHandle after(Milliseconds delay, std::function<void()> step) override
    {
        return add(delay, Milliseconds(0), std::move(step));
    }
    ScheduledHandle every(Milliseconds interval, std::function<void()> step) override
    {
        return add(interval, interval, std::move(step));
    }

    void advance(Seconds by)
    {
        const auto end = m_now + std::chrono::duration_cast<std::chrono::nanoseconds>(by);
        for (;;) {
            std::erase_if(m_steps, [](const auto& entry) { return entry->dead; });
            const auto due =
                std::min_element(m_steps.begin(), m_steps.end(), [](const auto& a, const auto& b) {
                    return std::pair(a->at, a->order) < std::pair(b->at, b->order);
                });
            if (due == m_steps.end() || (*due)->at > end)
                break;
            const std::shared_ptr<Entry> entry = *due;
            m_now = std::max(m_now, entry->at);
            if (entry->interval > Milliseconds(0))
                entry->at += entry->interval;
            else
                entry->dead = true;
            entry->step();
        }
        m_now = end;
    }

    /// How many steps wait: a pet that has nothing to do must not tick.
    int waiting() const
    {
        return static_cast<int>(
            std::count_if(m_steps.begin(), m_steps.end(), [](const auto& entry) { return !entry->dead; }));
    }

private:
    struct Entry
    {
        std::chrono::nanoseconds at{};
        long order = 0;
        Milliseconds interval{};
        std::function<void()> step;
        bool dead = false;
    };
    class Handle final : public ScheduledStep
    {
    public:
        explicit Handle(std::shared_ptr<Entry> entry)
            : m_entry(std::move(entry))
        {}
        ~Handle() override { m_entry->dead = true; }
        void cancel() override { m_entry->dead = true; }

    private:
        std::shared_ptr<Entry> m_entry;
    };

    ScheduledHandle add(Milliseconds delay, Milliseconds interval, std::function<void()> step)
    {
        auto entry =
            std::make_shared<Entry>(Entry{m_now + delay, m_order++, interval, std::move(step), false});
        m_steps.push_back(entry);
        return std::make_unique<Handle>(entry);
    }

    std::chrono::nanoseconds m_now{std::chrono::hours(1)};
    long m_order = 0;
    std::vector<std::shared_ptr<Entry>> m_steps;
};

/// Chance that gives what was put in, then zero (or the lower bound).
class ScriptedRandom final : public Random
{
public:
    std::deque<int> integers;
    std::deque<double> fractions;

    int below(int bound) override
    {
        if (integers.empty())
            return 0;
        const int value = integers.front();
        integers.pop_front();
        return std::min(value, bound - 1);
    }
    double between(double from, double to) override
    {
        if (fractions.empty())
            return from;
        const double value = fractions.front();
        fractions.pop_front();
        return from + value * (to - from);
    }
};

} // namespace nibbo::test
