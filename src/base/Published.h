#pragma once

#include <memory>
#include <mutex>
#include <utility>

namespace nibbo {

/// A value that one thread replaces as a whole and others read; what they got stays as it was. Any thread.
/// The standard's atomic shared pointer would do, but the one of GCC 12 reads without the ordering it
/// promises.
template <typename Value>
class Published final
{
public:
    std::shared_ptr<const Value> load() const
    {
        const std::lock_guard lock(m_mutex);
        return m_value;
    }
    void store(std::shared_ptr<const Value> value)
    {
        // The old value is destroyed outside the lock.
        const std::lock_guard lock(m_mutex);
        m_value.swap(value);
    }

private:
    mutable std::mutex m_mutex;
    std::shared_ptr<const Value> m_value;
};

} // namespace nibbo
