#include "hooks/SafeWriter.h"

#include "base/NibboLog.h"
#include "hooks/JsonText.h"

#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QUuid>

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

void logFailure(const Result<void>& result)
{
    if (!result)
        NibboLog::log(QStringLiteral("hook journal: ") + result.error());
}

/// Whether `current` is what an interrupted writing of `to` over `from` leaves: the beginning of the one and
/// the rest of the other.
bool isTorn(const QByteArray& current, const QByteArray& from, const QByteArray& to)
{
    const qsizetype shorter = std::min(current.size(), to.size());
    const auto difference = std::mismatch(to.begin(), to.begin() + shorter, current.begin());
    const qsizetype same = difference.first - to.begin();
    if (current.size() != std::max(from.size(), same))
        return false;
    return QByteArrayView(current).sliced(same) == QByteArrayView(from).sliced(std::min(same, from.size()));
}

} // namespace

QString stagedName(const QString& path)
{
    return folderOf(path) + QStringLiteral("/.") + path.mid(path.lastIndexOf(QLatin1Char('/')) + 1) +
           QStringLiteral(".nibbo-new");
}

SafeWriter::SafeWriter(FileSystem& files, QString journalFolder)
    : m_files(files)
    , m_folder(std::move(journalFolder))
{}

/// One line of JSON, then the old and the new content of each file in turn.
QByteArray SafeWriter::journalOf(const std::vector<Write>& writes)
{
    QJsonArray heads;
    QByteArray contents;
    for (const Write& write : writes) {
        heads.append(QJsonObject{{QStringLiteral("path"), write.target},
                                 {QStringLiteral("existed"), write.from.has_value()},
                                 {QStringLiteral("fromSize"), write.from ? write.from->size() : 0},
                                 {QStringLiteral("toSize"), write.to.size()},
                                 {QStringLiteral("mode"), static_cast<int>(write.mode)}});
        contents += write.from.value_or(QByteArray()) + write.to;
    }
    return QJsonDocument(heads).toJson(QJsonDocument::Compact) + '\n' + contents;
}

std::optional<std::vector<SafeWriter::Write>> SafeWriter::writesIn(const QByteArray& journal)
{
    qsizetype at = journal.indexOf('\n') + 1;
    const QJsonDocument heads = QJsonDocument::fromJson(journal.left(at));
    if (at == 0 || !heads.isArray())
        return std::nullopt;
    std::vector<Write> result;
    for (const QJsonValue& value : heads.array()) {
        const QJsonObject head = value.toObject();
        const qint64 fromSize = head.value(QStringLiteral("fromSize")).toInteger(-1);
        const qint64 toSize = head.value(QStringLiteral("toSize")).toInteger(-1);
        if (fromSize < 0 || toSize < 0 || fromSize + toSize > journal.size() - at)
            return std::nullopt;
        Write write;
        write.path = write.target = head.value(QStringLiteral("path")).toString();
        if (head.value(QStringLiteral("existed")).toBool())
            write.from = journal.mid(at, fromSize);
        write.to = journal.mid(at + fromSize, toSize);
        write.mode = static_cast<mode_t>(head.value(QStringLiteral("mode")).toInt(0600));
        at += fromSize + toSize;
        result.push_back(std::move(write));
    }
    return result;
}

Result<void> SafeWriter::openJournal(const std::vector<Write>& writes)
{
    const QString staged = stagedName(journalFile());
    Result<void> done = m_files.makeDirectory(m_folder);
    if (done)
        done = m_files.create(staged, journalOf(writes), 0600);
    if (done)
        done = m_files.rename(staged, journalFile());
    if (done)
        done = m_files.writeThrough(QStringList(m_fresh) << journalFile());
    if (done)
        m_fresh.clear();
    else
        logFailure(m_files.remove(staged));
    return done;
}

void SafeWriter::closeJournal()
{
    logFailure(m_files.remove(journalFile()));
}

Result<bool> SafeWriter::isDamaged(const Write& write) const
{
    const auto known = m_files.facts(write.target);
    if (!known || known->kind != FileKind::file)
        return false;
    const Result<QByteArray> current = m_files.read(write.target);
    if (!current)
        return current.failure();
    if (*current == write.to || (write.from && *current == *write.from))
        return false;
    // A whole text that is neither is somebody's later edit; broken text that was whole before is the damage
    // of a write that we did not see through.
    const QByteArray from = write.from.value_or(QByteArray());
    if (isTorn(*current, from, write.to) || (!JsonText::parse(*current) && JsonText::parse(from)))
        return true;
    NibboLog::log(QStringLiteral("hook journal: %1 was written by another program since, left as it is")
                      .arg(write.target));
    return false;
}

