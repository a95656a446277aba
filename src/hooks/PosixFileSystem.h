#pragma once

#include "hooks/FileSystem.h"

namespace nibbo {

/// The files of this machine.
class PosixFileSystem : public FileSystem
{
public:
    std::optional<FileFacts> facts(const QString& path) const override;
    QString resolved(const QString& path) const override;
    QStringList names(const QString& directory) const override;
    Result<QByteArray> read(const QString& path) const override;

    Result<void> makeDirectory(const QString& path) override;
    Result<void> create(const QString& path, const QByteArray& content, mode_t mode) override;
    Result<void> rename(const QString& from, const QString& to) override;
    Result<void> remove(const QString& path) override;
    Result<void> reserve(const QString& path, qint64 size) override;
    Result<void> overwrite(const QString& path, const QByteArray& content) override;
    Result<void> writeThrough(const QStringList& paths) override;
    Result<std::unique_ptr<FileLock>> lock(const QString& path, std::chrono::milliseconds limit) override;
};

} // namespace nibbo
