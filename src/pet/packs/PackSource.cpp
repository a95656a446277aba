#include "pet/packs/PackSource.h"

#include "base/AtomicFile.h"

#include <QDir>
#include <QDirIterator>
#include <QFileInfo>

#include <sys/stat.h>
#include <zip.h>

#include <algorithm>

namespace nibbo {
namespace {

constexpr qint64 largestArchive = 100LL * 1024 * 1024;
constexpr qint64 largestFile = 16LL * 1024 * 1024;
constexpr qint64 largestWhole = 200LL * 1024 * 1024;
constexpr std::size_t mostFiles = 2000;

/// What systems leave beside people's files.
bool isLitter(const QString& path)
{
    const QStringList parts = path.split(QLatin1Char('/'));
    return parts.first() == QLatin1String("__MACOSX") || parts.last() == QLatin1String("Thumbs.db") ||
           std::any_of(parts.begin(), parts.end(), [](const QString& part) {
               return part.startsWith(QLatin1Char('.')) && part != QLatin1String("..") &&
                      part != QLatin1String(".");
           });
}

bool staysInside(const QString& path)
{
    if (path.isEmpty() || path.size() > 300 || path.startsWith(QLatin1Char('/')) ||
        path.contains(QLatin1Char('\\')) || path.contains(QLatin1Char(':')))
        return false;
    for (const QString& part : path.split(QLatin1Char('/'))) {
        if (part.isEmpty() || part == QLatin1String("..") || part == QLatin1String(".") || part.size() > 120)
            return false;
    }
    return std::none_of(path.begin(), path.end(), [](QChar letter) {
        return letter.category() == QChar::Other_Control || letter.isNull();
    });
}

/// Counts what is taken in and stops at the bounds.
class Bounds
{
public:
    Result<void> add(const QString& path, qint64 size)
    {
        m_whole += size;
        if (++m_files > mostFiles)
            return Failure{QStringLiteral("The pack has more than %1 files.").arg(mostFiles)};
        if (size > largestFile || m_whole > largestWhole)
            return Failure{
                QStringLiteral("“%1” makes the pack larger than a pack may be.").arg(path.left(80))};
        return {};
    }

private:
    std::size_t m_files = 0;
    qint64 m_whole = 0;
};

class FolderSource final : public PackSource
{
public:
    explicit FolderSource(QString folder)
        : m_folder(std::move(folder))
    {}

    Result<void> list()
    {
        Bounds bounds;
        QDirIterator entries(m_folder,
                             QDir::Files | QDir::Dirs | QDir::System | QDir::NoDotAndDotDot | QDir::Hidden,
                             QDirIterator::Subdirectories);
        // Folders count too: a tree of empty ones must come to an end as well.
        std::size_t seen = 0;
        while (entries.hasNext()) {
            entries.next();
            if (++seen > 2 * mostFiles)
                return Failure{QStringLiteral("The folder has more than %1 files.").arg(mostFiles)};
            const QString path = QDir(m_folder).relativeFilePath(entries.filePath());
            if (isLitter(path))
                continue;
            struct stat status = {};
            if (::lstat(QFile::encodeName(entries.filePath()).constData(), &status) != 0)
                return Failure{QStringLiteral("“%1” cannot be read.").arg(path.left(80))};
            if (S_ISDIR(status.st_mode))
                continue;
            if (!S_ISREG(status.st_mode))
                return Failure{QStringLiteral("“%1” is a link or a device, which may not be in a pack.")
                                   .arg(path.left(80))};
            if (const Result<void> fits = bounds.add(path, status.st_size); !fits)
                return fits;
            m_files.push_back({path, status.st_size, 0});
        }
        return {};
    }

    Result<QByteArray> read(const PackFile& file) override
    {
        return readWholeFile(QDir(m_folder).filePath(file.path), file.size);
    }

private:
    QString m_folder;
};

class ZipSource final : public PackSource
{
public:
    explicit ZipSource(zip_t* archive)
        : m_archive(archive)
    {}
    ~ZipSource() override { zip_discard(m_archive); }
    ZipSource(const ZipSource&) = delete;
    ZipSource& operator=(const ZipSource&) = delete;

