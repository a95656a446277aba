#include "app/HookCommands.h"

#include "app/ShareFolder.h"
#include "settings/SettingsStore.h"
#include "settings/UserDefaults.h"

#include <ostream>

namespace nibbo {
namespace {

void report(std::ostream& out, const char* what, const Result<void>& result)
{
    out << "nibbo: " << what << (result ? " OK" : " FAILED: ");
    if (!result)
        out << result.error().toStdString();
    out << std::endl;
}

void reportStatus(std::ostream& out, const QMap<QString, bool>& status)
{
    QStringList entries;
    for (auto entry = status.begin(); entry != status.end(); ++entry)
        entries.append(entry.key() + (entry.value() ? QStringLiteral("=true") : QStringLiteral("=false")));
    entries.sort();
    out << "nibbo: hooks-status " << entries.join(QLatin1Char(' ')).toStdString() << std::endl;
}

} // namespace

HookEnvironment storedHookEnvironment(const AppPaths& paths)
{
    UserDefaults defaults(paths.preferencesFile());
    const SettingsStore settings(defaults);
    return {paths, installPrefix(), LauncherPlatform::linuxDesktop, settings.current().enabled};
}

std::optional<int> runHookCommand(const QStringList& arguments, HookInstaller& installer, std::ostream& out)
{
    if (arguments.contains(QStringLiteral("--install-hooks")))
        report(out, "install-hooks", installer.install());
    else if (arguments.contains(QStringLiteral("--uninstall-hooks")))
        report(out, "uninstall-hooks", installer.uninstall());
    else if (arguments.contains(QStringLiteral("--hooks-status")))
        reportStatus(out, installer.status());
    else
        return std::nullopt;
    return 0;
}

} // namespace nibbo
