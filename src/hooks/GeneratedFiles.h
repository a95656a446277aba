// The texts of the files that we put on the user's disk: the launcher that every agent's hook runs, the
// OpenCode plug-in, the Cline scripts and the Copilot hooks. Pure functions of a value: nothing is read but
// the templates built into the library (resources/generated), nothing is written, any thread may call.
// Texts come back as UTF-8, ready to be written; the installer owns paths, modes and writing.
#pragma once

#include <QByteArray>
#include <QString>

namespace nibbo {

/// Which variant of the launcher is made; the other files are the same everywhere.
enum class LauncherPlatform
{
    linuxDesktop,
    macOs
};

struct GeneratedFilesContext
{
    QString home;          // absolute path of the user's home directory
    QString installPrefix; // the folder above "bin" on Linux, the application bundle on macOS
    LauncherPlatform platform = LauncherPlatform::linuxDesktop;
};

/// Below the home directory.
inline constexpr char launcherRelativePath[] = ".nibbo/bin/nibbo-bridge";
inline constexpr char cleanerRelativePath[] = ".nibbo/bin/nibbo-cleaner";
/// What tells our entries and files in other tools' configuration.
inline constexpr char ownershipMark[] = "nibbo-bridge";
inline constexpr char ownedFileMark[] = "nibbo-bridge-marker";

/// One word for a POSIX shell or zsh, in single quotes, whatever the text holds.
QString shellQuoted(const QString& text);
/// A JavaScript string literal in single quotes, whatever the text holds.
QString javaScriptQuoted(const QString& text);

/// The command of every hook entry: the quoted launcher with the agent and the event.
QString bridgeCommand(const GeneratedFilesContext& context, const QString& providerId, const QString& event);

/// Mode 0755. Hands over to the helper of the installation that it finds; cleans up once there is none.
QByteArray launcherScript(const GeneratedFilesContext& context);
/// The macOS launcher's last part on its own, as osascript reads it.
QByteArray selfCleaningScript();
/// Mode 0755. One per Cline event, named like the event.
QByteArray clineScript(const GeneratedFilesContext& context, const QString& event);
/// An ES module.
QByteArray openCodePlugin(const GeneratedFilesContext& context);
/// The whole content of Copilot's hooks file: JSON with sorted keys.
QByteArray copilotHooks(const GeneratedFilesContext& context);

} // namespace nibbo
