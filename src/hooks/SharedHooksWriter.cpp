#include "hooks/SharedHooksWriter.h"

#include "agents/ProviderRegistry.h"
#include "base/NibboLog.h"
#include "hooks/HookEntries.h"

#include <utility>

namespace nibbo {
namespace {

/// How much of old backups is looked through for the exact bytes of a file.
constexpr qint64 searchLimit = 64LL * 1024 * 1024;

/// Nothing for what is no JSON object.
std::optional<JsonText> parsedObject(const QByteArray& content)
{
    std::optional<JsonText> text = JsonText::parse(content);
    return text && text->root.isObject() ? text : std::nullopt;
}

bool sameText(const JsonText& one, const JsonText& other)
{
    return one.tail == other.tail && one.root.sameAs(other.root);
}

} // namespace

void SharedHooksWriter::prepareRoot(JsonValue&) const {}

Result<SharedHooksWriter::Content> SharedHooksWriter::readFile(const ProviderSpec& spec) const
{
    const QString path = scope().path(spec);
    const auto known = scope().files.facts(path);
    if (!known)
        return Content{};
    Result<QByteArray> bytes = scope().files.read(path);
    if (!bytes)
        return bytes.failure();
    return Content{std::move(bytes).value(), known->mode};
}

JsonText SharedHooksWriter::withBridge(const ProviderSpec& spec, JsonText text) const
{
    prepareRoot(text.root);
    putBridgeIn(text.root, spec.events,
                [this, &spec](const QString& event) { return makeEntry(spec, event); });
    return text;
}

std::optional<QByteArray> SharedHooksWriter::origin(const ProviderSpec& spec, const JsonText& wired,
                                                    const JsonText& stripped) const
{
    qint64 looked = 0;
    for (const QString& set : scope().backups.sets()) {
        const QString path = scope().backups.pathIn(set, spec);
        const auto known = scope().files.facts(path);
        if (!known)
            continue;
        looked += known->size;
        if (looked > searchLimit)
            break;
        Result<QByteArray> bytes = scope().files.read(path);
        if (!bytes || bytes->contains(ownershipMark))
            continue;
        const JsonText candidate = parsedObject(*bytes).value_or(JsonText{});
        if (sameText(candidate, stripped) || sameText(withBridge(spec, candidate), wired))
            return std::move(bytes).value();
    }
    return std::nullopt;
}

QByteArray SharedHooksWriter::withoutBridge(const ProviderSpec& spec, const QByteArray& content) const
{
    if (!content.contains(ownershipMark))
        return content;
    const std::optional<JsonText> wired = parsedObject(content);
    if (!wired)
        return content;
    JsonText stripped = *wired;
    if (!takeBridgeOut(stripped.root))
        return content;
    std::optional<QByteArray> bytes = origin(spec, *wired, stripped);
    return bytes ? std::move(*bytes) : stripped.written();
}

Result<void> SharedHooksWriter::install(const ProviderSpec& spec)
{
    const QString path = scope().path(spec);
    const Result<Content> current = readFile(spec);
    if (!current)
        return current.failure();
    QString backup;
    if (current->bytes) {
        const Result<QString> stored = scope().backups.store(spec, *current->bytes, current->mode);
        if (!stored)
            return stored.failure();
        backup = *stored;
    }
    const QByteArray bytes = current->bytes.value_or(QByteArray());
    const auto known = parsedObject(bytes);
    const JsonText wired = withBridge(spec, known ? *known : JsonText{});
    if (known && current->bytes && wired.root.sameAs(known->root))
        return {};
    if (!known || hasForeignShape(known->root, spec.events)) {
        NibboLog::log(QStringLiteral("hook install: %1 is not understood, its content is kept in %2")
                          .arg(path, backup));
    }
    return scope().writer.stage(path, current->bytes, wired.written(), current->mode);
}

Result<void> SharedHooksWriter::remove(const ProviderSpec& spec)
{
    const Result<Content> current = readFile(spec);
    if (!current)
        return current.failure();
    if (!current->bytes)
        return {};
    return scope().writer.stage(scope().path(spec), current->bytes, withoutBridge(spec, *current->bytes),
                                current->mode);
}

Result<void> SharedHooksWriter::restore(const ProviderSpec& spec, const QString& set)
{
    if (!scope().files.facts(scope().backups.pathIn(set, spec)))
        return remove(spec);
    const QString backupPath = scope().backups.pathIn(set, spec);
    const auto backupFacts = scope().files.facts(backupPath);
    const Result<QByteArray> backup = scope().files.read(backupPath);
    if (!backup)
        return backup.failure();
    const Result<Content> current = readFile(spec);
    if (!current)
        return current.failure();
    if (Result<void> kept = keepLaterEdits(spec, *backup, *current); !kept)
        return kept.failure();
    return scope().writer.stage(scope().path(spec), current->bytes, withoutBridge(spec, *backup),
                                backupFacts ? backupFacts->mode : current->mode);
}

Result<void> SharedHooksWriter::keepLaterEdits(const ProviderSpec& spec, const QByteArray& backup,
                                               const Content& current)
{
    if (!current.bytes || *current.bytes == backup)
        return {};
    const auto now = parsedObject(*current.bytes);
    const JsonText installed = withBridge(spec, parsedObject(backup).value_or(JsonText{}));
    if (now && now->root.sameAs(installed.root))
        return {};
    const Result<QString> stored = scope().backups.store(spec, *current.bytes, current.mode);
    if (!stored)
        return stored.failure();
    NibboLog::log(QStringLiteral("hook restore: %1 was changed since the install, that version is kept in %2")
                      .arg(scope().path(spec), *stored));
    return {};
}

bool SharedHooksWriter::isWired(const ProviderSpec& spec) const
{
    const Result<QByteArray> content = scope().files.read(scope().path(spec));
    if (!content)
        return false;
    if (!content->contains(ownershipMark) && !spec.events.isEmpty())
        return false;
    const auto text = parsedObject(*content);
    return text && holdsBridgeFor(text->root, spec.events);
}

} // namespace nibbo
