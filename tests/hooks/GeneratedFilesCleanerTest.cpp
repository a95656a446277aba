#include "hooks/GeneratedFiles.h"

#include "hooks/GeneratedFilesSupport.h"

#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace nibbo {
namespace {

using test::builtCleaner;
using test::hookTestsFolder;
using test::Outcome;
using test::read;
using test::run;
using test::write;

struct SharedFile
{
    const char* name;
    QByteArray before;
    std::optional<QByteArray> after;                       // nothing: the bytes stay
    std::optional<QByteArray> afterOnLinux = std::nullopt; // where the rules differ
};

const QByteArray ours =
    R"({"type":"command","command":"'/h/.nibbo/bin/nibbo-bridge' --source claude --event X","timeout":5})";
const QByteArray theirs = R"({"type":"command","command":"other"})";

const std::vector<SharedFile>& sharedFileShapes()
{
    static const std::vector<SharedFile> shapes = {
        {"empty", "", std::nullopt},
        {"no hooks", "{\"a\": 1}", std::nullopt},
        {"others only", "{\"hooks\":{\"Stop\":[{\"hooks\":[" + theirs + "]}]}}", std::nullopt},
        {"ours only", "{\"hooks\":{\"Stop\":[{\"matcher\":\"*\",\"hooks\":[" + ours + "]}]}}", "{}\n"},
        {"cursor",
         "{\"version\":2,\"hooks\":{\"stop\":[{\"command\":\"nibbo-bridge\"},{\"command\":\"b\"}]}}",
         "{\n  \"version\": 2,\n  \"hooks\": {\n    \"stop\": [\n      {\n        \"command\": \"b\"\n      "
         "}\n    ]\n  }\n}\n"},
        {"after others",
         "{\"x\":[],\"hooks\":{\"Stop\":[{\"hooks\":[" + theirs + "]},{\"hooks\":[" + ours +
             "]}],\"Empty\":[],\"Odd\":5}}",
         "{\n  \"x\": [],\n  \"hooks\": {\n    \"Stop\": [\n      {\n        \"hooks\": [\n          {\n     "
         "       \"type\": \"command\",\n"
         "            \"command\": \"other\"\n          }\n        ]\n      }\n    ],\n    \"Odd\": 5\n  "
         "}\n}\n"},
        {"among others in a group", "{\"hooks\":{\"Stop\":[{\"hooks\":[" + theirs + "," + ours + "]}]}}",
         std::nullopt},
        {"among others, and a group elsewhere",
         "{\"hooks\":{\"Stop\":[{\"hooks\":[{\"command\":\"b\"}," + ours + "]}],\"End\":[{\"hooks\":[" +
             ours + "]}]}}",
         "{\n  \"hooks\": {\n    \"Stop\": [\n      {\n        \"hooks\": [\n          {\n            "
         "\"command\": \"b\"\n          }\n"
         "        ]\n      }\n    ]\n  }\n}\n"},
        {"a group of the user's without entries",
         "{\"hooks\":{\"Stop\":[{\"hooks\":[]},{\"hooks\":[" + ours + "]}]}}",
         "{\n  \"hooks\": {\n    \"Stop\": [\n      {\n        \"hooks\": []\n      }\n    ]\n  }\n}\n"},
        {"odd groups",
         "{\"hooks\":{\"Stop\":[null,7,\"nibbo-bridge\",[],{\"command\":5},{\"hooks\":{}},{\"hooks\":[null,"
         "\"nibbo-bridge\"]}]}}",
         std::nullopt},
        {"hooks is a list", "{\"hooks\":[{\"command\":\"nibbo-bridge\"}]}", std::nullopt},
        {"hooks is null", "{\"hooks\":null,\"c\":\"nibbo-bridge\"}", std::nullopt},
        {"event is an object", "{\"hooks\":{\"Stop\":{\"command\":\"nibbo-bridge\"}}}", std::nullopt},
        {"no object", "[\"nibbo-bridge\"]", std::nullopt},
        {"null", "null", std::nullopt},
        {"not JSON", "{\"hooks\": nibbo-bridge", std::nullopt},
        {"two values", "{} {}", std::nullopt},
        {"comment", "{\"hooks\":{\"Stop\":[{\"hooks\":[" + ours + "]}]}} // mine", std::nullopt},
        {"trailing comma", "{\"hooks\":{\"Stop\":[{\"hooks\":[" + ours + "]},]}}", std::nullopt},
        {"broken UTF-8", "{\"a\":\"\xff\",\"hooks\":{\"Stop\":[{\"hooks\":[" + ours + "]}]}}", std::nullopt},
        {"CRLF", "{\r\n\"a\": true,\r\n\"hooks\":{\"Stop\":[{\"hooks\":[" + ours + "]}]}}\r\n",
         "{\n  \"a\": true\n}\n"},
        {"letters and escapes",
         "{\"\xc3\xa4/\":\"\xf0\x9f\x90\xbe \\u00fc \\\" \\\\ \\/ "
         "\\n\\u0001\\u007f\",\"hooks\":{\"Stop\":[{\"hooks\":[" +
             ours + "]}]}}",
         "{\n  \"\xc3\xa4/\": \"\xf0\x9f\x90\xbe \xc3\xbc \\\" \\\\ / \\n\\u0001\x7f\"\n}\n"},
        {"mark in escapes",
         "{\"a\":[null,false,{}],\"hooks\":{\"Stop\":[{\"hooks\":[{\"command\":\"nibbo\\u002dbridge\"}]}]}}",
         "{\n  \"a\": [\n    null,\n    false,\n    {}\n  ]\n}\n"},
        {"plain numbers",
         "{\"a\":[0,-1,1.5,9007199254740991],\"hooks\":{\"Stop\":[{\"command\":\"nibbo-bridge\"}]}}",
         "{\n  \"a\": [\n    0,\n    -1,\n    1.5,\n    9007199254740991\n  ]\n}\n"},
        // JavaScript knows one kind of number, puts names that look like one first and keeps the last of two.
        {"numbers of any size",
         "{\"a\":[123456789012345678901234567890,-0,1.10,18446744073709551615,-9223372036854775808,0."
         "1e-7],\"hooks\":{\"S\":[{\"command\":\"nibbo-bridge\"}]}}",
         "{\n  \"a\": [\n    1.2345678901234568e+29,\n    0,\n    1.1,\n    "
         "18446744073709552000,\n    -9223372036854776000,\n    1e-8\n  ]\n}\n",
         "{\n  \"a\": [\n    123456789012345678901234567890,\n    -0,\n    1.10,\n    "
         "18446744073709551615,\n    -9223372036854775808,\n    0.1e-7\n  ]\n}\n"},
        {"order of names", "{\"b\":1,\"2\":2,\"b\":3,\"hooks\":{\"S\":[{\"command\":\"nibbo-bridge\"}]}}",
         "{\n  \"2\": 2,\n  \"b\": 3\n}\n", "{\n  \"b\": 1,\n  \"2\": 2,\n  \"b\": 3\n}\n"},
        {"byte order mark", "\xef\xbb\xbf{\"hooks\":{\"S\":[{\"command\":\"nibbo-bridge\"}]}}", std::nullopt,
         "\xef\xbb\xbf{}\n"},
        {"deep nesting",
         "{\"a\":" + QByteArray(400, '[') + QByteArray(400, ']') + ",\"hooks\":{\"S\":[{\"hooks\":[" +
             theirs + "]}]}}",
         std::nullopt},
    };
    return shapes;
}

class CleanerTest : public ::testing::Test
{
protected:
    QTemporaryDir m_scratch;
    QString m_home = m_scratch.filePath(QStringLiteral("home"));
    QString m_file = m_home + QStringLiteral("/.claude/settings.json");

