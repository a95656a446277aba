#include "pet/packs/PackLibrary.h"

#include "base/AtomicFile.h"
#include "base/NibboLog.h"
#include "pet/packs/PackPicture.h"
#include "pet/packs/PackSource.h"
#include "pet/packs/SpriteSheet.h"

#include <QDir>
#include <QDirIterator>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

#include <algorithm>
#include <utility>

namespace nibbo {
namespace {

const QString bundledPrefix = QStringLiteral("bundled:");
const QString officialName = QStringLiteral("nibbo");
const QString templateName = QStringLiteral("template");
const QString manifestName = QStringLiteral("pack.json");
const QString sheetManifestName = QStringLiteral("pet.json");

QString endingOf(const QString& path)
{
    return QFileInfo(path).suffix().toLower();
}

QJsonObject readObject(const QByteArray& content)
{
    return QJsonDocument::fromJson(content).object();
}

QString line(const QJsonObject& object, const char* key)
{
    return object.value(QLatin1String(key)).toString().simplified().left(200);
}

PetPack describe(const QString& folder, bool isBundled)
{
    const Result<QByteArray> content = readWholeFile(folder + QLatin1Char('/') + manifestName, 256 * 1024);
    const QJsonObject manifest = content ? readObject(*content) : QJsonObject();
    PetPack pack;
    pack.folder = folder;
    pack.isBundled = isBundled;
    pack.key = isBundled ? bundledPrefix + QFileInfo(folder).fileName() : folder;
    pack.name = line(manifest, "name");
    if (pack.name.isEmpty())
        pack.name = QFileInfo(folder).fileName();
    pack.author = line(manifest, "author");
    pack.description = line(manifest, "description");
    // The quiet pose shows best who it is; after that, any picture.
    for (const QString& ending : pictureEndings()) {
        for (const char* candidate :
             {"images/idle.", "frames/idle/01.", "frames/idle/1.", "frames/idle/0."}) {
            const QString path = folder + QLatin1Char('/') + QLatin1String(candidate) + ending;
            if (pack.picture.isEmpty() && QFileInfo::exists(path))
                pack.picture = path;
        }
    }
    if (pack.picture.isEmpty()) {
        QDirIterator files(folder, QDir::Files, QDirIterator::Subdirectories);
        while (files.hasNext() && pack.picture.isEmpty()) {
            if (const QString path = files.next(); pictureEndings().contains(endingOf(path)))
                pack.picture = path;
        }
    }
    return pack;
}

std::vector<PetPack> packsIn(const QString& folder, bool areBundled)
{
    std::vector<PetPack> found;
    const QStringList names = QDir(folder).entryList(QDir::Dirs | QDir::NoDotAndDotDot | QDir::NoSymLinks,
                                                     QDir::Name | QDir::IgnoreCase);
    for (const QString& name : names) {
        if (areBundled && (name == officialName || name == templateName))
            continue;
        found.push_back(describe(folder + QLatin1Char('/') + name, areBundled));
    }
    return found;
}

/// A folder's name out of a pack's: letters, digits and dashes.
QString slug(const QString& name)
{
    QString result;
    for (const QChar letter : name) {
        if (letter.isLetterOrNumber())
            result += letter.toLower();
        else if (!result.isEmpty() && !result.endsWith(QLatin1Char('-')))
            result += QLatin1Char('-');
    }
    while (result.endsWith(QLatin1Char('-')))
        result.chop(1);
    return result.isEmpty() ? QStringLiteral("pet") : result.left(40);
}

/// Moves what was staged to a name that nothing has. The rename fails where another import took the name
/// meanwhile.
Result<QString> settle(const QString& staged, const QString& folder, const QString& name,
                       const QString& ending)
{
    for (int number = 1; number < 1000; ++number) {
        const QString target = folder + QLatin1Char('/') + name +
                               (number == 1 ? QString() : QLatin1Char('-') + QString::number(number)) +
                               ending;
        if (!QFileInfo::exists(target) && QFile::rename(staged, target))
            return target;
    }
    return Failure{QStringLiteral("The pet cannot be put into %1.").arg(folder)};
}

/// The part of the paths before "images/", "frames/" or a manifest: packs are often zipped with their folder.
QString commonPrefix(const std::vector<PackFile>& files)
{
    for (const PackFile& file : files) {
        const QStringList parts = file.path.split(QLatin1Char('/'));
        for (qsizetype at = 0; at < parts.size() && at < 4; ++at) {
            const bool isFolder = at + 1 < parts.size();
            if ((isFolder &&
                 (parts.at(at) == QLatin1String("images") || parts.at(at) == QLatin1String("frames"))) ||
                (!isFolder && (parts.at(at) == manifestName || parts.at(at) == sheetManifestName)))
                return at == 0 ? QString() : parts.mid(0, at).join(QLatin1Char('/')) + QLatin1Char('/');
        }
    }
    return {};
}

bool isPicturePath(const QString& path)
{
    const QStringList parts = path.split(QLatin1Char('/'));
    const bool isInPlace = (parts.size() == 2 && parts.first() == QLatin1String("images")) ||
                           (parts.size() == 3 && parts.first() == QLatin1String("frames"));
    return isInPlace && pictureEndings().contains(endingOf(path));
}

struct Checked
{
    QString name;
    std::vector<PackContent> files;
};

Result<Checked> checkOwnForm(PackSource& source, const QString& prefix)
{
    Checked checked;
    bool hasPicture = false;
    for (const PackFile& file : source.files()) {
        if (!file.path.startsWith(prefix))
            continue;
        const QString path = file.path.mid(prefix.size());
        const bool isPicture = isPicturePath(path);
        // Anything else that lies in a pack stays where it is.
        if (!isPicture && path != manifestName)
            continue;
        const Result<QByteArray> content = source.read(file);
        if (!content)
            return content.failure();
        if (isPicture) {
            if (const Result<QSize> picture = checkPicture(*content, endingOf(path)); !picture)
                return Failure{QStringLiteral("“%1” %2.").arg(path.left(80), picture.error())};
            hasPicture = true;
        } else {
            checked.name = line(readObject(*content), "name");
        }
        checked.files.push_back({path, *content});
    }
    if (!hasPicture)
        return Failure{QStringLiteral("There is no picture in an “images” or “frames” folder.")};
    return checked;
}

Result<Checked> checkSheetForm(PackSource& source, const QString& prefix, const QJsonObject& manifest)
{
    const QString asked = manifest.value(QLatin1String("spritesheetPath")).toString();
    const QStringList candidates{asked, QStringLiteral("spritesheet.webp"),
                                 QStringLiteral("spritesheet.png")};
    for (const QString& candidate : candidates) {
        // The list holds clean paths only, so a path that leads elsewhere finds nothing.
        const auto& files = source.files();
        const auto file = std::find_if(files.begin(), files.end(),
                                       [&](const PackFile& each) { return each.path == prefix + candidate; });
        if (candidate.isEmpty() || file == files.end())
            continue;
        const Result<QByteArray> content = source.read(*file);
        if (!content)
            return content.failure();
        if (const Result<QSize> picture = checkPicture(*content, endingOf(candidate)); !picture)
            return Failure{QStringLiteral("“%1” %2.").arg(candidate.left(80), picture.error())};
        Result<std::vector<PackContent>> cells = cutSpriteSheet(*content);
        if (!cells)
            return cells.failure();
        Checked checked{line(manifest, "displayName"), std::move(cells).value()};
        if (checked.name.isEmpty())
            checked.name = line(manifest, "id");
        const QJsonObject own{{QStringLiteral("name"), checked.name},
                              {QStringLiteral("description"), line(manifest, "description")}};
        checked.files.push_back({manifestName, QJsonDocument(own).toJson()});
        return checked;
    }
    return Failure{QStringLiteral("The sheet that “pet.json” speaks of is not in the pack.")};
}

Result<Checked> check(PackSource& source)
{
    const QString prefix = commonPrefix(source.files());
    for (const PackFile& file : source.files()) {
        if (file.path != prefix + sheetManifestName)
            continue;
        const Result<QByteArray> content = source.read(file);
        if (!content)
            return content.failure();
        const QJsonDocument manifest = QJsonDocument::fromJson(*content);
        if (!manifest.isObject())
            return Failure{QStringLiteral("“pet.json” is not readable.")};
        return checkSheetForm(source, prefix, manifest.object());
    }
    return checkOwnForm(source, prefix);
}

Result<void> copyTree(const QString& from, const QString& to)
{
    QDirIterator files(from, QDir::Files, QDirIterator::Subdirectories);
    while (files.hasNext()) {
        const QString path = files.next();
        const QString target = to + QLatin1Char('/') + QDir(from).relativeFilePath(path);
        if (!QDir().mkpath(QFileInfo(target).absolutePath()) || !QFile::copy(path, target))
            return Failure{QStringLiteral("cannot write %1").arg(target)};
    }
    return {};
}

} // namespace

PackLibrary::PackLibrary(AppPaths paths, QString bundledPets)
    : m_paths(std::move(paths))
    , m_bundledPets(std::move(bundledPets))
{}

std::vector<PetPack> PackLibrary::packs() const
{
    std::vector<PetPack> all = packsIn(m_bundledPets, true);
    const std::vector<PetPack> imported = packsIn(m_paths.petPacksDirectory(), false);
    all.insert(all.end(), imported.begin(), imported.end());
    return all;
}

QString PackLibrary::resolve(const QString& key, const QString& bundledPets)
{
    return key.startsWith(bundledPrefix) ? bundledPets + QLatin1Char('/') + key.mid(bundledPrefix.size())
                                         : key;
}

Result<PetPack> PackLibrary::import(const QString& source) const
{
    const Result<std::shared_ptr<PackSource>> opened = PackSource::open(source);
    if (!opened)
        return opened.failure();
    const Result<Checked> checked = check(**opened);
    if (!checked)
        return checked.failure();

    const QString folder = m_paths.petPacksDirectory();
    // A hidden name, so that an import that dies half-way never shows up as a pack.
    QTemporaryDir staging(folder + QStringLiteral("/.incoming-XXXXXX"));
    if (!staging.isValid())
        return Failure{QStringLiteral("cannot write into %1: %2").arg(folder, staging.errorString())};
    const QString staged = staging.filePath(QStringLiteral("pack"));
    for (const PackContent& file : checked->files) {
        if (const Result<void> written = writeAtomically(staged + QLatin1Char('/') + file.path, file.content);
            !written)
            return written.failure();
    }
    const QString name = checked->name.isEmpty() ? QFileInfo(source).completeBaseName() : checked->name;
    const Result<QString> settled = settle(staged, folder, slug(name), QString());
    if (!settled)
        return settled.failure();
    NibboLog::log(QStringLiteral("pet packs: imported %1").arg(*settled));
    return describe(*settled, false);
}

Result<QString> PackLibrary::importImage(const QString& source) const
{
    const QString ending = endingOf(source);
    const Result<QByteArray> content = readWholeFile(source, 16LL * 1024 * 1024);
    if (!content)
        return content.failure();
    if (const Result<QSize> picture = checkPicture(*content, ending); !picture)
        return Failure{QStringLiteral("“%1” %2.").arg(QFileInfo(source).fileName(), picture.error())};
    const QString folder = m_paths.customPetsDirectory();
    QTemporaryDir staging(folder + QStringLiteral("/.incoming-XXXXXX"));
    const QString staged = staging.filePath(QStringLiteral("image"));
    if (const Result<void> written = writeAtomically(staged, *content); !written)
        return written.failure();
    return settle(staged, folder, slug(QFileInfo(source).completeBaseName()), QLatin1Char('.') + ending);
}

Result<void> PackLibrary::remove(const PetPack& pack) const
{
    const QFileInfo info(pack.folder);
    if (pack.isBundled || info.isSymLink() ||
        info.absolutePath() != QFileInfo(m_paths.petPacksDirectory()).absoluteFilePath())
        return Failure{QStringLiteral("Only imported packs can be deleted.")};
    // Out of sight first: a removal that stops half-way leaves no half pack to choose.
    const QString hidden = info.absolutePath() + QStringLiteral("/.removed-") + info.fileName();
    QDir(hidden).removeRecursively();
    if (!QFile::rename(pack.folder, hidden) || !QDir(hidden).removeRecursively())
        return Failure{QStringLiteral("%1 cannot be deleted.").arg(pack.folder)};
    return {};
}

Result<QString> PackLibrary::saveTemplate(const QString& intoFolder) const
{
    QTemporaryDir staging(intoFolder + QStringLiteral("/.nibbo-XXXXXX"));
    if (!staging.isValid())
        return Failure{QStringLiteral("cannot write into %1: %2").arg(intoFolder, staging.errorString())};
    const QString staged = staging.filePath(templateName);
    if (const Result<void> copied = copyTree(m_bundledPets + QLatin1Char('/') + templateName, staged);
        !copied)
        return copied.failure();
    return settle(staged, intoFolder, QStringLiteral("nibbo-pet-template"), QString());
}

} // namespace nibbo
