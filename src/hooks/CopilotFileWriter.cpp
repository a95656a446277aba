#include "hooks/CopilotFileWriter.h"

#include "agents/ProviderRegistry.h"

namespace nibbo {

Result<void> CopilotFileWriter::install(const ProviderSpec& spec)
{
    if (Result<void> kept = keepForeignFile(spec, ownershipMark); !kept)
        return kept;
    const QString path = scope().path(spec);
    std::optional<QByteArray> current;
    if (scope().files.facts(path)) {
        Result<QByteArray> bytes = scope().files.read(path);
        if (!bytes)
            return bytes.failure();
        current = std::move(bytes).value();
    }
    return scope().writer.stage(path, current, copilotHooks(scope().generated), 0600);
}

Result<void> CopilotFileWriter::remove(const ProviderSpec& spec)
{
    if (Result<void> kept = keepForeignFile(spec, ownershipMark); !kept)
        return kept;
    return scope().writer.remove(scope().path(spec));
}

bool CopilotFileWriter::isWired(const ProviderSpec& spec) const
{
    return fileHolds(scope().path(spec), ownershipMark);
}

} // namespace nibbo