    Outcome runOnMac() const
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("HOME"), m_home);
        return run(QStringLiteral("node"), {hookTestsFolder + QStringLiteral("jxa-stand-in.mjs")},
                   selfCleaningScript(), environment);
    }
    Outcome runOnLinux(const QStringList& owned = {}) const
    {
        return run(builtCleaner,
                   QStringList{m_home, QStringLiteral("--shared"), QStringLiteral(".claude/settings.json"),
                               QStringLiteral("--owned")} +
                       owned);
    }
    // Two runs of each: the second must find nothing to do.
    void expectBoth(const QByteArray& before, const QByteArray& afterMac, const QByteArray& afterLinux) const
    {
        write(m_file, before);
        const Outcome mac = runOnMac();
        EXPECT_EQ(mac.status, 0) << mac.error.toStdString();
        EXPECT_EQ(read(m_file), afterMac);
        write(m_file, before);
        runOnLinux();
        EXPECT_EQ(read(m_file), afterLinux);
        runOnLinux();
        EXPECT_EQ(read(m_file), afterLinux);
        EXPECT_EQ(QDir(QFileInfo(m_file).path()).entryList(QDir::Files | QDir::Hidden),
                  QStringList(QStringLiteral("settings.json")));
    }
};

TEST_F(CleanerTest, BothLeaveTheSameBytes)
{
    for (const SharedFile& shape : sharedFileShapes()) {
        SCOPED_TRACE(shape.name);
        const QByteArray mac = shape.after.value_or(shape.before);
        expectBoth(shape.before, mac, shape.afterOnLinux.value_or(mac));
    }
}

TEST_F(CleanerTest, UntouchedFilesAreNotWritten)
{
    for (const SharedFile& shape : sharedFileShapes()) {
        if (shape.after || shape.afterOnLinux)
            continue;
        SCOPED_TRACE(shape.name);
        write(m_file, shape.before);
        struct stat before = {};
        struct stat after = {};
        ASSERT_EQ(::stat(m_file.toUtf8().constData(), &before), 0);
        runOnLinux();
        runOnMac();
        ASSERT_EQ(::stat(m_file.toUtf8().constData(), &after), 0);
        EXPECT_EQ(before.st_ino, after.st_ino);
        EXPECT_EQ(before.st_mtim.tv_nsec, after.st_mtim.tv_nsec);
    }
}

