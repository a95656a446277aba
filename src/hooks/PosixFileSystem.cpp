#include "hooks/PosixFileSystem.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <future>
#include <thread>
#include <utility>
#include <vector>

namespace nibbo {
namespace {

constexpr qint64 largestFile = 64LL * 1024 * 1024;

Failure failed(const char* what, const QString& path, int error = errno)
{
    return Failure{QStringLiteral("cannot %1 %2: %3").arg(QLatin1String(what), path, qt_error_string(error))};
}

class Descriptor final
{
public:
    explicit Descriptor(int value)
        : m_value(value)
    {}
    ~Descriptor()
    {
        if (m_value >= 0)
            ::close(m_value);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    explicit operator bool() const { return m_value >= 0; }
    int get() const { return m_value; }
    int release() { return std::exchange(m_value, -1); }

private:
    int m_value;
};

class HeldLock final : public FileLock
{
public:
    explicit HeldLock(int descriptor)
        : m_descriptor(descriptor)
    {}

private:
    Descriptor m_descriptor;
};

Descriptor opened(const QString& path, int flags, mode_t mode = 0)
{
    int result = -1;
    do {
        result = ::open(QFile::encodeName(path).constData(), flags | O_CLOEXEC, mode);
    } while (result < 0 && errno == EINTR);
    return Descriptor(result);
}

bool writeAll(int descriptor, const QByteArray& content)
{
    qint64 done = 0;
    while (done < content.size()) {
        const ssize_t step =
            ::write(descriptor, content.constData() + done, static_cast<std::size_t>(content.size() - done));
        if (step < 0 && errno == EINTR)
            continue;
        if (step < 0)
            return false;
        done += step;
    }
    return true;
}

/// Zero or the error.
int writtenThrough(const QString& path)
{
    const Descriptor file = opened(path, O_RDONLY);
    if (!file)
        return errno;
#ifdef __linux__
    const int result = ::fdatasync(file.get());
#else
    const int result = ::fsync(file.get());
#endif
    // Some file systems cannot, and say so.
    return result == 0 || errno == EINVAL || errno == ENOTSUP ? 0 : errno;
}

} // namespace

std::optional<FileFacts> PosixFileSystem::facts(const QString& path) const
{
    struct stat info = {};
    if (::stat(QFile::encodeName(path).constData(), &info) != 0)
        return std::nullopt;
    const FileKind kind = S_ISREG(info.st_mode)   ? FileKind::file
                          : S_ISDIR(info.st_mode) ? FileKind::directory
                                                  : FileKind::other;
    return FileFacts{kind, info.st_mode & 07777U, info.st_size};
}

QString PosixFileSystem::resolved(const QString& path) const
{
    QString current = path;
    for (int step = 0; step < 40; ++step) {
        std::array<char, PATH_MAX> target{};
        const ssize_t length =
            ::readlink(QFile::encodeName(current).constData(), target.data(), target.size());
        if (length < 0)
            return current;
        const QString next = QFile::decodeName(QByteArray(target.data(), static_cast<qsizetype>(length)));
        current = QDir::isAbsolutePath(next) ? next
                                             : current.left(current.lastIndexOf(QLatin1Char('/')) + 1) + next;
    }
    return {};
}

QStringList PosixFileSystem::names(const QString& directory) const
{
    return QDir(directory).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                                     QDir::Name);
}

Result<QByteArray> PosixFileSystem::read(const QString& path) const
{
    // Not blocking, so that a pipe in the way cannot hold us up.
    const Descriptor file = opened(path, O_RDONLY | O_NONBLOCK);
    if (!file)
        return failed("read", path);
    struct stat info = {};
    if (::fstat(file.get(), &info) != 0)
        return failed("read", path);
    if (!S_ISREG(info.st_mode))
        return failed("read", path, S_ISDIR(info.st_mode) ? EISDIR : EINVAL);
    if (info.st_size > largestFile)
        return failed("read", path, EFBIG);
    QByteArray content;
    content.resize(std::max<qint64>(info.st_size + 1, 4096));
    qint64 done = 0;
    for (;;) {
        const ssize_t step =
            ::read(file.get(), content.data() + done, static_cast<std::size_t>(content.size() - done));
        if (step < 0 && errno == EINTR)
            continue;
        if (step < 0)
            return failed("read", path);
        if (step == 0)
            break;
        done += step;
        if (done > largestFile)
            return failed("read", path, EFBIG);
        if (done == content.size())
            content.resize(content.size() * 2);
    }
    content.resize(done);
    return content;
}

Result<void> PosixFileSystem::makeDirectory(const QString& path)
{
    const auto known = facts(path);
    if (known && known->kind == FileKind::directory)
        return {};
    const QString parent = path.left(path.lastIndexOf(QLatin1Char('/')));
    if (!parent.isEmpty() && parent != path) {
        if (Result<void> made = PosixFileSystem::makeDirectory(parent); !made)
            return made;
    }
    if (::mkdir(QFile::encodeName(path).constData(), 0755) == 0)
        return {};
    const int error = errno;
    const auto now = facts(path);
    if (now && now->kind == FileKind::directory)
        return {};
    return failed("make the folder", path, error);
}

Result<void> PosixFileSystem::create(const QString& path, const QByteArray& content, mode_t mode)
{
    if (Result<void> gone = PosixFileSystem::remove(path); !gone)
        return gone;
    const Descriptor file = opened(path, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW, 0600);
    if (!file)
        return failed("make", path);
    if (!writeAll(file.get(), content) || ::fchmod(file.get(), mode) != 0)
        return failed("write", path);
    return {};
}

Result<void> PosixFileSystem::rename(const QString& from, const QString& to)
{
    if (std::rename(QFile::encodeName(from).constData(), QFile::encodeName(to).constData()) != 0)
        return failed("put in place", to);
    return {};
}

Result<void> PosixFileSystem::remove(const QString& path)
{
    if (::unlink(QFile::encodeName(path).constData()) != 0 && errno != ENOENT && errno != ENOTDIR)
        return failed("remove", path);
    return {};
}

Result<void> PosixFileSystem::reserve(const QString& path, qint64 size)
{
    const Descriptor file = opened(path, O_WRONLY);
    if (!file)
        return failed("write", path);
#ifdef __linux__
    if (size > 0 && ::fallocate(file.get(), FALLOC_FL_KEEP_SIZE, 0, size) != 0 &&
        (errno == ENOSPC || errno == EDQUOT || errno == EFBIG || errno == EIO))
        return failed("write", path);
#else
    Q_UNUSED(size)
#endif
    return {};
}

Result<void> PosixFileSystem::overwrite(const QString& path, const QByteArray& content)
{
    const Descriptor file = opened(path, O_WRONLY);
    if (!file || !writeAll(file.get(), content) || ::ftruncate(file.get(), content.size()) != 0)
        return failed("write", path);
    return {};
}

Result<void> PosixFileSystem::writeThrough(const QStringList& paths)
{
    std::vector<std::future<int>> waiting;
    waiting.reserve(static_cast<std::size_t>(paths.size()));
    for (const QString& path : paths)
        waiting.push_back(std::async(std::launch::async, [path] { return writtenThrough(path); }));
    Result<void> first;
    for (std::size_t i = 0; i < waiting.size(); ++i) {
        const int error = waiting[i].get();
        if (error != 0 && first)
            first = failed("write", paths.at(static_cast<qsizetype>(i)), error);
    }
    return first;
}

Result<std::unique_ptr<FileLock>> PosixFileSystem::lock(const QString& path, std::chrono::milliseconds limit)
{
    Descriptor file = opened(path, O_RDWR | O_CREAT, 0600);
    if (!file)
        return failed("open", path);
    const auto end = std::chrono::steady_clock::now() + limit;
    while (::flock(file.get(), LOCK_EX | LOCK_NB) != 0) {
        if (errno != EWOULDBLOCK && errno != EINTR)
            return failed("lock", path);
        if (std::chrono::steady_clock::now() >= end)
            return Failure{QStringLiteral("another Nibbo is changing the hooks (%1 is locked)").arg(path)};
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return std::unique_ptr<FileLock>(std::make_unique<HeldLock>(file.release()));
}

} // namespace nibbo
