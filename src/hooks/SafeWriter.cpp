#include "hooks/SafeWriter.h"

#include "base/NibboLog.h"
#include "hooks/JsonText.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <utility>

namespace nibbo {
namespace {

Failure circle(const QString& path)
{
    return Failure{QStringLiteral("cannot write %1: its links lead in a circle").arg(path)};
}

QString folderOf(const QString& path)
{
    return path.left(path.lastIndexOf(QLatin1Char('/')));
}

/// Whether `current` is what an interrupted writing of `to` over `from` leaves: the beginning of the one and
/// the rest of the other.
bool isTorn(const QByteArray& current, const QByteArray& from, const QByteArray& to)
{
    const qsizetype shorter = std::min(current.size(), to.size());
    const auto difference = std::mismatch(to.begin(), to.begin() + shorter, current.begin());
    const qsizetype same = difference.first - to.begin();
    // Anywhere up to `same` the writing may have stopped; the earliest place that explains the rest counts.
    if (current.size() != std::max(from.size(), same))
        return false;
    return QByteArrayView(current).sliced(same) == QByteArrayView(from).sliced(std::min(same, from.size()));
}

} // namespace

/// One write: a line of JSON, then the old content, then the new.
struct SafeWriter::Journal
{
    QString path;
    std::optional<QByteArray> from;
    QByteArray to;
    mode_t mode = 0600;

    QByteArray written() const
    {
        const QJsonObject head{{QStringLiteral("path"), path},
                               {QStringLiteral("existed"), from.has_value()},
                               {QStringLiteral("fromSize"), from ? from->size() : 0},
                               {QStringLiteral("toSize"), to.size()},
                               {QStringLiteral("mode"), static_cast<int>(mode)}};
        return QJsonDocument(head).toJson(QJsonDocument::Compact) + '\n' + from.value_or(QByteArray()) + to;
    }

