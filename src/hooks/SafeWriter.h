// Writes files so that neither a full disk nor a killed process nor a power cut leaves one half-written.
//
// Files of other tools are written in place (they keep inode, mode, owner and the links that lead to them):
// 1. `stage` notes a write; nothing is touched yet.
// 2. `commit` puts the old and the new content of all of them into a journal in our own folder, and waits
//    until that and what was replaced so far (the backups) are on the disk.
// 3. Room is reserved for a file, and only then do its bytes change; one that somebody else wrote meanwhile
// is
//    left alone and reported.
// 4. Once all of it is on the disk, the journal goes. `recover` finishes what a killed process left behind.
// Files of our own are replaced at once. One thread at a time, under the installer's lock.
#pragma once

#include "base/Result.h"
#include "hooks/FileSystem.h"

#include <QByteArray>
#include <QMap>
#include <QString>
#include <QStringList>

#include <optional>
#include <vector>

namespace nibbo {

class SafeWriter final
{
public:
    /// What did not come to be written, by the path that was staged.
    struct Outcome
    {
        /// Somebody else wrote these since they were read.
        QStringList overtaken;
        /// With the reason.
        QMap<QString, QString> failed;
    };

    /// `files` must outlive the writer; `journalFolder` is ours alone.
    SafeWriter(FileSystem& files, QString journalFolder);

    /// Completes an interrupted commit. A file that was given another content since is left alone.
    Result<void> recover();

    /// `expected` is what the caller read, nothing for a file that was missing. `mode` is for a new file.
    /// Fails when it can be told beforehand that the file cannot be written.
    Result<void> stage(const QString& path, const std::optional<QByteArray>& expected,
                       const QByteArray& content, mode_t mode);
    /// Writes what was staged. One file that cannot be written does not keep the others from it.
    Outcome commit();

    /// Symbolic links are followed and stay; the folder is made. Nothing is written when nothing changes.
    Result<void> replace(const QString& path, const QByteArray& content, mode_t mode);
    /// Removes a file of our own and what an interrupted `replace` left beside it.
    Result<void> remove(const QString& path);

private:
    struct Write
    {
        /// As it was staged, and with its links followed.
        QString path;
        QString target;
        std::optional<QByteArray> from;
        QByteArray to;
        mode_t mode = 0600;
    };
    enum class Applied
    {
        written,
        overtaken,
        failed,
        /// Half-written, and the old content could not be put back either.
        torn
    };

    QString journalFile() const { return m_folder + QStringLiteral("/pending"); }
    static QByteArray journalOf(const std::vector<Write>& writes);
    static std::optional<std::vector<Write>> writesIn(const QByteArray& journal);

    Result<void> openJournal(const std::vector<Write>& writes);
    void closeJournal();
    Applied apply(const Write& write, QString& error);
    Result<void> createNew(const Write& write);
    /// Whether the file is the damage of a write that was not seen through.
    Result<bool> isDamaged(const Write& write) const;
    Result<void> keepWhatMayBeAnEdit(const Write& write);

    FileSystem& m_files;
    QString m_folder;
    std::vector<Write> m_staged;
    /// Replaced, and perhaps not on the disk yet.
    QStringList m_fresh;
};

/// What `replace` writes before it takes the file's place.
QString stagedName(const QString& path);

} // namespace nibbo
