// Settings files of every shape that people and tools leave behind: what is the user's is still there after
// an install, and an uninstall gives every byte back.
#include "ScratchHome.h"

#include <nlohmann/json.hpp>

#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <string>
#include <vector>

namespace nibbo::test {
namespace {

enum class After
{
    /// JSON that a strict reader takes.
    strict,
    /// Somebody's comments or odd bytes are still in it.
    tolerant
};

struct Shape
{
    std::string name;
    QByteArray content;
    /// Parts that are there after the install, spelled exactly so.
    std::vector<QByteArray> kept;
    std::vector<QByteArray> gone = {};
    After after = After::strict;
    /// The log says where the replaced content is.
    bool notUnderstood = false;
};

void PrintTo(const Shape& shape, std::ostream* out)
{
    *out << shape.name;
}

QByteArray nested(int depth)
{
    return "{\"deep\": " + QByteArray("[").repeated(depth) + "\"bottom\"" + QByteArray("]").repeated(depth) +
           "}";
}

QByteArray big()
{
    QByteArray content = "{\"projects\": {";
    for (int i = 0; content.size() < 5 * 1024 * 1024; ++i)
        content += (i ? ", " : "") + QByteArray("\"/home/me/p") + QByteArray::number(i) +
                   "\": {\"cost\": 0.10, \"history\": [\"one\", \"two\"], \"n\": " + QByteArray::number(i) +
                   "}";
    return content + "}, \"last\": \"seen\"}";
}

std::vector<Shape> shapes()
{
    return {
        {"empty", "", {}},
        {"white space", " \n\t\r\n", {}},
        {"only comments",
         "// mine\n/* and\n   mine */\n",
         {"// mine", "/* and\n   mine */"},
         {},
         After::tolerant},
        {"empty object", "{}", {}},
        {"comments and trailing commas",
         "// top\n{\n  // the model\n  \"model\": \"opus\", // why\n  \"list\": [1, 2, /* three */ 3,],\n"
         "  \"hooks\": {\n    // my own\n    \"Stop\": [ {\"hooks\": [{\"type\": \"command\", \"command\": "
         "\"beep\"}]}, ],\n    // nothing more\n  },\n}\n// end\n",
         {"// top", "// the model", "\"opus\"", "// why", "/* three */", "// my own", "\"beep\"",
          "// nothing more", "// end"},
         {},
         After::tolerant},
        {"groups of other tools",
         R"({"hooks": {"PreToolUse": [{"matcher": "Bash", "hooks": [{"type": "command", "command": "other"}]}],
             "Custom": [{"hooks": [{"command": "third"}]}]}, "model": "x"})",
         {"\"other\"", "\"third\"", "\"matcher\": \"Bash\"", "\"model\": \"x\""}},
        {"deep unknown content", nested(300), {"\"bottom\""}},
        {"deeper than anybody nests", nested(5000), {}, {}, After::strict, true},
        {"huge numbers",
         R"({"a": 123456789012345678901234567890, "b": 1e400, "c": 1.10, "d": -0, "e": 0.1e-7, "f": 9007199254740993})",
         {"123456789012345678901234567890", "1e400", "1.10", "-0", "0.1e-7", "9007199254740993"},
         {},
         After::tolerant},
        {"non-ASCII and escapes",
         "{\"name\": \"Zo\xC3\xAB \xE4\xB8\xAD \xF0\x9F\x90\xBE\", \"esc\": \"\\u00e9 \\ud83d\\ude00 "
         "\\n\\t\", \"gr\xC3\xBC"
         "n\": 1}",
         {"Zo\xC3\xAB \xE4\xB8\xAD \xF0\x9F\x90\xBE", "\\u00e9 \\ud83d\\ude00 \\n\\t", "\"gr\xC3\xBCn\": 1"}},
        {"escaped slashes", R"({"path": "\/usr\/bin", "quote": "\\\/"})", {"\"/usr/bin\"", R"("\\/")"}},
        {"Windows lines",
         "{\r\n  \"a\": 1,\r\n  \"b\": [\r\n    2\r\n  ]\r\n}\r\n",
         {"{\r\n  \"a\": 1,\r\n"}},
        {"byte order mark",
         "\xEF\xBB\xBF{\"a\": \"b\"}",
         {"\xEF\xBB\xBF{", "\"a\": \"b\""},
         {},
         After::tolerant},
        {"hooks not an object",
         R"({"hooks": ["mine"], "a": 1})",
         {"\"a\": 1"},
         {"mine"},
         After::strict,
         true},
        {"hooks null", R"({"hooks": null, "a": 1})", {"\"a\": 1"}, {}, After::strict, true},
        {"event not an array",
         R"({"hooks": {"Stop": "mine", "Else": {"b": 2}, "Word": "stays"}})",
         {"\"b\": 2", "\"Word\": \"stays\""},
         {"mine"},
         After::strict,
         true},
        {"a list of mixed things",
         R"({"hooks": {"Stop": ["text", 7, {"hooks": [{"command": "mine"}]}, null]}})",
         {"\"text\"", "7", "\"mine\"", "null"}},
        {"entries without hooks",
         R"({"hooks": {"Stop": [{"matcher": "x"}, {"command": "plain"}], "PreToolUse": [{"hooks": "odd"}]}})",
         {"\"matcher\": \"x\"", "\"plain\"", "\"odd\""}},
        {"a rival's entries",
         R"({"hooks": {"PreToolUse": [{"hooks": [{"command": "mine"}]}, {"hooks": [{"command": "/a/vibe-island-x"}]}],
             "Else": [{"command": "vibe-island"}]}})",
         {"\"mine\""},
         {"vibe-island", "Else"}},
        {"a rival's entry beside the user's",
         R"({"hooks": {"Stop": [{"matcher": "m", "hooks": [{"command": "vibe-island"}, {"command": "mine"}]}]}})",
         {"\"mine\"", "\"matcher\": \"m\""},
         {"vibe-island"}},
        {"duplicate keys",
         R"({"a": 1, "a": 2, "hooks": {"Stop": []}, "b": 3})",
         {"\"a\": 1", "\"a\": 2", "\"b\": 3"}},
        {"odd keys",
         R"({"": 1, "a\"b": 2, "\u0000": 3, "Z": 4, "a": 5})",
         {"\"\": 1", "\"a\\\"b\": 2", "\"\\u0000\": 3"}},
        {"five megabytes", big(), {"\"last\": \"seen\"", "\"/home/me/p1000\"", "\"cost\": 0.10"}},
        {"invalid JSON", "{\"a\": 1, oops}", {}, {"oops"}, After::strict, true},
        {"cut off", "{\"a\": {\"b\": [1, 2", {}, {}, After::strict, true},
        {"comment without an end", "{\"a\": 1} /* never", {}, {}, After::strict, true},
        {"two documents", "{\"a\": 1}{\"b\": 2}", {}, {}, After::strict, true},
        {"a list at the top", R"([{"a": 1}])", {}, {}, After::strict, true},
        {"a word", "settings", {}, {}, After::strict, true},
        {"bad escapes", R"({"a": "\x"})", {}, {}, After::strict, true},
        {"cut in an escape", R"({"a": "\u12)", {}, {}, After::strict, true},
        {"invalid UTF-8 in a text", "{\"a\": \"x\xFF\xFEy\"}", {"\"x\xFF\xFEy\""}, {}, After::tolerant},
        {"invalid UTF-8 outside", "\xFF\xFE{\"a\": 1}", {}, {}, After::strict, true},
        {"UTF-16", QByteArray("\xFF\xFE{\0}\0", 6), {}, {}, After::strict, true},
        {"zero bytes", QByteArray(4096, '\0'), {}, {}, After::strict, true},
    };
}

