#pragma once

#include "hooks/PosixFileSystem.h"

namespace nibbo::test {

/// The process ends here.
struct Killed
{};

/// The real disk, on which one changing operation fails or is the last that the process comes to. Writes that
/// fail or are cut short leave half of the new content.
class FaultyFileSystem final : public PosixFileSystem
{
public:
    enum class Fault
    {
        none,
        /// The operation has no effect.
        fails,
        /// It and everything after it.
        failsFromThenOn,
        killedBefore,
        killedHalfWay
    };

    FaultyFileSystem(Fault fault, int at)
        : m_fault(fault)
        , m_at(at)
    {}

    int operations() const { return m_count; }
    bool reached() const { return m_count > m_at; }

    Result<void> makeDirectory(const QString& path) override
    {
        return strikes() ? no(path) : PosixFileSystem::makeDirectory(path);
    }
    Result<void> create(const QString& path, const QByteArray& content, mode_t mode) override
    {
        if (!strikes())
            return PosixFileSystem::create(path, content, mode);
        std::ignore =
            static_cast<bool>(PosixFileSystem::create(path, content.left(content.size() / 2), mode));
        return no(path);
    }
    Result<void> rename(const QString& from, const QString& to) override
    {
        return strikes() ? no(to) : PosixFileSystem::rename(from, to);
    }
    Result<void> remove(const QString& path) override
    {
        return strikes() ? no(path) : PosixFileSystem::remove(path);
    }
    Result<void> reserve(const QString& path, qint64 size) override
    {
        return strikes() ? no(path) : PosixFileSystem::reserve(path, size);
    }
    Result<void> overwrite(const QString& path, const QByteArray& content) override
    {
        if (!strikes())
            return PosixFileSystem::overwrite(path, content);
        const QByteArray old = PosixFileSystem::read(path).value();
        const QByteArray part = content.left(content.size() / 2);
        std::ignore = static_cast<bool>(PosixFileSystem::overwrite(path, part + old.mid(part.size())));
        return no(path);
    }
    Result<void> writeThrough(const QStringList& paths) override
    {
        return strikes() ? no(paths.value(0)) : PosixFileSystem::writeThrough(paths);
    }
    Result<std::unique_ptr<FileLock>> lock(const QString& path, std::chrono::milliseconds limit) override
    {
        if (strikes())
            return no(path).failure();
        return PosixFileSystem::lock(path, limit);
    }

private:
    bool strikes()
    {
        const int here = m_count++;
        if (m_fault == Fault::none)
            return false;
        if (here == m_at && m_fault == Fault::killedBefore)
            throw Killed();
        return here == m_at || (here > m_at && m_fault == Fault::failsFromThenOn);
    }
    Result<void> no(const QString& path)
    {
        if (m_fault == Fault::killedHalfWay)
            throw Killed();
        return Failure{QStringLiteral("cannot write %1: no space left on device").arg(path)};
    }

    Fault m_fault;
    int m_at;
    int m_count = 0;
};

} // namespace nibbo::test
