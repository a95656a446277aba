#pragma once

#include <unistd.h>

#include <utility>

namespace nibbo {

/// Owns one descriptor of the operating system and closes it; -1 when it holds none.
class FileDescriptor final
{
public:
    explicit FileDescriptor(int descriptor = -1)
        : m_descriptor(descriptor)
    {}
    FileDescriptor(FileDescriptor&& other) noexcept
        : m_descriptor(std::exchange(other.m_descriptor, -1))
    {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept
    {
        if (this != &other)
            reset(std::exchange(other.m_descriptor, -1));
        return *this;
    }
    ~FileDescriptor() { reset(); }

    int get() const { return m_descriptor; }
    bool isValid() const { return m_descriptor >= 0; }
    void reset(int descriptor = -1)
    {
        if (m_descriptor >= 0)
            ::close(m_descriptor);
        m_descriptor = descriptor;
    }

private:
    int m_descriptor;
};

} // namespace nibbo
