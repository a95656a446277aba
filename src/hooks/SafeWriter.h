// Writes files so that neither a full disk nor a killed process leaves one half-written.
//
// A file of another tool is written in place (it keeps its inode, mode, owner and the links that lead to it):
// old and new content are put down in a journal in our own folder first, room is reserved, and only then do
// bytes change; the journal goes once all is through. `recover` finishes what a killed process left behind. A
// file of our own is replaced at once. One at a time, under the installer's lock.
#pragma once

#include "base/Result.h"
#include "hooks/FileSystem.h"

#include <QByteArray>
#include <QString>

#include <optional>

namespace nibbo {

class SafeWriter final
{
public:
    enum class Outcome
    {
        written,
        unchanged,
        /// Somebody else wrote the file since `expected` was read. Nothing was written.
        overtaken
    };

    /// `files` must outlive the writer; `journalFolder` is ours alone.
    SafeWriter(FileSystem& files, QString journalFolder);

    /// Completes an interrupted write. A file that was given another content since is left alone.
    Result<void> recover();

    /// `expected` is what the caller read, nothing for a file that was missing. `mode` is for a new file.
    Result<Outcome> writeInPlace(const QString& path, const std::optional<QByteArray>& expected,
                                 const QByteArray& content, mode_t mode);
    /// Symbolic links are followed and stay; the folder is made.
    Result<Outcome> replace(const QString& path, const QByteArray& content, mode_t mode);
    /// Removes a file of our own and what an interrupted `replace` left beside it.
    Result<void> remove(const QString& path);

private:
    struct Journal;

    QString journalFile() const { return m_folder + QStringLiteral("/pending"); }
    Result<void> openJournal(const Journal& journal);
    Result<Outcome> apply(const Journal& journal);
    Result<void> putBack(const Journal& journal, const QString& error);

    FileSystem& m_files;
    QString m_folder;
};

/// What `replace` writes before it takes the file's place.
QString stagedName(const QString& path);

} // namespace nibbo
