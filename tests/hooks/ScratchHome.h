#pragma once

#include "agents/ProviderRegistry.h"
#include "base/NibboLog.h"
#include "hooks/HookInstaller.h"
#include "hooks/PosixFileSystem.h"
#include "support/ManualTime.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <optional>
#include <ostream>

inline void PrintTo(const QByteArray& bytes, std::ostream* out)
{
    *out << '"' << bytes.left(2000).constData() << '"' << (bytes.size() > 2000 ? "..." : "");
}

namespace nibbo::test {

/// A home directory on the real disk with the installer's surroundings, gone with the object.
class ScratchHome final
{
public:
    explicit ScratchHome(const QString& name = QStringLiteral("home"))
        : m_folder(scratchFolder() + QStringLiteral("/nibbo-home-XXXXXX"))
        , home(m_folder.filePath(name))
    {
        EXPECT_TRUE(m_folder.isValid());
        EXPECT_TRUE(QDir().mkpath(home));
        NibboLog::setFile(log());
    }
    ~ScratchHome()
    {
        NibboLog::setFile({});
        QDir(m_folder.path()).removeRecursively();
    }

    HookInstaller installer(FileSystem& over) { return HookInstaller(environment(), over, time); }
    HookInstaller installer() { return installer(files); }
    HookEnvironment environment() const
    {
        return {AppPaths(home), home + QStringLiteral("/prefix"), LauncherPlatform::linuxDesktop, enabled};
    }
    void enableOnly(const QStringList& ids)
    {
        for (const ProviderSpec& spec : ProviderRegistry::all())
            enabled[spec.id] = ids.contains(spec.id);
    }
    void enableAll()
    {
        for (const ProviderSpec& spec : ProviderRegistry::all())
            enabled[spec.id] = true;
    }

    QString path(const QString& relative) const { return home + QLatin1Char('/') + relative; }
    QString configPath(const char* id) const
    {
        return path(ProviderRegistry::spec(QString::fromLatin1(id))->configRelativePath);
    }
    QString backupsPath() const { return AppPaths(home).backupsDirectory(); }
    QString log() const { return m_folder.filePath(QStringLiteral("nibbo.log")); }
    QString logText() const { return QString::fromUtf8(readAt(log()).value_or(QByteArray())); }

    static void writeAt(const QString& path, const QByteArray& content)
    {
        ASSERT_TRUE(QDir().mkpath(QFileInfo(path).path()));
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly)) << qUtf8Printable(path);
        ASSERT_EQ(file.write(content), content.size());
    }
    static std::optional<QByteArray> readAt(const QString& path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? std::optional(file.readAll()) : std::nullopt;
    }
    void write(const char* id, const QByteArray& content) const { writeAt(configPath(id), content); }
    QByteArray read(const char* id) const { return readAt(configPath(id)).value_or("(missing)"); }

    /// Everything that any backup holds.
    QList<QByteArray> backupContents() const
    {
        QList<QByteArray> result;
        PosixFileSystem disk;
        for (const QString& set : disk.names(backupsPath())) {
            for (const QString& name : disk.names(backupsPath() + QLatin1Char('/') + set))
                result.append(readAt(backupsPath() + QLatin1Char('/') + set + QLatin1Char('/') + name)
                                  .value_or(QByteArray()));
        }
        return result;
    }

private:
    /// In memory where the system has such a place: everything here is written through to the disk.
    static QString scratchFolder()
    {
        const QFileInfo memory(QStringLiteral("/dev/shm"));
        return memory.isWritable() ? memory.filePath() : QDir::tempPath();
    }

    QTemporaryDir m_folder;

public:
    QString home;
    PosixFileSystem files;
    ManualTime time;
    QMap<QString, bool> enabled;
};

inline std::string errorOf(const Result<void>& result)
{
    return result ? std::string() : result.error().toStdString();
}

#define EXPECT_OK(call) EXPECT_EQ(::nibbo::test::errorOf(call), "")
#define ASSERT_OK(call) ASSERT_EQ(::nibbo::test::errorOf(call), "")

} // namespace nibbo::test
