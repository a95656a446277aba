#include "intake/ExecutableFinder.h"

#include <QDir>
#include <QFileInfo>
#include <QVersionNumber>

#include <algorithm>
#include <array>
#include <utility>

namespace nibbo {
namespace {

/// In the order in which they are searched. Those of the home directory begin with "~".
constexpr std::array fixedFolders{
    u"~/.npm-global/bin", u"~/.local/bin",   u"~/.opencode/bin",
    u"/opt/homebrew/bin", u"/usr/local/bin", u"/usr/bin",
};
/// One folder per installed version of Node: where it is, and what stands between the version and the name.
constexpr std::array<std::pair<const char16_t*, const char16_t*>, 3> versionParents{{
    {u"/.nvm/versions/node", u"/bin"},
    {u"/.local/share/fnm/node-versions", u"/installation/bin"},
    {u"/.fnm/node-versions", u"/installation/bin"},
}};
constexpr std::array furtherFolders{
    u"~/.volta/bin", u"~/.bun/bin", u"~/.local/share/pnpm", u"~/.local/share/pnpm/bin", u"~/.cargo/bin",
    u"/snap/bin",    u"~/bin",
};

std::optional<QString> executable(const QString& folder, const QString& name)
{
    const QString path = folder + QLatin1Char('/') + name;
    const QFileInfo info(path);
    return info.isFile() && info.isExecutable() ? std::optional(path) : std::nullopt;
}

} // namespace

ExecutableFinder::ExecutableFinder(QString home, QString systemRoot)
    : m_home(std::move(home))
    , m_systemRoot(std::move(systemRoot))
{}

std::optional<QString> ExecutableFinder::find(const QString& name) const
{
    const auto place = [this](const QString& folder) {
        return folder.startsWith(QLatin1Char('~')) ? m_home + folder.mid(1) : m_systemRoot + folder;
    };
    const auto inFixed = [&place, &name](const auto& folders) -> std::optional<QString> {
        for (const char16_t* folder : folders) {
            if (auto found = executable(place(QString::fromUtf16(folder)), name))
                return found;
        }
        return std::nullopt;
    };
    if (auto found = inFixed(fixedFolders))
        return found;
    for (const QString& folder : versionFolders()) {
        if (auto found = executable(folder, name))
            return found;
    }
    return inFixed(furtherFolders);
}

/// The newest version first, as numbers count: v20 before v9.
QStringList ExecutableFinder::versionFolders() const
{
    const auto version = [](const QString& name) {
        return QVersionNumber::fromString(name.mid(name.startsWith(QLatin1Char('v')) ? 1 : 0));
    };
    QStringList result;
    for (const auto& [parent, inner] : versionParents) {
        const QDir folder(m_home + QString::fromUtf16(parent));
        QStringList names = folder.entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name);
        std::stable_sort(names.begin(), names.end(),
                         [&version](const QString& a, const QString& b) { return version(a) > version(b); });
        for (const QString& name : names)
            result.append(folder.filePath(name) + QString::fromUtf16(inner));
    }
    return result;
}

} // namespace nibbo
