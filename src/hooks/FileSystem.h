// The file operations of the hook bridge, one call per effect, so that a test can make each of them fail or
// stop the process between any two. Paths are absolute. Every failure names the path and the reason. Any
// thread.
#pragma once

#include "base/Result.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <sys/types.h>

#include <chrono>
#include <memory>
#include <optional>

namespace nibbo {

enum class FileKind
{
    file,
    directory,
    other
};

struct FileFacts
{
    FileKind kind = FileKind::file;
    /// The permission bits, as in 0644.
    mode_t mode = 0;
    qint64 size = 0;
};

/// Held as long as the object lives; the system takes it back from a process that dies.
class FileLock
{
public:
    virtual ~FileLock() = default;
};

class FileSystem
{
public:
    virtual ~FileSystem() = default;

    /// What lies at the path once symbolic links are followed; nothing when there is nothing.
    virtual std::optional<FileFacts> facts(const QString& path) const = 0;
    /// The path with its symbolic links followed, also where the last one leads to nothing; empty when they
    /// go in a circle.
    virtual QString resolved(const QString& path) const = 0;
    /// The names in a directory, sorted; empty when it cannot be read.
    virtual QStringList names(const QString& directory) const = 0;
    /// The whole of a regular file. More than 64 MB is a failure.
    virtual Result<QByteArray> read(const QString& path) const = 0;

    /// With its parents; one that is there already is a success.
    virtual Result<void> makeDirectory(const QString& path) = 0;
    /// Makes the file anew; what was there before, a link too, goes. `mode` holds whatever the umask is.
    virtual Result<void> create(const QString& path, const QByteArray& content, mode_t mode) = 0;
    /// Atomic; replaces what is at `to`.
    virtual Result<void> rename(const QString& from, const QString& to) = 0;
    /// A file or a symbolic link; one that is not there is a success.
    virtual Result<void> remove(const QString& path) = 0;
    /// Makes sure that the file can hold `size` bytes, without changing what it holds.
    virtual Result<void> reserve(const QString& path, qint64 size) = 0;
    /// Puts the content into the existing file, which keeps its inode, mode and owner. Stopped half-way it
    /// leaves the beginning of the new content and the rest of the old.
    virtual Result<void> overwrite(const QString& path, const QByteArray& content) = 0;
    /// Waits until what the files hold is on the disk, for all of them at once: one after the other would
    /// cost a disk's turn each.
    virtual Result<void> writeThrough(const QStringList& paths) = 0;
    /// Waits for other processes and threads, but not longer than `limit`.
    virtual Result<std::unique_ptr<FileLock>> lock(const QString& path, std::chrono::milliseconds limit) = 0;
};

} // namespace nibbo
