#include "pet/packs/PackLibrary.h"

#include "base/AtomicFile.h"
#include "pet/packs/PackPicture.h"
#include "pet/packs/PackSource.h"

#include <QBuffer>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QImage>
#include <QPainter>
#include <QTemporaryDir>

#include <gtest/gtest.h>
#include <zip.h>

#include <functional>
#include <vector>

namespace nibbo {
namespace {

QString s(const char* text)
{
    return QString::fromUtf8(text);
}

QByteArray png(int width = 8, int height = 8)
{
    QImage image(width, height, QImage::Format_ARGB32);
    image.fill(Qt::red);
    QByteArray content;
    QBuffer buffer(&content);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return content;
}

QByteArray svg(const QByteArray& inside)
{
    return R"(<svg xmlns="http://www.w3.org/2000/svg" xmlns:xlink="http://www.w3.org/1999/xlink" viewBox="0 0 180 150">)" +
           inside + "</svg>";
}

struct Entry
{
    QString path;
    QByteArray content;
    /// Unix file type and mode; zero for an ordinary file.
    quint32 mode = 0;
};

class PackLibraryTest : public ::testing::Test
{
protected:
    PackLibraryTest()
        : m_library(AppPaths(m_home.path()), m_home.filePath(s("pets")))
    {
        EXPECT_TRUE(writeAtomically(m_home.filePath(s("pets/furli/images/idle.svg")), svg({})));
        EXPECT_TRUE(writeAtomically(m_home.filePath(s("pets/furli/pack.json")), R"({"name":"Furli"})"));
        EXPECT_TRUE(writeAtomically(m_home.filePath(s("pets/template/README.txt")), "read"));
    }

    QString zip(const std::vector<Entry>& entries, bool encrypted = false)
    {
        const QString path = m_home.filePath(s("pack%1.zip").arg(++m_count));
        int code = 0;
        zip_t* const archive = zip_open(QFile::encodeName(path).constData(), ZIP_CREATE, &code);
        for (const Entry& entry : entries) {
            zip_source_t* const source = zip_source_buffer(
                archive, entry.content.constData(), static_cast<zip_uint64_t>(entry.content.size()), 0);
            const zip_int64_t index = zip_file_add(archive, entry.path.toUtf8().constData(), source,
                                                   ZIP_FL_OVERWRITE | ZIP_FL_ENC_UTF_8);
            EXPECT_GE(index, 0);
            if (entry.mode != 0)
                zip_file_set_external_attributes(archive, static_cast<zip_uint64_t>(index), 0, ZIP_OPSYS_UNIX,
                                                 entry.mode << 16U);
            if (encrypted)
                zip_file_set_encryption(archive, static_cast<zip_uint64_t>(index), ZIP_EM_AES_256, "x");
        }
        EXPECT_EQ(zip_close(archive), 0);
        return path;
    }

    QStringList filesBelow(const QString& folder) const
    {
        QStringList files;
        QDirIterator all(folder, QDir::Files | QDir::Hidden | QDir::System, QDirIterator::Subdirectories);
        while (all.hasNext())
            files.append(all.next());
        files.sort();
        return files;
    }

