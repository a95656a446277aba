#pragma once

#include <unistd.h>
#include <utility>

namespace nibbo::bridge {

// Owns one file descriptor. -1 when there is none.
class Descriptor final
{
public:
    explicit Descriptor(int fd = -1) noexcept
        : m_fd(fd)
    {}
    Descriptor(Descriptor&& other) noexcept
        : m_fd(std::exchange(other.m_fd, -1))
    {}
    Descriptor& operator=(Descriptor&& other) noexcept
    {
        std::swap(m_fd, other.m_fd);
        return *this;
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor()
    {
        if (m_fd >= 0)
            ::close(m_fd);
    }

    int get() const noexcept { return m_fd; }
    explicit operator bool() const noexcept { return m_fd >= 0; }

private:
    int m_fd;
};

} // namespace nibbo::bridge