class HookInstallerCorpusTest : public ::testing::TestWithParam<Shape>
{};

TEST_P(HookInstallerCorpusTest, keepsWhatIsTheUsersAndGivesEveryByteBack)
{
    const Shape& shape = GetParam();
    for (const char* id : {"claude", "codex", "gemini", "cursor"}) {
        SCOPED_TRACE(id);
        if (shape.content.size() > 1024 * 1024 && qstrcmp(id, "claude") != 0)
            continue;
        ScratchHome home;
        home.enableOnly({QString::fromLatin1(id)});
        home.write(id, shape.content);

        ASSERT_OK(home.installer().install());
        const QByteArray installed = home.read(id);
        EXPECT_TRUE(home.installer().status().value(QString::fromLatin1(id)));
        for (const QByteArray& part : shape.kept)
            EXPECT_TRUE(installed.contains(part)) << part.constData() << "\nis not in\n"
                                                  << installed.left(4000).constData();
        // Only the lists of the agent's own events make room for ours.
        if (qstrcmp(id, "claude") == 0) {
            for (const QByteArray& part : shape.gone)
                EXPECT_FALSE(installed.contains(part)) << part.constData();
            EXPECT_EQ(shape.notUnderstood,
                      home.logText().contains(QStringLiteral("is not understood, its content is kept in ") +
                                              home.backupsPath()))
                << qUtf8Printable(home.logText());
        }
        EXPECT_TRUE(shape.after != After::strict ||
                    nlohmann::json::accept(installed.begin(), installed.end()));
        EXPECT_TRUE(home.backupContents().contains(shape.content));

        ASSERT_OK(home.installer().install());
        EXPECT_EQ(home.read(id), installed) << "a second install changed the file";

        ASSERT_OK(home.installer().uninstall());
        EXPECT_EQ(home.read(id), shape.content);
        EXPECT_FALSE(home.installer().status().value(QString::fromLatin1(id)));
    }
}

