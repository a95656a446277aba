#pragma once

#include "pet/PetState.h"

#include <QByteArray>
#include <QImage>
#include <QString>
#include <QStringList>

#include <list>
#include <memory>
#include <optional>
#include <vector>

namespace nibbo {

struct Settings;

/// Whose pictures are shown, and in which colour.
struct PetLook
{
    /// A single picture for every state; wins over a pack.
    std::optional<QString> customImage;
    /// A folder with `images` and `frames`; what it lacks comes from the official pet.
    std::optional<QString> packFolder;
    QString themeColor;

    bool operator==(const PetLook&) const = default;

    static PetLook of(const Settings& settings);
};

/// The pictures of the pet in the size they are shown in. A folder of pictures holds
///   images/NAME.svg          one still picture per name,
///   frames/ANIMATION/NN.svg  the frames of an animation, in the order of their numbers,
/// as SVG, PNG, WebP, JPEG or GIF. A state without frames shows its still picture, and one without either
/// what the official pet shows; a file that cannot be drawn counts as missing and is logged once.
///
/// Each frame is drawn once, when it is first wanted. The animation that is shown and the one before it are
/// kept, and those before them as long as they are small. Main thread.
class PetPictures final
{
public:
    /// A picture may be wider than the pet's square by this factor; ears, tails and props reach out.
    static constexpr double widest = 1.2;

    explicit PetPictures(QString officialFolder);
    ~PetPictures();

    /// Forgets what was drawn when it differs.
    void setLook(const PetLook& look);
    /// The height of the pet's square in device-independent pixels, and the physical ones in each of those.
    void setSize(int side, double devicePixelRatio);

    int side() const { return m_side; }

    /// At least 1.
    int frameCount(PetState state);
    double framesPerSecond(PetState state);
    /// The picture in the size it is to be painted in; null when there is nothing at all to show.
    QImage frame(PetState state, int index);

private:
    struct Folder;
    struct Clip;

    Clip& clip(PetState state);
    std::unique_ptr<Clip> makeClip(PetState state);
    QImage draw(const Clip& clip, int index);
    QImage drawFile(const Folder& folder, const QString& path);
    std::unique_ptr<Clip> clipFromFolder(const Folder& folder, PetState state);
    QSize targetSize(QSizeF natural) const;
    void complain(const QString& path, const QString& why);

    QString m_officialPath;
    PetLook m_look;
    int m_side = 150;
    double m_ratio = 1;
    std::unique_ptr<Folder> m_official;
    std::unique_ptr<Folder> m_pack;
    /// The one in use comes first.
    std::list<std::unique_ptr<Clip>> m_clips;
    QStringList m_complaints;
};

} // namespace nibbo