    Result<void> list()
    {
        const zip_int64_t count = zip_get_num_entries(m_archive, 0);
        if (count > static_cast<zip_int64_t>(2 * mostFiles))
            return Failure{QStringLiteral("The pack has more than %1 files.").arg(mostFiles)};
        Bounds bounds;
        for (zip_int64_t index = 0; index < count; ++index) {
            zip_stat_t entry;
            zip_stat_init(&entry);
            if (zip_stat_index(m_archive, static_cast<zip_uint64_t>(index), 0, &entry) != 0 ||
                entry.name == nullptr)
                return Failure{QStringLiteral("The ZIP file is damaged.")};
            const QString path = QString::fromUtf8(entry.name);
            const QString shown = path.left(80);
            zip_uint8_t system = 0;
            zip_uint32_t attributes = 0;
            zip_file_get_external_attributes(m_archive, static_cast<zip_uint64_t>(index), 0, &system,
                                             &attributes);
            const auto mode = static_cast<mode_t>(attributes >> 16U);
            if (system == ZIP_OPSYS_UNIX &&
                (S_ISLNK(mode) || S_ISCHR(mode) || S_ISBLK(mode) || S_ISFIFO(mode)))
                return Failure{
                    QStringLiteral("“%1” is a link or a device, which may not be in a pack.").arg(shown)};
            const bool isFolder = path.endsWith(QLatin1Char('/'));
            if (!staysInside(isFolder ? path.chopped(1) : path))
                return Failure{QStringLiteral("“%1” leads out of the pack.").arg(shown)};
            if (isFolder || isLitter(path))
                continue;
            if (entry.encryption_method != ZIP_EM_NONE)
                return Failure{QStringLiteral("The ZIP file is encrypted.")};
            if (entry.size > static_cast<zip_uint64_t>(largestFile))
                return Failure{QStringLiteral("“%1” makes the pack larger than a pack may be.").arg(shown)};
            if (const Result<void> fits = bounds.add(path, static_cast<qint64>(entry.size)); !fits)
                return fits;
            m_files.push_back({path, static_cast<qint64>(entry.size), index});
        }
        return {};
    }

    Result<QByteArray> read(const PackFile& file) override
    {
        zip_file_t* const opened = zip_fopen_index(m_archive, static_cast<zip_uint64_t>(file.index), 0);
        if (opened == nullptr)
            return Failure{QStringLiteral("“%1” cannot be unpacked.").arg(file.path.left(80))};
        // The listed size is a claim: what comes out may be more, and is not waited for.
        QByteArray content(file.size + 1, Qt::Uninitialized);
        qint64 filled = 0;
        zip_int64_t got = 0;
        while (filled <= file.size &&
               (got = zip_fread(opened, content.data() + filled,
                                static_cast<zip_uint64_t>(content.size() - filled))) > 0)
            filled += got;
        zip_fclose(opened);
        if (got < 0 || filled != file.size)
            return Failure{QStringLiteral("“%1” cannot be unpacked.").arg(file.path.left(80))};
        content.truncate(filled);
        return content;
    }

private:
    zip_t* m_archive;
};

template <typename Source>
Result<std::shared_ptr<PackSource>> listed(const std::shared_ptr<Source>& source)
{
    if (const Result<void> done = source->list(); !done)
        return done.failure();
    return std::shared_ptr<PackSource>(source);
}

} // namespace

Result<std::shared_ptr<PackSource>> PackSource::open(const QString& path)
{
    const QFileInfo info(path);
    if (info.isDir())
        return listed(std::make_shared<FolderSource>(info.canonicalFilePath()));
    if (!info.isFile())
        return Failure{QStringLiteral("There is no such file or folder.")};
    if (info.size() > largestArchive)
        return Failure{QStringLiteral("The file is larger than a pack may be.")};
    int code = 0;
    zip_t* const archive = zip_open(QFile::encodeName(path).constData(), ZIP_RDONLY, &code);
    if (archive == nullptr)
        return Failure{QStringLiteral("The file is not a ZIP file, or it is damaged.")};
    return listed(std::make_shared<ZipSource>(archive));
}

} // namespace nibbo
