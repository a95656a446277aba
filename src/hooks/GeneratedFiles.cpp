#include "hooks/GeneratedFiles.h"

#include "agents/ProviderRegistry.h"

#include <nlohmann/json.hpp>

#include <QFile>
#include <QList>
#include <QStringList>

#include <utility>

// The templates lie in a static library, where nothing but this call makes the linker keep them. The macro
// wants the global namespace.
static void initTemplates()
{
    Q_INIT_RESOURCE(GeneratedFiles);
}

namespace nibbo {

namespace {

// The application's identifier that macOS looks up.
constexpr char bundleIdentifier[] = "app.nibbo.Nibbo";
// Where OpenCode's server is when it names no address.
constexpr char defaultOpenCodeOrigin[] = "http://127.0.0.1:4096";
constexpr char socketRelativePath[] = "/Library/Application Support/Nibbo/nibbo.sock";

using Replacements = QList<std::pair<QString, QString>>;

QString readTemplate(const char* name)
{
    static const bool initialized = (initTemplates(), true);
    Q_UNUSED(initialized)
    QFile file(QStringLiteral(":/generated/") + QLatin1String(name));
    if (!file.open(QIODevice::ReadOnly))
        qFatal("the template %s is not in the program", name);
    return QString::fromUtf8(file.readAll());
}

// One pass over the template, so that a value which looks like a blank is left as it is. A blank
// between quotes is replaced with its quotes.
QString filled(const QString& text, const Replacements& replacements)
{
    QString result;
    qsizetype position = 0;
    while (position < text.size()) {
        const QStringView rest = QStringView(text).mid(position);
        bool replaced = false;
        for (const auto& [blank, value] : replacements) {
            if (rest.startsWith(blank)) {
                result += value;
                position += blank.size();
                replaced = true;
                break;
            }
        }
        if (!replaced)
            result += text.at(position++);
    }
    return result;
}

// The files of other tools that hold our entries beside the user's.
QStringList sharedFiles()
{
    QStringList files;
    for (const ProviderSpec& spec : ProviderRegistry::all()) {
        if (spec.mechanism == HookMechanism::claudeHooks || spec.mechanism == HookMechanism::cursorHooks)
            files += spec.configRelativePath;
    }
    return files;
}

// The files that are ours as a whole.
QStringList ownedFiles()
{
    QStringList files;
    for (const ProviderSpec& spec : ProviderRegistry::all()) {
        if (spec.mechanism == HookMechanism::copilotFile || spec.mechanism == HookMechanism::jsPlugin)
            files += spec.configRelativePath;
        if (spec.mechanism != HookMechanism::scriptDir)
            continue;
        for (const QString& event : spec.events)
            files += spec.configRelativePath + QLatin1Char('/') + event;
    }
    return files;
}

QString joined(const QStringList& texts, QString (*quoted)(const QString&), const QString& separator)
{
    QStringList parts;
    for (const QString& text : texts)
        parts += quoted(text);
    return parts.join(separator);
}

QString removal(const QString& relativePath)
{
    return QStringLiteral("$.NSFileManager.defaultManager.removeItemAtPathError(h+%1,null)")
        .arg(javaScriptQuoted(QLatin1Char('/') + relativePath));
}

QString launcherPath(const GeneratedFilesContext& context)
{
    return context.home + QLatin1Char('/') + QLatin1String(launcherRelativePath);
}

} // namespace

QString shellQuoted(const QString& text)
{
    QString inner = text;
    inner.replace(QLatin1String("'"), QLatin1String("'\\''"));
    return QLatin1Char('\'') + inner + QLatin1Char('\'');
}

QString javaScriptQuoted(const QString& text)
{
    QString result(QLatin1Char('\''));
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar character = text.at(i);
        const char16_t code = character.unicode();
        const bool pair =
            character.isHighSurrogate() && i + 1 < text.size() && text.at(i + 1).isLowSurrogate();
        if (character == QLatin1Char('\\') || character == QLatin1Char('\'')) {
            result += QLatin1Char('\\');
            result += character;
        } else if (pair) {
            result += character;
            result += text.at(++i);
        } else if (code < 0x20 || code == 0x2028 || code == 0x2029 || character.isSurrogate()) {
            result += QStringLiteral("\\u%1").arg(static_cast<uint>(code), 4, 16, QLatin1Char('0'));
        } else {
            result += character;
        }
    }
    return result + QLatin1Char('\'');
}

