#pragma once

#include <QString>

#include <utility>
#include <variant>

namespace nibbo {

/// What went wrong, worded where the facts are known.
struct Failure
{
    QString message;
};

/// A value or the message of a failure. `Result<void>` carries only success or the message.
template <typename T>
class [[nodiscard]] Result final
{
public:
    Result(T value)
        : m_content(std::move(value))
    {}
    Result(Failure failure)
        : m_content(std::move(failure))
    {}

    explicit operator bool() const { return std::holds_alternative<T>(m_content); }
    const T& value() const& { return std::get<T>(m_content); }
    T&& value() && { return std::get<T>(std::move(m_content)); }
    const T& operator*() const { return value(); }
    const T* operator->() const { return &value(); }
    const QString& error() const { return std::get<Failure>(m_content).message; }
    Failure failure() const { return std::get<Failure>(m_content); }

private:
    std::variant<T, Failure> m_content;
};

template <>
class [[nodiscard]] Result<void> final
{
public:
    Result() = default;
    Result(Failure failure)
        : m_failure(std::move(failure))
        , m_failed(true)
    {}

    explicit operator bool() const { return !m_failed; }
    const QString& error() const { return m_failure.message; }
    Failure failure() const { return m_failure; }

private:
    Failure m_failure;
    bool m_failed = false;
};

} // namespace nibbo