std::string shapeName(const ::testing::TestParamInfo<Shape>& info)
{
    std::string name = info.param.name;
    for (char& c : name)
        c = std::isalnum(static_cast<unsigned char>(c)) ? c : '_';
    return name;
}

INSTANTIATE_TEST_SUITE_P(Shapes, HookInstallerCorpusTest, ::testing::ValuesIn(shapes()), shapeName);

const QByteArray userSettings = R"({"model": "opus", "hooks": {"Stop": [{"hooks": [{"command": "mine"}]}]}})";

ino_t inodeOf(const QString& path)
{
    struct stat info = {};
    EXPECT_EQ(::stat(QFile::encodeName(path).constData(), &info), 0);
    return info.st_ino;
}

mode_t modeOf(const QString& path)
{
    struct stat info = {};
    EXPECT_EQ(::stat(QFile::encodeName(path).constData(), &info), 0);
    return info.st_mode & 07777U;
}

TEST(HookInstallerPlaceTest, keepsInodeModeHardLinksAndSymbolicLinks)
{
    ScratchHome home;
    home.enableOnly({QStringLiteral("claude")});
    const QString real = home.path(QStringLiteral("dotfiles/claude.json"));
    const QString middle = home.path(QStringLiteral("dotfiles/link.json"));
    const QString config = home.configPath("claude");
    ScratchHome::writeAt(real, userSettings);
    ASSERT_EQ(::chmod(QFile::encodeName(real).constData(), 0640), 0);
    ASSERT_EQ(::link(QFile::encodeName(real).constData(),
                     QFile::encodeName(real + QStringLiteral(".twin")).constData()),
              0);
    ASSERT_TRUE(QFile::link(QStringLiteral("claude.json"), middle));
    ASSERT_TRUE(QDir().mkpath(home.path(QStringLiteral(".claude"))));
    ASSERT_TRUE(QFile::link(middle, config));
    const ino_t inode = inodeOf(real);

    ASSERT_OK(home.installer().install());
    EXPECT_TRUE(QFileInfo(config).isSymLink());
    EXPECT_EQ(QFileInfo(middle).symLinkTarget(), real);
    EXPECT_EQ(inodeOf(config), inode);
    EXPECT_EQ(modeOf(real), 0640U);
    EXPECT_TRUE(ScratchHome::readAt(real + QStringLiteral(".twin"))->contains("nibbo-bridge"));

    ASSERT_OK(home.installer().uninstall());
    EXPECT_TRUE(QFileInfo(config).isSymLink());
    EXPECT_EQ(inodeOf(config), inode);
    EXPECT_EQ(modeOf(real), 0640U);
    EXPECT_EQ(*ScratchHome::readAt(real), userSettings);
}

TEST(HookInstallerPlaceTest, aMissingFileIsMadeAndHoldsNothingOfOursAfterwards)
{
    ScratchHome home;
    home.enableAll();
    ASSERT_OK(home.installer().install());
    for (const auto& [id, wired] : home.installer().status().toStdMap())
        EXPECT_TRUE(wired) << qUtf8Printable(id);
    ASSERT_OK(home.installer().uninstall());
    for (const auto& [id, wired] : home.installer().status().toStdMap())
        EXPECT_FALSE(wired) << qUtf8Printable(id);
    for (const ProviderSpec* spec : HookInstaller::specs())
        EXPECT_FALSE(home.read(qPrintable(spec->id)).contains("nibbo")) << qUtf8Printable(spec->id);
    for (const char* id : {"copilot", "opencode"})
        EXPECT_FALSE(QFileInfo::exists(home.configPath(id))) << id;
    EXPECT_TRUE(QDir(home.configPath("cline")).isEmpty());
}