Result<void> SafeWriter::keepWhatMayBeAnEdit(const Write& write)
{
    const Result<QByteArray> current = m_files.read(write.target);
    if (!current)
        return current.failure();
    if (isTorn(*current, write.from.value_or(QByteArray()), write.to))
        return {};
    // Broken, but not by us as far as can be told: perhaps an edit that somebody has not finished.
    const QString kept = m_folder + QStringLiteral("/damaged-%1-%2")
                                        .arg(QFileInfo(write.target).fileName(),
                                             QUuid::createUuid().toString(QUuid::Id128).left(8));
    NibboLog::log(
        QStringLiteral("hook journal: %1 is broken; what it holds is kept as %2").arg(write.target, kept));
    return m_files.create(kept, *current, 0600);
}

Result<void> SafeWriter::recover()
{
    if (!m_files.facts(journalFile()))
        return {};
    const Result<QByteArray> journal = m_files.read(journalFile());
    if (!journal)
        return journal.failure();
    const auto writes = writesIn(*journal);
    if (!writes)
        NibboLog::log(QStringLiteral("hook journal: not understood, dropped"));
    QStringList completed;
    for (const Write& write : writes.value_or(std::vector<Write>())) {
        const Result<bool> damaged = isDamaged(write);
        if (!damaged)
            return damaged.failure();
        if (!*damaged)
            continue;
        if (Result<void> kept = keepWhatMayBeAnEdit(write); !kept)
            return kept;
        if (Result<void> room = m_files.reserve(write.target, write.to.size()); !room)
            return room;
        if (Result<void> done = m_files.overwrite(write.target, write.to); !done)
            return done;
        completed.append(write.target);
        NibboLog::log(QStringLiteral("hook journal: completed an interrupted write of %1").arg(write.target));
    }
    if (Result<void> through = m_files.writeThrough(completed); !through)
        return through;
    return m_files.remove(journalFile());
}

Result<void> SafeWriter::stage(const QString& path, const std::optional<QByteArray>& expected,
                               const QByteArray& content, mode_t mode)
{
    if (expected && *expected == content)
        return {};
    const QString target = m_files.resolved(path);
    if (target.isEmpty())
        return circle(path);
    const auto known = m_files.facts(target);
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
            return made;
    }
    m_staged.push_back({path, target, expected, content, mode});
    return {};
}

SafeWriter::Outcome SafeWriter::commit()
{
    const std::vector<Write> writes = std::exchange(m_staged, {});
    Outcome outcome;
    if (writes.empty()) {
        logFailure(m_files.writeThrough(std::exchange(m_fresh, {})));
        return outcome;
    }
    if (Result<void> opened = openJournal(writes); !opened) {
        closeJournal();
        for (const Write& write : writes)
            outcome.failed.insert(write.path, opened.error());
        return outcome;
    }
    bool whole = true;
    QStringList written;
    for (const Write& write : writes) {
        QString error;
        switch (apply(write, error)) {
        case Applied::written:
            written.append(write.target);
            break;
        case Applied::overtaken:
            outcome.overtaken.append(write.path);
            break;
        case Applied::torn:
            whole = false;
            [[fallthrough]];
        case Applied::failed:
            outcome.failed.insert(write.path, error);
            break;
        }
    }
    if (Result<void> through = m_files.writeThrough(written); !through) {
        logFailure(through);
        whole = false;
    }
    // The journal of a file that is not whole stays, and the next command completes the write.
    if (whole)
        closeJournal();
    return outcome;
}

Result<void> SafeWriter::createNew(const Write& write)
{
    Result<void> created = m_files.create(write.target, write.to, write.mode);
    if (!created)
        logFailure(m_files.remove(write.target));
    return created;
}

SafeWriter::Applied SafeWriter::apply(const Write& write, QString& error)
{
    const auto failed = [&error](const QString& text) {
        error = text;
        return Applied::failed;
    };
    if (m_files.facts(write.target).has_value() != write.from.has_value())
        return Applied::overtaken;
    if (!write.from) {
        const Result<void> created = createNew(write);
        return created ? Applied::written : failed(created.error());
    }
    if (Result<void> room = m_files.reserve(write.target, write.to.size()); !room)
        return failed(room.error());
    const Result<QByteArray> current = m_files.read(write.target);
    if (!current)
        return failed(current.error());
    if (*current != *write.from)
        return Applied::overtaken;
    const Result<void> written = m_files.overwrite(write.target, write.to);
    if (written)
        return Applied::written;
    failed(written.error());
    return m_files.overwrite(write.target, *write.from) ? Applied::failed : Applied::torn;
}

Result<void> SafeWriter::replace(const QString& path, const QByteArray& content, mode_t mode)
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
            return {};
    }
    const QString staged = stagedName(target);
    Result<void> done = m_files.makeDirectory(folderOf(target));
    if (done)
        done = m_files.create(staged, content, mode);
    if (done)
        done = m_files.rename(staged, target);
    if (done)
        m_fresh.append(target);
    else
        logFailure(m_files.remove(staged));
    return done;
}

Result<void> SafeWriter::remove(const QString& path)
{
    logFailure(m_files.remove(stagedName(path)));
    return m_files.remove(path);
}

} // namespace nibbo
