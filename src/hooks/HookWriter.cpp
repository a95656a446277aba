#include "hooks/HookWriter.h"

#include "agents/ProviderRegistry.h"
#include "base/NibboLog.h"
#include "hooks/ClaudeHooksWriter.h"
#include "hooks/CopilotFileWriter.h"
#include "hooks/CursorHooksWriter.h"
#include "hooks/JsPluginWriter.h"
#include "hooks/ScriptDirWriter.h"

namespace nibbo {

QString HookScope::path(const ProviderSpec& spec) const
{
    return generated.home + QLatin1Char('/') + spec.configRelativePath;
}

std::unique_ptr<HookWriter> HookWriter::make(HookMechanism mechanism, const HookScope& scope)
{
    switch (mechanism) {
    case HookMechanism::claudeHooks:
        return std::make_unique<ClaudeHooksWriter>(scope);
    case HookMechanism::cursorHooks:
        return std::make_unique<CursorHooksWriter>(scope);
    case HookMechanism::copilotFile:
        return std::make_unique<CopilotFileWriter>(scope);
    case HookMechanism::jsPlugin:
        return std::make_unique<JsPluginWriter>(scope);
    case HookMechanism::scriptDir:
        return std::make_unique<ScriptDirWriter>(scope);
    }
    return nullptr;
}

bool HookWriter::fileHolds(const QString& path, const char* mark) const
{
    const Result<QByteArray> content = m_scope.files.read(path);
    return content && content->contains(mark);
}

Result<void> HookWriter::keepForeignFile(const ProviderSpec& spec, const char* mark)
{
    const QString path = m_scope.path(spec);
    const auto known = m_scope.files.facts(path);
    if (!known || known->size == 0 || known->kind != FileKind::file || fileHolds(path, mark))
        return {};
    const Result<QByteArray> content = m_scope.files.read(path);
    if (!content)
        return content.failure();
    const Result<QString> kept = m_scope.backups.store(spec, *content, known->mode);
    if (!kept)
        return kept.failure();
    NibboLog::log(
        QStringLiteral("hook install: %1 was not ours, its content is kept in %2").arg(path, *kept));
    return {};
}

} // namespace nibbo
