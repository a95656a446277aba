#pragma once

#include <QHash>
#include <QString>
#include <QStringList>

#include <optional>
#include <vector>

namespace nibbo {

/// Fixes a tool's hook-entry schema, matcher rule and time-out rule.
enum class ProviderFamily
{
    claude,
    codex,
    gemini,
    cursor,
    copilot,
    cline,
    bespoke
};

/// Which writer of the installer handles a provider.
enum class HookMechanism
{
    claudeHooks,
    cursorHooks,
    copilotFile,
    jsPlugin,
    scriptDir
};

/// The "timeout" of a hook entry, in the units of the tool's own schema.
int hookTimeout(ProviderFamily family, const QString& event);
/// The "matcher" of a hook group: nothing means that no such key is written, the empty text is written as it
/// is.
std::optional<QString> hookMatcher(ProviderFamily family, const QString& event);

/// One supported agent tool and how the bridge is wired into it.
struct ProviderSpec
{
    QString id;
    QString title;
    QString iconName;
    ProviderFamily family;
    QStringList executableNames;
    HookMechanism mechanism;
    /// Relative to the home directory; a directory for `scriptDir`.
    QString configRelativePath;
    /// The hook events that are registered, in this order.
    QStringList events;
    /// The integration is considered verified; also the default of its enable flag.
    bool confirmed;
};

/// The fixed table of supported tools. Its order is that of every list and every pass. Built once; any
/// thread.
class ProviderRegistry final
{
public:
    static const std::vector<ProviderSpec>& all();
    static const QHash<QString, const ProviderSpec*>& byID();
    /// Looks the lower-cased id up; null when there is none.
    static const ProviderSpec* spec(const QString& id);
};

} // namespace nibbo
