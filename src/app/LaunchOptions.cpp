#include "app/LaunchOptions.h"

#include <algorithm>
#include <array>
#include <utility>

namespace nibbo {
namespace {

const std::array<QString, 3> hookFlags{QStringLiteral("--install-hooks"), QStringLiteral("--uninstall-hooks"),
                                       QStringLiteral("--hooks-status")};

LaunchOptions mistaken(const QString& text)
{
    return {LaunchMode::mistake, QString(), text};
}

} // namespace

LaunchOptions LaunchOptions::parse(const QStringList& arguments)
{
    // Hook maintenance comes before everything else: scripts call it, and it must never open a window.
    if (std::any_of(hookFlags.begin(), hookFlags.end(),
                    [&arguments](const QString& flag) { return arguments.contains(flag); }))
        return {LaunchMode::hooks, QString(), QString()};

    LaunchOptions result;
    bool records = false;
    const auto choose = [&result](LaunchMode chosen) {
        const bool free = result.mode == LaunchMode::pet;
        result.mode = chosen;
        return free;
    };
    const QStringList folderFlags{QStringLiteral("--gallery"), QStringLiteral("--record")};
    const std::array<std::pair<QString, LaunchMode>, 6> modes{{
        {QStringLiteral("--help"), LaunchMode::help},
        {QStringLiteral("-h"), LaunchMode::help},
        {QStringLiteral("--version"), LaunchMode::version},
        {QStringLiteral("--doctor"), LaunchMode::doctor},
        {QStringLiteral("--demo"), LaunchMode::demo},
        {QStringLiteral("--gallery"), LaunchMode::gallery},
    }};
    for (qsizetype at = 0; at < arguments.size(); ++at) {
        const QString& argument = arguments.at(at);
        const auto* const mode = std::find_if(modes.begin(), modes.end(),
                                              [&argument](const auto& row) { return row.first == argument; });
        if (mode != modes.end() && !choose(mode->second))
            return mistaken(QStringLiteral("%1 does not go with what stands before it").arg(argument));
        if (folderFlags.contains(argument)) {
            if (at + 1 == arguments.size() || arguments.at(at + 1).startsWith(QLatin1Char('-')))
                return mistaken(QStringLiteral("%1 needs a folder").arg(argument));
            records = records || argument == QLatin1String("--record");
            result.folder = arguments.at(++at);
        } else if (mode == modes.end() && argument.startsWith(QLatin1String("--")) &&
                   !argument.contains(QLatin1String("hooks"))) {
            // An unknown flag about hooks may come from a newer script: it starts the pet as always.
            return mistaken(QStringLiteral("unknown option %1").arg(argument));
        }
    }
    if (records && result.mode != LaunchMode::demo)
        return mistaken(QStringLiteral("--record goes with --demo"));
    return result;
}

QString helpText()
{
    return QStringLiteral(
        "Nibbo floats above your windows and shows what your coding agents are doing.\n"
        "\n"
        "usage: nibbo [option]\n"
        "\n"
        "  (nothing)            start the pet; where it runs already, show its settings\n"
        "  --install-hooks      connect the enabled agents; their files are backed up first\n"
        "  --uninstall-hooks    disconnect all agents and put their files back\n"
        "  --hooks-status       say which agents are connected\n"
        "  --doctor             look at every agent and at the way to the pet, and say what to do\n"
        "  --demo               play a two-minute story of three agents; touches nothing of yours\n"
        "  --demo --record DIR  the same into numbered pictures and a contact sheet\n"
        "  --gallery DIR        draw every state, bubble and card into contact sheets\n"
        "  --version            print the version\n"
        "  --help               print this\n");
}

QString versionText()
{
    return QStringLiteral("nibbo " NIBBO_VERSION);
}

} // namespace nibbo
