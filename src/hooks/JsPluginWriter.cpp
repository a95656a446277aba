#include "hooks/JsPluginWriter.h"

#include "agents/ProviderRegistry.h"

namespace nibbo {

Result<void> JsPluginWriter::install(const ProviderSpec& spec)
{
    if (Result<void> kept = keepForeignFile(spec, ownedFileMark); !kept)
        return kept;
    return scope().writer.replace(scope().path(spec), openCodePlugin(scope().generated), 0644);
}

Result<void> JsPluginWriter::remove(const ProviderSpec& spec)
{
    if (Result<void> kept = keepForeignFile(spec, ownedFileMark); !kept)
        return kept;
    return scope().writer.remove(scope().path(spec));
}

bool JsPluginWriter::isWired(const ProviderSpec& spec) const
{
    return fileHolds(scope().path(spec), ownedFileMark);
}

} // namespace nibbo
