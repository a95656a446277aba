// What the pet is drawn from, and how a frame is put on the screen.
#include "pet/view/pictures/PetPictures.h"
#include "app/ShareFolder.h"
#include "base/Random.h"
#include "pet/PetLayout.h"
#include "pet/PetViewModel.h"
#include "pet/view/PetView.h"
#include "settings/Settings.h"
#include "support/ManualTime.h"
#include "support/Wait.h"

#include <QDir>
#include <QFile>
#include <QImage>
#include <QPainter>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace nibbo {
namespace {

using test::ManualTime;

/// A folder of pictures, each of one colour.
struct Folder
{
    QTemporaryDir directory;

    QString path() const { return directory.path(); }
    QString write(const QString& name, const QByteArray& content) const
    {
        const QString path = directory.filePath(name);
        EXPECT_TRUE(QDir().mkpath(QFileInfo(path).path()));
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
        return path;
    }
    void svg(const QString& name, const QString& colour, int width = 150, int height = 150) const
    {
        write(name, QStringLiteral("<svg xmlns='http://www.w3.org/2000/svg' viewBox='0 0 %1 %2'>"
                                   "<rect width='%1' height='%2' fill='%3'/></svg>")
                        .arg(width)
                        .arg(height)
                        .arg(colour)
                        .toUtf8());
    }
    QString png(const QString& name, const QColor& colour, QSize size) const
    {
        const QString path = directory.filePath(name);
        EXPECT_TRUE(QDir().mkpath(QFileInfo(path).path()));
        QImage image(size, QImage::Format_ARGB32);
        image.fill(colour);
        EXPECT_TRUE(image.save(path));
        return path;
    }
};

QColor middle(const QImage& image)
{
    return image.pixelColor(image.width() / 2, image.height() / 2);
}

struct Official : Folder
{
    Official()
    {
        svg(QStringLiteral("images/idle.svg"), QStringLiteral("#ff0000"));
        svg(QStringLiteral("images/thinking.svg"), QStringLiteral("#00ff00"));
        for (int i = 1; i <= 10; ++i)
            svg(QStringLiteral("frames/idle/%1.svg").arg(i),
                QStringLiteral("#0000%1").arg(i * 16, 2, 16, QLatin1Char('0')));
    }
};

TEST(PetPictures, fallsBackFromFramesToStillsToTheOfficialPet)
{
    const Official official;
    const Folder pack;
    pack.svg(QStringLiteral("frames/reading/01.svg"), QStringLiteral("#101010"));
    pack.svg(QStringLiteral("frames/reading/02.svg"), QStringLiteral("#202020"));
    pack.png(QStringLiteral("images/coding.png"), QColor(0x30, 0x30, 0x30), {64, 64});
    pack.write(QStringLiteral("images/sleeping.svg"), "<svg this is not");
    pack.write(QStringLiteral("frames/coffee/01.png"), "no picture");
    pack.svg(QStringLiteral("images/coffee.svg"), QStringLiteral("#404040"));
    struct Row
    {
        PetState state;
        int frames;
        QColor colour;
    };
    const Row rows[] = {
        {PetState::reading, 2, QColor(0x10, 0x10, 0x10)},
        {PetState::coding, 1, QColor(0x30, 0x30, 0x30)},
        {PetState::planning, 1, QColor(0x30, 0x30, 0x30)},
        {PetState::coffee, 1, QColor(0x40, 0x40, 0x40)},
        {PetState::thinking, 1, QColor(0, 0xff, 0)},
        {PetState::idle, 10, QColor(0, 0, 0x10)},
        // Neither has anything for it, or nothing that can be drawn.
        {PetState::sleeping, 10, QColor(0, 0, 0x10)},
        {PetState::warning, 10, QColor(0, 0, 0x10)},
    };
    PetPictures pictures(official.path());
    pictures.setLook({{}, pack.path(), QStringLiteral("pink")});
    for (const Row& row : rows) {
        SCOPED_TRACE(qPrintable(rawValue(row.state)));
        EXPECT_EQ(pictures.frameCount(row.state), row.frames);
        EXPECT_EQ(middle(pictures.frame(row.state, 0)), row.colour);
    }
    EXPECT_EQ(middle(pictures.frame(PetState::idle, 1)).blue(), 0x20) << "2 comes before 10";
    EXPECT_EQ(middle(pictures.frame(PetState::idle, 9)).blue(), 0xa0);

    PetPictures nothing(QStringLiteral("/nonexistent"));
    EXPECT_TRUE(nothing.frame(PetState::idle, 0).isNull());
    EXPECT_EQ(nothing.frameCount(PetState::idle), 1);
}

TEST(PetPictures, aBrokenFrameShowsTheFirstOne)
{
    const Folder official;
    official.svg(QStringLiteral("frames/idle/01.svg"), QStringLiteral("#111111"));
    official.write(QStringLiteral("frames/idle/02.svg"), "broken");
    PetPictures pictures(official.path());
    EXPECT_EQ(pictures.frameCount(PetState::idle), 2);
    EXPECT_EQ(middle(pictures.frame(PetState::idle, 1)), QColor(0x11, 0x11, 0x11));
}

TEST(PetPictures, oneOwnPictureServesEveryState)
{
    const Official official;
    const Folder own;
    PetPictures pictures(official.path());
    PetLook look;
    look.customImage = own.png(QStringLiteral("me.png"), QColor(1, 2, 3), {400, 200});
    look.packFolder = official.path();
    pictures.setLook(look);
    EXPECT_EQ(middle(pictures.frame(PetState::idle, 5)), QColor(1, 2, 3));
    EXPECT_EQ(middle(pictures.frame(PetState::sleeping, 0)), QColor(1, 2, 3));
    EXPECT_EQ(pictures.frame(PetState::idle, 0).size(), QSize(180, 90)) << "wide, it keeps its proportions";

    look.customImage = own.write(QStringLiteral("none.png"), "gone");
    look.packFolder.reset();
    pictures.setLook(look);
    EXPECT_EQ(pictures.frameCount(PetState::idle), 10) << "an unreadable one gives way to the official pet";
}

TEST(PetPictures, tintsTheAccentAndNothingElse)
{
    const Folder official;
    official.write(
        QStringLiteral("pack.json"),
        R"({"accent": ["#AA0000", "#00bb00"], "tints": {"blue": ["#00bb00", "#0000cc"], "short": ["#1"]}})");
    official.svg(QStringLiteral("images/idle.svg"), QStringLiteral("#aa0000"));
    official.svg(QStringLiteral("images/thinking.svg"), QStringLiteral("#00BB00"));
    official.svg(QStringLiteral("images/coding.svg"), QStringLiteral("#123456"));
    struct Row
    {
        const char* theme;
        QColor idle;
        QColor thinking;
    };
    const Row rows[] = {
        // The first colour becomes the second one, which must not be replaced again.
        {"blue", QColor(0, 0xbb, 0), QColor(0, 0, 0xcc)},
        {"pink", QColor(0xaa, 0, 0), QColor(0, 0xbb, 0)},
        {"short", QColor(0xaa, 0, 0), QColor(0, 0xbb, 0)},
    };
    PetPictures pictures(official.path());
    for (const Row& row : rows) {
        SCOPED_TRACE(row.theme);
        pictures.setLook({{}, {}, QString::fromLatin1(row.theme)});
        EXPECT_EQ(middle(pictures.frame(PetState::idle, 0)), row.idle);
        EXPECT_EQ(middle(pictures.frame(PetState::thinking, 0)), row.thinking);
        EXPECT_EQ(middle(pictures.frame(PetState::coding, 0)), QColor(0x12, 0x34, 0x56));
    }
}

TEST(PetPictures, drawsEachFrameOnceForEachSizeAndScale)
{
    const Official official;
    PetPictures pictures(official.path());
    const auto key = [&pictures](PetState state) { return pictures.frame(state, 0).cacheKey(); };
    const qint64 first = key(PetState::idle);
    EXPECT_EQ(key(PetState::idle), first);
    const qint64 thinking = key(PetState::thinking);
    EXPECT_EQ(key(PetState::idle), first) << "the one before is kept";
    EXPECT_EQ(key(PetState::thinking), thinking);
    pictures.setSize(150, 1);
    EXPECT_EQ(key(PetState::idle), first);

    pictures.setSize(75, 2);
    const QImage sharp = pictures.frame(PetState::idle, 0);
    EXPECT_NE(sharp.cacheKey(), first);
    EXPECT_EQ(sharp.size(), QSize(150, 150));
    EXPECT_EQ(sharp.deviceIndependentSize(), QSizeF(75, 75));
}

/// What is shipped is whole: every state moves, in every colour.
TEST(PetPictures, theOfficialPetHasEveryAnimation)
{
    PetPictures pictures(shareFolder() + QStringLiteral("/pets/nibbo"));
    for (const PetState state : allPetStates()) {
        EXPECT_GE(pictures.frameCount(state), 6) << qPrintable(rawValue(state));
        EXPECT_FALSE(pictures.frame(state, 0).isNull()) << qPrintable(rawValue(state));
    }
    const QImage pink = pictures.frame(PetState::idle, 0);
    pictures.setLook({{}, {}, QStringLiteral("blue")});
    EXPECT_NE(pictures.frame(PetState::idle, 0), pink);
}

struct Stage
{
    Official official;
    ManualTime time;
    test::ScriptedRandom chance;
    Settings settings;
    PetViewModel model{time, time, chance, [this]() -> const Settings& { return settings; }};
    PetPictures pictures{official.path()};
    PetView view{model, pictures, time};

    Stage()
    {
        view.setAttribute(Qt::WA_TranslucentBackground);
        view.resize(QRect(0, 0, 150, 150).marginsAdded(spriteMargins(150)).size());
        view.setSide(150);
    }

    QImage shot()
    {
        QImage image(view.size(), QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::transparent);
        view.render(&image, {}, {}, QWidget::DrawChildren);
        return image;
    }
    QColor belly() { return shot().pixelColor(45 + 75, 45 + 75); }
};

TEST(PetView, fadesWithoutBecomingTransparent)
{
    Stage stage;
    stage.model.setState(PetState::thinking);
    ASSERT_EQ(stage.belly().blue(), 0x10) << "it begins with the old picture";
    stage.time.advance(Seconds(0.11));
    stage.model.setFacing(-1);
    const QColor half = stage.belly();
    EXPECT_GE(half.alpha(), 250);
    EXPECT_NEAR(half.green(), 128, 12) << half.name().toStdString();
    stage.time.advance(Seconds(0.3));
    stage.model.setFacing(1);
    EXPECT_EQ(stage.belly(), QColor(0, 0xff, 0));
}

TEST(PetView, mirrorsWhereThePetLooks)
{
    Stage stage;
    QImage half(150, 150, QImage::Format_ARGB32);
    half.fill(Qt::red);
    QPainter(&half).fillRect(75, 0, 75, 150, Qt::blue);
    const QString path = stage.official.directory.filePath(QStringLiteral("half.png"));
    ASSERT_TRUE(half.save(path));
    stage.pictures.setLook({path, {}, {}});
    stage.view.setReducedMotion(true);
    stage.view.picturesChanged();
    EXPECT_EQ(stage.shot().pixelColor(45 + 30, 100), QColor(Qt::red));
    stage.model.setFacing(-1);
    EXPECT_EQ(stage.shot().pixelColor(45 + 30, 100), QColor(Qt::blue));
    stage.model.setState(PetState::waitingApproval);
    EXPECT_EQ(stage.shot().pixelColor(45 + 30, 100), QColor(Qt::red)) << "a question mark stays readable";
}

TEST(PetView, aBumpPressesItAgainstThatEdge)
{
    Stage stage;
    stage.model.bump(BumpDirection::left);
    stage.time.advance(Seconds(0.1));
    stage.model.setFacing(-1);
    const QImage flat = stage.shot();
    EXPECT_EQ(flat.pixelColor(45 + 145, 120).alpha(), 0) << "away from the edge";
    EXPECT_EQ(flat.pixelColor(45 + 5, 120).alpha(), 255) << "at the edge";
}

/// A pet that has nothing to do must not wake the processor.
TEST(PetView, ticksOnlyWhenSomethingMovesAndCanBeSeen)
{
    Stage stage;
    struct Filter final : QObject
    {
        int ticks = 0;
        bool eventFilter(QObject*, QEvent* event) override
        {
            ticks += event->type() == QEvent::Timer;
            return false;
        }
    } filter;
    stage.view.installEventFilter(&filter);
    const auto ticks = [&filter] {
        filter.ticks = 0;
        return test::waitFor([&filter] { return filter.ticks > 0; }, 700);
    };
    EXPECT_FALSE(ticks()) << "hidden";
    stage.view.show();
    EXPECT_TRUE(test::waitFor([&filter] { return filter.ticks > 1; }));
    stage.view.setReducedMotion(true);
    EXPECT_FALSE(ticks()) << "reduced motion";
    stage.view.setReducedMotion(false);
    EXPECT_TRUE(test::waitFor([&filter] { return filter.ticks > 1; }));
    stage.view.setAnimationSpeed(0);
    EXPECT_FALSE(ticks()) << "no speed";
    stage.view.setAnimationSpeed(1);
    stage.view.hide();
    EXPECT_FALSE(ticks()) << "hidden again";
}

} // namespace
} // namespace nibbo
