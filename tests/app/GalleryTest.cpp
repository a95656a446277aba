#include "app/gallery/Gallery.h"

#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace nibbo {
namespace {

const QString petPictures = QStringLiteral(NIBBO_SOURCE_DIR "/resources/pets/nibbo");

TEST(Gallery, writesASheetOfEverything)
{
    QTemporaryDir folder;
    const QString target = folder.filePath(QStringLiteral("deeper/gallery"));
    const Result<QStringList> written = writeGallery(target, petPictures);
    ASSERT_TRUE(written) << qUtf8Printable(written.error());
    EXPECT_EQ(written->size(), 10);
    for (const QString& file : *written) {
        const QImage sheet(file);
        ASSERT_FALSE(sheet.isNull()) << qUtf8Printable(file);
        // A sheet on which nothing was drawn has the colour of its corner everywhere.
        const QImage blank = [&sheet] {
            QImage plain(sheet.size(), sheet.format());
            plain.fill(sheet.pixelColor(0, 0));
            return plain;
        }();
        EXPECT_NE(sheet, blank) << qUtf8Printable(file);
        EXPECT_GT(sheet.width(), 400);
        EXPECT_EQ(QFileInfo(file).path(), target);
    }
}

TEST(Gallery, saysWhichFolderCannotBeMade)
{
    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("file"));
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.close();
    const Result<QStringList> written = writeGallery(path + QStringLiteral("/gallery"), petPictures);
    ASSERT_FALSE(written);
    EXPECT_TRUE(written.error().contains(path)) << qUtf8Printable(written.error());
}

} // namespace
} // namespace nibbo