struct Obstacle
{
    const char* name;
    std::function<void(ScratchHome&)> place;
    QString error;
};

TEST(HookInstallerPlaceTest, whatCannotBeWrittenIsNamedAndLeftWhole)
{
    const std::vector<Obstacle> obstacles{
        {"read-only",
         [](ScratchHome& home) {
             home.write("gemini", userSettings);
             ASSERT_EQ(::chmod(QFile::encodeName(home.configPath("gemini")).constData(), 0444), 0);
         },
         QStringLiteral("read-only")},
        {"directory in the way",
         [](ScratchHome& home) { ASSERT_TRUE(QDir().mkpath(home.configPath("gemini"))); },
         QStringLiteral("directory")},
        {"file where the folder belongs",
         [](ScratchHome& home) { ScratchHome::writeAt(home.path(QStringLiteral(".gemini")), "x"); },
         QStringLiteral("cannot make the folder")},
        {"link into nowhere",
         [](ScratchHome& home) {
             ASSERT_TRUE(QDir().mkpath(home.path(QStringLiteral(".gemini"))));
             ASSERT_TRUE(
                 QFile::link(QStringLiteral("/nowhere/at/all/settings.json"), home.configPath("gemini")));
         },
         QStringLiteral("/nowhere/at/all")},
        {"link to itself",
         [](ScratchHome& home) {
             ASSERT_TRUE(QDir().mkpath(home.path(QStringLiteral(".gemini"))));
             ASSERT_TRUE(QFile::link(home.configPath("gemini"), home.configPath("gemini")));
         },
         QStringLiteral("circle")},
        {"named pipe",
         [](ScratchHome& home) {
             ASSERT_TRUE(QDir().mkpath(home.path(QStringLiteral(".gemini"))));
             ASSERT_EQ(::mkfifo(QFile::encodeName(home.configPath("gemini")).constData(), 0600), 0);
         },
         QStringLiteral("settings.json")},
    };
    for (const Obstacle& obstacle : obstacles) {
        SCOPED_TRACE(obstacle.name);
        ScratchHome home;
        home.enableOnly({QStringLiteral("claude"), QStringLiteral("gemini"), QStringLiteral("cursor")});
        home.write("claude", userSettings);
        obstacle.place(home);
        const std::optional<QByteArray> before =
            QFileInfo(home.configPath("gemini")).isFile() ? std::optional(home.read("gemini")) : std::nullopt;

        const Result<void> installed = home.installer().install();
        ASSERT_FALSE(installed);
        EXPECT_TRUE(installed.error().contains(obstacle.error)) << qUtf8Printable(installed.error());
        EXPECT_TRUE(!before || home.read("gemini") == *before);
        // Those before it are done, those behind it are not.
        EXPECT_TRUE(home.installer().status().value(QStringLiteral("claude")));
        EXPECT_FALSE(QFileInfo::exists(home.configPath("cursor")));

        std::ignore = static_cast<bool>(home.installer().uninstall());
        EXPECT_EQ(home.read("claude"), userSettings);
        EXPECT_TRUE(!before || home.read("gemini") == *before);
        EXPECT_FALSE(QFileInfo::exists(QStringLiteral("/nowhere")));
    }
}

TEST(HookInstallerPlaceTest, aDanglingLinkWhoseFolderExistsIsFilled)
{
    ScratchHome home;
    home.enableOnly({QStringLiteral("claude")});
    ASSERT_TRUE(QDir().mkpath(home.path(QStringLiteral(".claude"))));
    ASSERT_TRUE(QDir().mkpath(home.path(QStringLiteral("dotfiles"))));
    ASSERT_TRUE(QFile::link(home.path(QStringLiteral("dotfiles/new.json")), home.configPath("claude")));
    ASSERT_OK(home.installer().install());
    EXPECT_TRUE(QFileInfo(home.configPath("claude")).isSymLink());
    EXPECT_TRUE(
        ScratchHome::readAt(home.path(QStringLiteral("dotfiles/new.json")))->contains("nibbo-bridge"));
}

} // namespace
} // namespace nibbo::test