    static std::optional<Journal> parse(const QByteArray& content)
    {
        const qsizetype end = content.indexOf('\n');
        const QJsonObject head = QJsonDocument::fromJson(content.left(end)).object();
        const qint64 fromSize = head.value(QStringLiteral("fromSize")).toInteger(-1);
        const qint64 toSize = head.value(QStringLiteral("toSize")).toInteger(-1);
        if (end < 0 || fromSize < 0 || toSize < 0 || content.size() != end + 1 + fromSize + toSize)
            return std::nullopt;
        Journal result;
        result.path = head.value(QStringLiteral("path")).toString();
        if (head.value(QStringLiteral("existed")).toBool())
            result.from = content.mid(end + 1, fromSize);
        result.to = content.right(toSize);
        result.mode = static_cast<mode_t>(head.value(QStringLiteral("mode")).toInt(0600));
        return result;
    }
};

QString stagedName(const QString& path)
{
    return folderOf(path) + QStringLiteral("/.") + path.mid(path.lastIndexOf(QLatin1Char('/')) + 1) +
           QStringLiteral(".nibbo-new");
}

SafeWriter::SafeWriter(FileSystem& files, QString journalFolder)
    : m_files(files)
    , m_folder(std::move(journalFolder))
{}

Result<void> SafeWriter::openJournal(const Journal& journal)
{
    if (Result<void> made = m_files.makeDirectory(m_folder); !made)
        return made;
    const QString staged = stagedName(journalFile());
    Result<void> done = m_files.create(staged, journal.written(), 0600);
    if (done)
        done = m_files.rename(staged, journalFile());
    if (!done)
        std::ignore = static_cast<bool>(m_files.remove(staged));
    return done;
}

Result<void> SafeWriter::recover()
{
    const auto journalFacts = m_files.facts(journalFile());
    if (!journalFacts)
        return {};
    const Result<QByteArray> content = m_files.read(journalFile());
    if (!content)
        return content.failure();
    const auto journal = Journal::parse(*content);
    if (!journal) {
        NibboLog::log(QStringLiteral("hook journal: not understood, dropped"));
        return m_files.remove(journalFile());
    }
    const auto known = m_files.facts(journal->path);
    if (!known || known->kind != FileKind::file)
        return m_files.remove(journalFile());
    const Result<QByteArray> current = m_files.read(journal->path);
    if (!current)
        return current.failure();
    if (*current == journal->to || (journal->from && *current == *journal->from))
        return m_files.remove(journalFile());

    // A whole text that is neither is somebody's later edit; broken text that was whole before is the damage
    // of a write that we did not see through.
    const QByteArray from = journal->from.value_or(QByteArray());
    if (!isTorn(*current, from, journal->to) && (JsonText::parse(*current) || !JsonText::parse(from))) {
        NibboLog::log(QStringLiteral("hook journal: %1 was written by another program since, left as it is")
                          .arg(journal->path));
        return m_files.remove(journalFile());
    }
    if (Result<void> room = m_files.reserve(journal->path, journal->to.size()); !room)
        return room;
    if (Result<void> done = m_files.overwrite(journal->path, journal->to); !done)
        return done;
    NibboLog::log(QStringLiteral("hook journal: completed an interrupted write of %1").arg(journal->path));
    return m_files.remove(journalFile());
}

Result<SafeWriter::Outcome> SafeWriter::writeInPlace(const QString& path,
                                                     const std::optional<QByteArray>& expected,
                                                     const QByteArray& content, mode_t mode)
{
    if (expected && *expected == content)
        return Outcome::unchanged;
    const QString target = m_files.resolved(path);
    if (target.isEmpty())
        return circle(path);
    const auto known = m_files.facts(target);
    if (known.has_value() != expected.has_value())
        return Outcome::overtaken;
    if (known && known->kind != FileKind::file)
        return Failure{QStringLiteral("cannot write %1: it is not a regular file").arg(path)};
    if (known && (known->mode & 0222U) == 0)
        return Failure{QStringLiteral("cannot write %1: it is read-only").arg(path)};
    if (!known) {
        // The folder at the far end of a link belongs to somebody who has not made it: a disk that is not
        // mounted, for example.
        const QString folder = folderOf(target);
        if (target != path && !m_files.facts(folder))
            return Failure{QStringLiteral("cannot write %1: the link leads to %2, which does not exist")
                               .arg(path, target)};
        if (Result<void> made = m_files.makeDirectory(folder); !made)
            return made.failure();
    }
    const Journal journal{target, expected, content, mode};
    if (Result<void> opened = openJournal(journal); !opened)
        return opened.failure();
    Result<Outcome> outcome = apply(journal);
    if (outcome) {
        if (Result<void> closed = m_files.remove(journalFile()); !closed)
            NibboLog::log(QStringLiteral("hook journal: ") + closed.error());
    }
    return outcome;
}

Result<SafeWriter::Outcome> SafeWriter::apply(const Journal& journal)
{
    if (!journal.from) {
        if (m_files.facts(journal.path))
            return Outcome::overtaken;
        if (Result<void> created = m_files.create(journal.path, journal.to, journal.mode); !created) {
            std::ignore = static_cast<bool>(m_files.remove(journal.path));
            std::ignore = static_cast<bool>(m_files.remove(journalFile()));
            return created.failure();
        }
        return Outcome::written;
    }
    if (Result<void> room = m_files.reserve(journal.path, journal.to.size()); !room) {
        std::ignore = static_cast<bool>(m_files.remove(journalFile()));
        return room.failure();
    }
    const Result<QByteArray> current = m_files.read(journal.path);
    if (!current) {
        std::ignore = static_cast<bool>(m_files.remove(journalFile()));
        return current.failure();
    }
    if (*current != *journal.from)
        return Outcome::overtaken;
    if (Result<void> written = m_files.overwrite(journal.path, journal.to); !written)
        return putBack(journal, written.error()).failure();
    return Outcome::written;
}

/// After a write that failed half-way. When even this fails the journal stays, and the next command completes
/// the write.
Result<void> SafeWriter::putBack(const Journal& journal, const QString& error)
{
    if (m_files.overwrite(journal.path, *journal.from))
        std::ignore = static_cast<bool>(m_files.remove(journalFile()));
    return Failure{error};
}

Result<SafeWriter::Outcome> SafeWriter::replace(const QString& path, const QByteArray& content, mode_t mode)
{
    const QString target = m_files.resolved(path);
    if (target.isEmpty())
        return circle(path);
    const auto known = m_files.facts(target);
    if (known && known->kind != FileKind::file)
        return Failure{QStringLiteral("cannot write %1: it is not a regular file").arg(path)};
    if (known && known->mode == mode && known->size == content.size()) {
        const Result<QByteArray> current = m_files.read(target);
        if (current && *current == content)
            return Outcome::unchanged;
    }
    if (Result<void> made = m_files.makeDirectory(folderOf(target)); !made)
        return made.failure();
    const QString staged = stagedName(target);
    Result<void> done = m_files.create(staged, content, mode);
    if (done)
        done = m_files.rename(staged, target);
    if (!done) {
        std::ignore = static_cast<bool>(m_files.remove(staged));
        return done.failure();
    }
    return Outcome::written;
}

Result<void> SafeWriter::remove(const QString& path)
{
    std::ignore = static_cast<bool>(m_files.remove(stagedName(path)));
    return m_files.remove(path);
}

} // namespace nibbo