QString bridgeCommand(const GeneratedFilesContext& context, const QString& providerId, const QString& event)
{
    return shellQuoted(launcherPath(context)) + QStringLiteral(" --source ") + providerId +
           QStringLiteral(" --event ") + event;
}

QByteArray launcherScript(const GeneratedFilesContext& context)
{
    const QString separator = QStringLiteral(" \\\n    ");
    const Replacements common{
        {QStringLiteral("'@HOME@'"), shellQuoted(context.home)},
        {QStringLiteral("'@INSTALL_PREFIX@'"), shellQuoted(context.installPrefix)},
    };
    switch (context.platform) {
    case LauncherPlatform::linuxDesktop:
        return filled(
                   readTemplate("launcher-linux.sh"),
                   common +
                       Replacements{
                           {QStringLiteral("'@SHARED_FILES@'"),
                            joined(sharedFiles(), shellQuoted, separator)},
                           {QStringLiteral("'@OWNED_FILES@'"), joined(ownedFiles(), shellQuoted, separator)},
                       })
            .toUtf8();
    case LauncherPlatform::macOs:
        return filled(readTemplate("launcher-macos.zsh"),
                      common +
                          Replacements{
                              {QStringLiteral("@BUNDLE_IDENTIFIER@"), QLatin1String(bundleIdentifier)},
                              {QStringLiteral("@SELF_CLEANING@\n"), QString::fromUtf8(selfCleaningScript())},
                          })
            .toUtf8();
    }
    return {};
}

QByteArray selfCleaningScript()
{
    return filled(readTemplate("self-cleaning.js"),
                  {
                      {QStringLiteral("'@SHARED_FILES@'"),
                       joined(sharedFiles(), javaScriptQuoted, QStringLiteral(","))},
                      {QStringLiteral("'@REMOVE_OWNED_FILES@';"),
                       joined(ownedFiles(), removal, QStringLiteral("\n  "))},
                  })
        .toUtf8();
}

QByteArray clineScript(const GeneratedFilesContext& context, const QString& event)
{
    return filled(readTemplate("cline-hook.sh"),
                  {
                      {QStringLiteral("'@LAUNCHER@'"), shellQuoted(launcherPath(context))},
                      {QStringLiteral("@EVENT@"), event},
                  })
        .toUtf8();
}

QByteArray openCodePlugin(const GeneratedFilesContext& context)
{
    return filled(readTemplate("opencode-plugin.mjs"),
                  {
                      {QStringLiteral("'@SOCKET_PATH@'"),
                       javaScriptQuoted(context.home + QLatin1String(socketRelativePath))},
                      {QStringLiteral("'@DEFAULT_ORIGIN@'"),
                       javaScriptQuoted(QLatin1String(defaultOpenCodeOrigin))},
                  })
        .toUtf8();
}

QByteArray copilotHooks(const GeneratedFilesContext& context)
{
    nlohmann::json hooks = nlohmann::json::object();
    for (const ProviderSpec& spec : ProviderRegistry::all()) {
        if (spec.mechanism != HookMechanism::copilotFile)
            continue;
        for (const QString& event : spec.events) {
            hooks[event.toStdString()] = {{
                {"type", "command"},
                {"bash", bridgeCommand(context, spec.id, event).toStdString()},
                {"timeoutSec", hookTimeout(spec.family, event)},
            }};
        }
    }
    return QByteArray::fromStdString(nlohmann::json{{"version", 1}, {"hooks", hooks}}.dump(2));
}

} // namespace nibbo
