#include "hooks/ScriptDirWriter.h"

#include "agents/ProviderRegistry.h"
#include "base/NibboLog.h"

#include <algorithm>

namespace nibbo {

Result<void> ScriptDirWriter::install(const ProviderSpec& spec)
{
    const QString folder = scope().path(spec);
    if (Result<void> made = scope().files.makeDirectory(folder); !made)
        return made;
    for (const QString& event : spec.events) {
        const QString path = folder + QLatin1Char('/') + event;
        const Result<QByteArray> known = scope().files.read(path);
        if (known && !known->contains(ownershipMark)) {
            NibboLog::log(QStringLiteral("hook install: %1 keeping existing %2 hook").arg(spec.title, event));
            continue;
        }
        if (Result<void> written = scope().writer.replace(path, clineScript(scope().generated, event), 0755);
            !written)
            return written;
    }
    return {};
}

Result<void> ScriptDirWriter::remove(const ProviderSpec& spec)
{
    Result<void> first;
    for (const QString& event : spec.events) {
        const QString path = scope().path(spec) + QLatin1Char('/') + event;
        if (!fileHolds(path, ownershipMark))
            continue;
        if (Result<void> removed = scope().writer.remove(path); !removed && first)
            first = removed;
    }
    return first;
}

bool ScriptDirWriter::isWired(const ProviderSpec& spec) const
{
    return std::all_of(spec.events.begin(), spec.events.end(), [this, &spec](const QString& event) {
        return scope().files.facts(scope().path(spec) + QLatin1Char('/') + event).has_value();
    });
}

} // namespace nibbo
