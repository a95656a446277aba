#pragma once

#include "base/Result.h"

#include <QByteArray>
#include <QString>

#include <memory>
#include <vector>

namespace nibbo {

/// One file of a pack that has not been let in yet. The path is relative, clean and stays inside the pack.
struct PackFile
{
    QString path;
    qint64 size = 0;
    /// What the source knows it by.
    qint64 index = 0;

    bool operator==(const PackFile&) const = default;
};

/// A pack as it came, a ZIP file or a folder: listed and checked first, read file by file afterwards. One
/// thread.
class PackSource
{
public:
    virtual ~PackSource() = default;
    const std::vector<PackFile>& files() const { return m_files; }
    /// The whole of a file; never more than it was listed with.
    virtual Result<QByteArray> read(const PackFile& file) = 0;

    /// Opens and lists. Refuses what escapes, links, what is too much or too large, and what cannot be read.
    static Result<std::shared_ptr<PackSource>> open(const QString& path);

protected:
    std::vector<PackFile> m_files;
};

} // namespace nibbo
