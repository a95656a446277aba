// What an interrupted write leaves, and what is made of it.
#include "FaultyFileSystem.h"
#include "ScratchHome.h"

#include "hooks/SafeWriter.h"

#include <array>

namespace nibbo::test {
namespace {

const QByteArray before = R"({"model": "opus", "long": "xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx"})";
const QByteArray after = R"({"model": "opus", "hooks": {"Stop": []}})";

class SafeWriterTest : public ::testing::Test
{
protected:
    SafeWriterTest() { ScratchHome::writeAt(file, before); }

    /// Writes the file and is killed on the way.
    void beKilled(const QByteArray& to)
    {
        for (int at = 0; at < 20; ++at) {
            ScratchHome::writeAt(file, before);
            FaultyFileSystem disk(FaultyFileSystem::Fault::killedHalfWay, at);
            SafeWriter writer(disk, folder);
            EXPECT_EQ(errorOf(writer.stage(file, before, to, 0600)), "");
            try {
                writer.commit();
            } catch (const Killed&) {
                if (ScratchHome::readAt(file) != before)
                    return;
            }
        }
        FAIL() << "the write was never torn";
    }
    QByteArray recovered()
    {
        SafeWriter writer(home.files, folder);
        EXPECT_EQ(errorOf(writer.recover()), "");
        EXPECT_FALSE(QFileInfo::exists(folder + QStringLiteral("/pending")));
        return ScratchHome::readAt(file).value_or("(missing)");
    }

    ScratchHome home;
    QString folder = home.path(QStringLiteral("journal"));
    QString file = home.path(QStringLiteral("settings.json"));
};

TEST_F(SafeWriterTest, aTornFileIsCompleted)
{
    for (const QByteArray& to : {after, after + QByteArray(400, ' '), before + before}) {
        beKilled(to);
        EXPECT_EQ(recovered(), to);
    }
}

TEST_F(SafeWriterTest, aFileThatIsNotTornIsLeftAlone)
{
    const std::array<QByteArray, 4> contents{before, after, R"({"somebody": "else"})", ""};
    for (const QByteArray& content : contents) {
        beKilled(after);
        ScratchHome::writeAt(file, content);
        EXPECT_EQ(recovered(), content);
    }
    beKilled(after);
    ASSERT_TRUE(QFile::remove(file));
    EXPECT_EQ(recovered(), "(missing)");
}

TEST_F(SafeWriterTest, whatAPowerCutLeftIsMended)
{
    beKilled(after);
    ScratchHome::writeAt(file, QByteArray(after.size(), '\0'));
    EXPECT_EQ(recovered(), after);
}

TEST_F(SafeWriterTest, aJournalThatIsNotUnderstoodChangesNothing)
{
    for (const QByteArray& journal :
         {QByteArray(""), QByteArray("{}\n"), QByteArray("[{}]\n"),
          QByteArray("[{\"path\":\"/x\",\"fromSize\":-1,\"toSize\":5}]\n"),
          QByteArray("[{\"fromSize\":9,\"toSize\":9}]\nabc"), QByteArray("\0\0\0\n", 4)}) {
        ScratchHome::writeAt(folder + QStringLiteral("/pending"), journal);
        EXPECT_EQ(recovered(), before) << journal.constData();
    }
}

TEST_F(SafeWriterTest, theJournalStaysUntilTheFileCanBeCompleted)
{
    beKilled(after);
    FaultyFileSystem full(FaultyFileSystem::Fault::failsFromThenOn, 0);
    SafeWriter writer(full, folder);
    EXPECT_FALSE(writer.recover());
    EXPECT_EQ(recovered(), after);
}

TEST_F(SafeWriterTest, oneFileThatCannotBeWrittenDoesNotKeepTheOthersFromIt)
{
    const QString other = home.path(QStringLiteral("other.json"));
    const QString fresh = home.path(QStringLiteral("new/fresh.json"));
    ScratchHome::writeAt(other, before);
    SafeWriter writer(home.files, folder);
    ASSERT_OK(writer.stage(file, before, after, 0600));
    ASSERT_OK(writer.stage(other, before, after, 0600));
    ASSERT_OK(writer.stage(fresh, std::nullopt, after, 0600));
    ScratchHome::writeAt(file, "somebody else was faster");
    const SafeWriter::Outcome outcome = writer.commit();
    EXPECT_EQ(outcome.overtaken, QStringList{file});
    EXPECT_TRUE(outcome.failed.isEmpty());
    EXPECT_EQ(*ScratchHome::readAt(file), "somebody else was faster");
    EXPECT_EQ(*ScratchHome::readAt(other), after);
    EXPECT_EQ(*ScratchHome::readAt(fresh), after);
    EXPECT_TRUE(writer.commit().overtaken.isEmpty()) << "a commit leaves nothing staged";
}

} // namespace
} // namespace nibbo::test
