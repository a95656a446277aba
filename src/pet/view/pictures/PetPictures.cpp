#include "pet/view/pictures/PetPictures.h"
#include "pet/packs/PackLibrary.h"

#include "base/NibboLog.h"
#include "settings/Settings.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QImageReader>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QPainter>
#include <QSvgRenderer>

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace nibbo {
namespace {

/// The animation that is shown and the one that fades away are always kept; others only within this many
/// bytes, which is room for the few that an idle pet changes between.
constexpr std::size_t alwaysKept = 2;
constexpr qsizetype keptBytes = 6 * 1024 * 1024;
constexpr int mostFrames = 64;
constexpr qint64 largestFile = 16 * 1024 * 1024;
constexpr int largestSide = 16384;

QStringList pictureFilters()
{
    return {QStringLiteral("*.svg"), QStringLiteral("*.png"),  QStringLiteral("*.webp"),
            QStringLiteral("*.jpg"), QStringLiteral("*.jpeg"), QStringLiteral("*.gif")};
}

bool isSvg(const QString& path)
{
    return path.endsWith(QLatin1String(".svg"), Qt::CaseInsensitive);
}

/// "2" comes before "10"; names without a number come last.
QStringList inFrameOrder(const QDir& folder)
{
    QStringList names = folder.entryList(pictureFilters(), QDir::Files | QDir::Readable, QDir::Name);
    const auto number = [](const QString& name) {
        bool ok = false;
        const int value = QFileInfo(name).completeBaseName().toInt(&ok);
        return ok ? value : std::numeric_limits<int>::max();
    };
    std::stable_sort(names.begin(), names.end(),
                     [&number](const QString& a, const QString& b) { return number(a) < number(b); });
    // The same frame in two formats is one frame.
    names.erase(std::unique(names.begin(), names.end(),
                            [](const QString& a, const QString& b) {
                                return QFileInfo(a).completeBaseName() == QFileInfo(b).completeBaseName();
                            }),
                names.end());
    if (names.size() > mostFrames)
        names.resize(mostFrames);
    return names;
}

QByteArray readLimited(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly) || file.size() > largestFile)
        return {};
    return file.read(largestFile);
}

QList<QByteArray> colours(const QJsonValue& list)
{
    QList<QByteArray> result;
    for (const QJsonValue& value : list.toArray())
        result.append(value.toString().toLatin1());
    return result;
}

} // namespace

/// A folder of pictures, with the colours of its tint.
struct PetPictures::Folder
{
    QDir root;
    /// What a tint replaces in the text of an SVG, and by what; equally long.
    QList<QByteArray> accent;
    QList<QByteArray> tint;

    Folder(const QString& path, const QString& themeColor)
        : root(path)
    {
        const QJsonObject pack =
            QJsonDocument::fromJson(readLimited(root.filePath(QStringLiteral("pack.json")))).object();
        accent = colours(pack.value(QLatin1String("accent")));
        tint = colours(pack.value(QLatin1String("tints")).toObject().value(themeColor));
        if (accent.size() != tint.size() || accent.contains(QByteArray()))
            accent.clear();
    }

    /// Colours may take each other's place, so a second pass must not touch what the first one wrote.
    QByteArray tinted(const QByteArray& svg) const
    {
        if (accent.isEmpty() || accent == tint)
            return svg;
        QByteArray result;
        result.reserve(svg.size());
        for (qsizetype at = 0; at < svg.size();) {
            const auto hit = std::find_if(accent.begin(), accent.end(), [&svg, at](const QByteArray& colour) {
                return svg[at] == '#' &&
                       qstrnicmp(svg.constData() + at, colour.constData(), std::size_t(colour.size())) == 0;
            });
            if (hit == accent.end()) {
                result.append(svg[at++]);
            } else {
                result.append(tint[hit - accent.begin()]);
                at += hit->size();
            }
        }
        return result;
    }
};

