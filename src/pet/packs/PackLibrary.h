#pragma once

#include "base/AppPaths.h"
#include "base/Result.h"

#include <QString>
#include <QStringList>

#include <vector>

namespace nibbo {

/// A pet that can be chosen.
struct PetPack
{
    /// What the settings keep: the folder, or for a pack that comes with the program its name, since that one
    /// moves with the program.
    QString key;
    QString folder;
    QString name;
    QString author;
    QString description;
    /// A still picture to show it by; empty when it has none.
    QString picture;
    bool isBundled = false;

    bool operator==(const PetPack&) const = default;
};

/// The pet packs on this machine: those that come with the program and those that the user imported.
/// Importing checks everything before anything is written, and what is written appears at once or not at all.
/// A value over folders; `import` and `importImage` may run on any thread.
class PackLibrary final
{
public:
    /// `bundledPets` is the folder of the pets that come with the program.
    PackLibrary(AppPaths paths, QString bundledPets);

    std::vector<PetPack> packs() const;
    /// The folder that a kept key means.
    QString folderOf(const QString& key) const { return resolve(key, m_bundledPets); }
    static QString resolve(const QString& key, const QString& bundledPets);

    /// From a ZIP file or a folder, in our own form or as a sprite sheet.
    Result<PetPack> import(const QString& source) const;
    /// Copies one picture to where it stays; gives the copy's path.
    Result<QString> importImage(const QString& source) const;
    /// Only what was imported can go.
    Result<void> remove(const PetPack& pack) const;
    /// Copies the pack that people may start their own from; gives its folder.
    Result<QString> saveTemplate(const QString& intoFolder) const;

private:
    AppPaths m_paths;
    QString m_bundledPets;
};

} // namespace nibbo