    QTemporaryDir m_home;
    PackLibrary m_library;
    int m_count = 0;
};

TEST_F(PackLibraryTest, importsListsAndDeletes)
{
    const QString source = zip({{s("My Pet/images/idle.png"), png()},
                                {s("My Pet/frames/walk/01.svg"), svg("<path d='M0 0'/>")},
                                {s("My Pet/pack.json"), R"({"name":"Ö / Pet","author":"A\nB"})"},
                                {s("My Pet/notes.txt"), "not taken"},
                                {s("__MACOSX/My Pet/._x"), "litter"}});
    const Result<PetPack> pack = m_library.import(source);
    ASSERT_TRUE(pack) << pack.error().toStdString();
    EXPECT_EQ(pack->name, s("Ö / Pet"));
    EXPECT_EQ(pack->author, s("A B"));
    EXPECT_TRUE(pack->picture.endsWith(s("images/idle.png")));
    EXPECT_EQ(filesBelow(pack->folder).size(), 3);

    const Result<PetPack> again = m_library.import(source);
    ASSERT_TRUE(again);
    EXPECT_NE(again->folder, pack->folder) << "a second import clashes with nothing";

    const std::vector<PetPack> all = m_library.packs();
    ASSERT_EQ(all.size(), 3U);
    EXPECT_EQ(all.front().key, s("bundled:furli"));
    EXPECT_EQ(m_library.folderOf(all.front().key), m_home.filePath(s("pets/furli")));
    EXPECT_EQ(m_library.folderOf(pack->key), pack->folder);
    EXPECT_FALSE(m_library.remove(all.front()));
    PetPack elsewhere = *pack;
    elsewhere.folder = m_home.filePath(s("pets"));
    EXPECT_FALSE(m_library.remove(elsewhere));
    EXPECT_TRUE(QFile::exists(m_home.filePath(s("pets/furli/pack.json"))));
    EXPECT_TRUE(m_library.remove(*pack));
    EXPECT_EQ(m_library.packs().size(), 2U);

    const Result<QString> saved = m_library.saveTemplate(m_home.path());
    ASSERT_TRUE(saved);
    EXPECT_TRUE(QFile::exists(*saved + s("/README.txt")));
}

TEST_F(PackLibraryTest, readsAFolderAndOneImage)
{
    const QString folder = m_home.filePath(s("loose"));
    ASSERT_TRUE(writeAtomically(folder + s("/frames/idle/1.png"), png()));
    EXPECT_TRUE(m_library.import(folder));
    ASSERT_TRUE(QFile::link(s("/etc/passwd"), folder + s("/frames/idle/2.png")));
    EXPECT_FALSE(m_library.import(folder));

    ASSERT_TRUE(writeAtomically(m_home.filePath(s("cat.PNG")), png()));
    const Result<QString> image = m_library.importImage(m_home.filePath(s("cat.PNG")));
    ASSERT_TRUE(image) << image.error().toStdString();
    EXPECT_TRUE(image->endsWith(s("/CustomPets/cat.png")));
    ASSERT_TRUE(writeAtomically(m_home.filePath(s("cat.svg")), png()));
    EXPECT_FALSE(m_library.importImage(m_home.filePath(s("cat.svg"))));
    EXPECT_FALSE(m_library.importImage(m_home.filePath(s("nothing.png"))));
}

TEST_F(PackLibraryTest, cutsASpriteSheet)
{
    QImage sheet(8 * 192, 9 * 208, QImage::Format_ARGB32);
    sheet.fill(Qt::transparent);
    QPainter painter(&sheet);
    painter.fillRect(10, 10, 50, 50, Qt::blue);         // idle, first cell
    painter.fillRect(192 + 10, 10, 50, 50, Qt::green);  // idle, second cell
    painter.fillRect(10, 208 + 10, 50, 50, Qt::yellow); // running right
    painter.end();
    QByteArray content;
    QBuffer buffer(&content);
    buffer.open(QIODevice::WriteOnly);
    sheet.save(&buffer, "PNG");
    const Entry manifest{s("pet.json"),
                         R"({"id":"x","displayName":"Sheet","spritesheetPath":"sheet.png","more":[]})"};
    const Result<PetPack> pack = m_library.import(zip({manifest, {s("sheet.png"), content}}));
    ASSERT_TRUE(pack) << pack.error().toStdString();
    EXPECT_EQ(pack->name, s("Sheet"));
    const QImage second(pack->folder + s("/frames/idle/02.png"));
    EXPECT_EQ(second.size(), QSize(192, 208));
    EXPECT_EQ(second.pixelColor(20, 20), QColor(Qt::green));
    EXPECT_FALSE(QFile::exists(pack->folder + s("/frames/idle/03.png"))) << "empty cells are no frames";
    EXPECT_EQ(QImage(pack->folder + s("/frames/walk/01.png")).pixelColor(20, 20), QColor(Qt::yellow));
    EXPECT_TRUE(QFile::exists(pack->folder + s("/images/sleeping.png")));

    for (const Entry& wrong : {Entry{s("sheet.png"), png(100, 100)}, Entry{s("other.png"), content}})
        EXPECT_FALSE(m_library.import(zip({manifest, wrong})));
    EXPECT_FALSE(m_library.import(
        zip({{s("pet.json"), R"({"spritesheetPath":"../../secret.png"})"}, {s("images/a.png"), png()}})));
}

TEST_F(PackLibraryTest, hostilePacksLeaveNothingBehind)
{
    const Entry good{s("images/idle.png"), png()};
    struct Row
    {
        const char* name;
        std::function<QString()> make;
        const char* said;
    };
    const QByteArray nested = [] {
        QByteArray text = "<g id='a0'><path d='M0 0'/></g>";
        for (int level = 1; level < 20; ++level) {
            const QByteArray below = "<use xlink:href='#a" + QByteArray::number(level - 1) + "'/>";
            text += "<g id='a" + QByteArray::number(level) + "'>" + below.repeated(10) + "</g>";
        }
        return text;
    }();
    const std::vector<Row> rows{
        {"climbs out",
         [&] {
             return zip({good, {s("../evil.png"), png()}});
         },
         "leads out"},
        {"climbs out within",
         [&] {
             return zip({good, {s("images/../../evil.png"), png()}});
         },
         "leads out"},
        {"absolute",
         [&] {
             return zip({good, {s("/tmp/nibbo-evil.png"), png()}});
         },
         "leads out"},
        {"backslashes",
         [&] {
             return zip({good, {s("images\\..\\..\\evil.png"), png()}});
         },
         "leads out"},
        {"drive",
         [&] {
             return zip({good, {s("C:/evil.png"), png()}});
         },
         "leads out"},
        {"control characters",
         [&] {
             return zip({good, {s("images/a\nb.png"), png()}});
         },
         "leads out"},
        {"endless name",
         [&] {
             return zip({good, {QString(400, QLatin1Char('a')) + s(".png"), png()}});
         },
         "leads out"},
        {"link",
         [&] {
             return zip({good, {s("images/link.png"), "/etc/passwd", 0120777}});
         },
         "is a link"},
        {"device",
         [&] {
             return zip({good, {s("images/dev.png"), "", 0020666}});
         },
         "is a link or a device"},
        {"encrypted", [&] { return zip({good}, true); }, "encrypted"},
        {"bomb",
         [&] {
             return zip({good, {s("images/b.png"), QByteArray(17 * 1024 * 1024, '\0')}});
         },
         "larger"},
        {"too many files",
         [&] {
             std::vector<Entry> entries{good};
             for (int number = 0; number < 2100; ++number)
                 entries.push_back({s("images/%1.png").arg(number), "x"});
             return zip(entries);
         },
         "more than 2000"},
        {"no picture",
         [&] {
             return zip({{s("images/idle.png"), "MZ this is a program"}});
         },
         "is not a picture"},
        {"huge picture",
         [&] {
             return zip({{s("images/idle.png"), png(4097, 1)}});
         },
         "larger than 4096"},
        {"half a picture",
         [&] {
             return zip({{s("images/idle.png"), png().left(20)}});
         },
         "picture"},
        {"another format",
         [&] {
             return zip({{s("images/idle.png"), "/* XPM */\nstatic char *x[]={\"1 1 1 1\"};"}});
         },
         "is not a picture"},
        {"entities",
         [&] {
             return zip({{s("images/a.svg"), "<!DOCTYPE svg [<!ENTITY a 'b'>]>" + svg("&a;")}});
         },
         "document type"},
        {"outside",
         [&] {
             return zip({{s("images/a.svg"), svg("<image xlink:href='file:///etc/passwd'/>")}});
         },
         "another file"},
        {"repetition",
         [&] {
             return zip({{s("images/a.svg"), svg(nested)}});
         },
         "repeats shapes"},
        {"deep",
         [&] {
             return zip({{s("images/a.svg"), svg(QByteArray("<g>").repeated(200))}});
         },
         "too many shapes"},
        {"not a drawing",
         [&] {
             return zip({{s("images/a.svg"), "<html/>"}});
         },
         "not an SVG"},
        {"cut off",
         [&] {
             return zip({{s("images/a.svg"), svg({}).chopped(3)}});
         },
         "not an SVG"},
        {"empty",
         [&] {
             return zip({{s("readme.txt"), "hello"}});
         },
         "no picture"},
        {"not a ZIP",
         [&] {
             const QString path = m_home.filePath(s("fake.zip"));
             EXPECT_TRUE(writeAtomically(path, "PK\x03\x04 but no more"));
             return path;
         },
         "damaged"},
        {"not there", [&] { return m_home.filePath(s("nothing")); }, "no such file"},
        {"damaged inside",
         [&] {
             const QString path =
                 zip({{s("images/idle.svg"), svg(QByteArray("<path d='M0 0'/>").repeated(500))}});
             QByteArray content = *readWholeFile(path);
             for (qsizetype at = 60; at < 90; ++at)
                 content[at] = static_cast<char>(~content[at]);
             EXPECT_TRUE(writeAtomically(path, content));
             return path;
         },
         ""},
    };
    for (const Row& row : rows) {
        const QString source = row.make();
        const QStringList before = filesBelow(m_home.path());
        const Result<PetPack> pack = m_library.import(source);
        EXPECT_FALSE(pack) << row.name;
        const QString said = pack ? QString() : pack.error();
        EXPECT_TRUE(said.contains(QLatin1String(row.said))) << row.name << ": " << said.toStdString();
        EXPECT_EQ(filesBelow(m_home.path()), before) << row.name;
    }
}

} // namespace
} // namespace nibbo