TEST_F(CleanerTest, LinksAndModesStay)
{
    const QString target = m_scratch.filePath(QStringLiteral("dot files/claude.json"));
    for (const bool mac : {true, false}) {
        SCOPED_TRACE(mac ? "macOS" : "Linux");
        write(target, "{\"hooks\":{\"S\":[{\"command\":\"nibbo-bridge\"}]}}");
        ASSERT_EQ(::chmod(target.toUtf8().constData(), 0640), 0);
        QDir().mkpath(QFileInfo(m_file).path());
        QFile::remove(m_file);
        ASSERT_TRUE(QFile::link(QStringLiteral("../../dot files/claude.json"), m_file));
        EXPECT_EQ((mac ? runOnMac() : runOnLinux()).status, 0);
        EXPECT_TRUE(QFileInfo(m_file).isSymLink());
        EXPECT_EQ(read(target), QByteArray("{}\n"));
        struct stat status = {};
        ASSERT_EQ(::stat(target.toUtf8().constData(), &status), 0);
        EXPECT_EQ(status.st_mode & 07777, 0640U);
    }
}

TEST_F(CleanerTest, TheStatusSaysWhetherSomethingOfOursIsLeft)
{
    struct Row
    {
        const char* name;
        QByteArray before;
        int status;
    };
    const Row rows[] = {
        {"nothing of ours", "{\"hooks\":{}}", 0},
        {"not JSON and not ours", "{", 0},
        {"not JSON and maybe ours", "{nibbo-bridge", 1},
        {"our name elsewhere", "{\"note\":\"nibbo-bridge\"}", 0},
        {"ours among others", "{\"hooks\":{\"Stop\":[{\"hooks\":[" + theirs + "," + ours + "]}]}}", 1},
        {"a number beyond all computing", "{\"a\":1e400,\"hooks\":{\"S\":[{\"command\":\"nibbo-bridge\"}]}}",
         1},
        {"too deep", QByteArray(100000, '[') + "nibbo-bridge", 1},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        write(m_file, row.before);
        const Outcome outcome = runOnLinux();
        EXPECT_EQ(outcome.status, row.status);
        EXPECT_EQ(outcome.error.isEmpty(), row.status == 0) << outcome.error.toStdString();
        EXPECT_EQ(read(m_file), row.before);
    }
}

TEST_F(CleanerTest, WhatIsNoFileIsPassedOver)
{
    const QByteArray path = m_file.toUtf8();
    EXPECT_EQ(runOnLinux({QStringLiteral("missing/too")}).status, 0);
    ASSERT_TRUE(QDir().mkpath(m_file));
    EXPECT_EQ(runOnLinux({QStringLiteral(".claude")}).status, 0);
    EXPECT_TRUE(QFileInfo(m_file).isDir());
    ASSERT_TRUE(QDir().rmdir(m_file));
    ASSERT_EQ(::mkfifo(path.constData(), 0600), 0);
    EXPECT_EQ(runOnLinux().status, 0);
    ASSERT_EQ(::unlink(path.constData()), 0);
    ASSERT_EQ(::symlink("nowhere", path.constData()), 0);
    EXPECT_EQ(runOnLinux().status, 0);
    EXPECT_TRUE(QFileInfo(m_file).isSymLink());
}

TEST_F(CleanerTest, AReadOnlyFileStaysAndIsNamed)
{
    if (::geteuid() == 0)
        GTEST_SKIP() << "nothing is read-only to root";
    const QByteArray text = "{\"hooks\":{\"S\":[{\"command\":\"nibbo-bridge\"}]}}";
    write(m_file, text);
    ASSERT_EQ(::chmod(m_file.toUtf8().constData(), 0400), 0);
    const Outcome outcome = runOnLinux();
    EXPECT_EQ(outcome.status, 1);
    EXPECT_TRUE(outcome.error.contains("settings.json"));
    EXPECT_EQ(read(m_file), text);
}

TEST_F(CleanerTest, AnOwnedFileOfTheUsersStays)
{
    const QString mine = m_home + QStringLiteral("/Documents/TaskStart");
    const QString generated = m_home + QStringLiteral("/Documents/TaskCancel");
    write(mine, "#!/bin/sh\necho mine\n");
    write(generated, clineScript({m_home, {}}, QStringLiteral("TaskCancel")));
    EXPECT_EQ(
        runOnLinux({QStringLiteral("Documents/TaskStart"), QStringLiteral("Documents/TaskCancel")}).status,
        0);
    EXPECT_EQ(read(mine), QByteArray("#!/bin/sh\necho mine\n"));
    EXPECT_FALSE(QFileInfo::exists(generated));
}

TEST_F(CleanerTest, WrongArgumentsAreRefused)
{
    const QStringList rows[] = {{}, {QStringLiteral("relative")}, {m_home, QStringLiteral("file")}};
    for (const QStringList& arguments : rows)
        EXPECT_EQ(run(builtCleaner, arguments).status, 2);
}

} // namespace
} // namespace nibbo