/// The pictures of one animation: files that are drawn when they are wanted, or all of them drawn at once.
struct PetPictures::Clip
{
    QString key;
    double framesPerSecond = 1;
    const Folder* folder = nullptr;
    QStringList files;
    std::vector<QImage> drawn;
};

PetLook PetLook::of(const Settings& settings)
{
    return {settings.effectiveCustomPetPath(), settings.effectivePackPath(), settings.themeColor};
}

PetPictures::PetPictures(QString officialFolder)
    : m_officialPath(std::move(officialFolder))
{
    setLook({});
}

PetPictures::~PetPictures() = default;

void PetPictures::setLook(const PetLook& look)
{
    if (look == m_look && m_official)
        return;
    m_look = look;
    m_clips.clear();
    m_complaints.clear();
    m_official = std::make_unique<Folder>(m_officialPath, look.themeColor);
    m_pack = look.packFolder ? std::make_unique<Folder>(
                                   PackLibrary::resolve(*look.packFolder, QFileInfo(m_officialPath).path()),
                                   look.themeColor)
                             : nullptr;
}

void PetPictures::setSize(int side, double devicePixelRatio)
{
    if (side == m_side && devicePixelRatio == m_ratio)
        return;
    m_side = side;
    m_ratio = devicePixelRatio;
    m_clips.clear();
}

int PetPictures::frameCount(PetState state)
{
    return std::max(1, int(clip(state).drawn.size()));
}

double PetPictures::framesPerSecond(PetState state)
{
    return clip(state).framesPerSecond;
}

QImage PetPictures::frame(PetState state, int index)
{
    Clip& shown = clip(state);
    if (shown.drawn.empty())
        return {};
    const auto at = std::size_t(index) % shown.drawn.size();
    if (shown.drawn[at].isNull())
        shown.drawn[at] = draw(shown, int(at));
    return shown.drawn[at];
}

PetPictures::Clip& PetPictures::clip(PetState state)
{
    const QString key = frameAnimationName(state) + QLatin1Char('/') + imageName(state);
    const auto found =
        std::find_if(m_clips.begin(), m_clips.end(), [&key](const auto& kept) { return kept->key == key; });
    if (found != m_clips.end()) {
        m_clips.splice(m_clips.begin(), m_clips, found);
        return *m_clips.front();
    }
    std::unique_ptr<Clip> made = makeClip(state);
    made->key = key;
    m_clips.push_front(std::move(made));
    qsizetype bytes = 0;
    std::size_t kept = 0;
    m_clips.remove_if([&](const std::unique_ptr<Clip>& old) {
        for (const QImage& image : old->drawn)
            bytes += image.sizeInBytes();
        return ++kept > alwaysKept && bytes > keptBytes;
    });
    return *m_clips.front();
}

std::unique_ptr<PetPictures::Clip> PetPictures::makeClip(PetState state)
{
    auto result = std::make_unique<Clip>();
    if (m_look.customImage) {
        const QString& path = *m_look.customImage;
        if (isSvg(path)) {
            const QImage image = drawFile(*m_official, path);
            if (!image.isNull())
                result->drawn.push_back(image);
        } else {
            QImageReader reader(path);
            reader.setDecideFormatFromContent(true);
            reader.setAutoTransform(true);
            double milliseconds = 0;
            while (result->drawn.size() < mostFrames && reader.canRead()) {
                const QSize natural = reader.size();
                if (natural.width() > largestSide || natural.height() > largestSide)
                    break;
                const QImage image = reader.read();
                if (image.isNull())
                    break;
                milliseconds += std::max(20, reader.nextImageDelay());
                QImage scaled =
                    image.scaled(targetSize(image.size()), Qt::IgnoreAspectRatio, Qt::SmoothTransformation)
                        .convertToFormat(QImage::Format_ARGB32_Premultiplied);
                scaled.setDevicePixelRatio(m_ratio);
                result->drawn.push_back(scaled);
            }
            if (result->drawn.empty())
                complain(path, reader.errorString());
            else if (result->drawn.size() > 1)
                result->framesPerSecond = 1000 * double(result->drawn.size()) / milliseconds;
        }
        if (!result->drawn.empty())
            return result;
    }
    if (m_pack) {
        if (auto fromPack = clipFromFolder(*m_pack, state))
            return fromPack;
    }
    if (auto official = clipFromFolder(*m_official, state))
        return official;
    if (auto idle = clipFromFolder(*m_official, PetState::idle))
        return idle;
    return result;
}

