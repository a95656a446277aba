#pragma once

#include "platform/ProcessList.h"

#include <QStringList>

#include <mutex>

namespace nibbo::test {

/// A process table that holds what it was told, and counts how often it was read. Any thread.
class FakeProcessList final : public ProcessList
{
public:
    std::vector<RunningProcess> processes() override
    {
        const std::lock_guard lock(m_mutex);
        ++m_passes;
        std::vector<RunningProcess> result;
        for (const QString& line : m_lines)
            result.push_back({1000000 + static_cast<qint64>(result.size()), line});
        return result;
    }

    void set(const QStringList& commandLines)
    {
        const std::lock_guard lock(m_mutex);
        m_lines = commandLines;
    }
    int passes() const
    {
        const std::lock_guard lock(m_mutex);
        return m_passes;
    }

private:
    mutable std::mutex m_mutex;
    QStringList m_lines;
    int m_passes = 0;
};

} // namespace nibbo::test