std::unique_ptr<PetPictures::Clip> PetPictures::clipFromFolder(const Folder& folder, PetState state)
{
    auto result = std::make_unique<Clip>();
    result->folder = &folder;
    result->framesPerSecond = frameFPS(state);
    const QDir frames(folder.root.filePath(QStringLiteral("frames/") + frameAnimationName(state)));
    for (const QString& name : inFrameOrder(frames))
        result->files.append(frames.filePath(name));
    const auto firstIsGood = [&] {
        // The others are drawn when their turn comes; a broken one among them shows this first one.
        result->drawn.resize(std::size_t(result->files.size()));
        result->drawn.front() = drawFile(folder, result->files.front());
        return !result->drawn.front().isNull();
    };
    if (!result->files.isEmpty() && firstIsGood())
        return result;

    const QDir images(folder.root.filePath(QStringLiteral("images")));
    for (const QString& name : images.entryList(pictureFilters(), QDir::Files | QDir::Readable, QDir::Name)) {
        if (QFileInfo(name).completeBaseName() != imageName(state))
            continue;
        result->files = {images.filePath(name)};
        if (firstIsGood())
            return result;
    }
    return nullptr;
}

QImage PetPictures::draw(const Clip& clip, int index)
{
    const QImage image = drawFile(*clip.folder, clip.files[index]);
    return image.isNull() ? clip.drawn.front() : image;
}

QImage PetPictures::drawFile(const Folder& folder, const QString& path)
{
    if (!isSvg(path)) {
        QImageReader reader(path);
        reader.setDecideFormatFromContent(true);
        reader.setAutoTransform(true);
        const QSize natural = reader.size();
        if (natural.width() > largestSide || natural.height() > largestSide) {
            complain(path, QStringLiteral("the picture is too large"));
            return {};
        }
        const QImage image = reader.read();
        if (image.isNull()) {
            complain(path, reader.errorString());
            return {};
        }
        QImage scaled =
            image.scaled(targetSize(image.size()), Qt::IgnoreAspectRatio, Qt::SmoothTransformation)
                .convertToFormat(QImage::Format_ARGB32_Premultiplied);
        scaled.setDevicePixelRatio(m_ratio);
        return scaled;
    }
    QSvgRenderer renderer;
    if (!renderer.load(folder.tinted(readLimited(path))) || renderer.viewBoxF().isEmpty()) {
        complain(path, QStringLiteral("it cannot be drawn"));
        return {};
    }
    QImage image(targetSize(renderer.viewBoxF().size()), QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
    renderer.render(&painter, QRectF(image.rect()));
    painter.end();
    image.setDevicePixelRatio(m_ratio);
    return image;
}

QSize PetPictures::targetSize(QSizeF natural) const
{
    if (natural.isEmpty())
        return {1, 1};
    const QSizeF box(m_side * widest * m_ratio, m_side * m_ratio);
    const QSizeF fitted = natural.scaled(box, Qt::KeepAspectRatio);
    return {std::max(1, int(std::lround(fitted.width()))), std::max(1, int(std::lround(fitted.height())))};
}

void PetPictures::complain(const QString& path, const QString& why)
{
    if (m_complaints.contains(path))
        return;
    m_complaints.append(path);
    NibboLog::log(QStringLiteral("pet pictures: ") + path + QStringLiteral(": ") + why);
}

} // namespace nibbo
