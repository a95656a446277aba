#include "hooks/JsonText.h"

#include <nlohmann/json.hpp>

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

namespace nibbo::test {
namespace {

std::string rewritten(const QByteArray& content)
{
    const auto text = JsonText::parse(content);
    return text ? text->written().toStdString() : "(not understood)";
}

TEST(JsonTextTest, writesPrettySortedAndKeepsTheSpelling)
{
    const std::vector<std::pair<QByteArray, std::string>> rows{
        {"{}", "{}"},
        {" [ ] ", "[]"},
        {"", "{}"},
        {R"({"b":[1,-0,1.50,1E+2],"a":{},"B":true,"\u0041":null})",
         "{\n  \"\\u0041\": null,\n  \"B\": true,\n  \"a\": {},\n  \"b\": [\n    1,\n    -0,\n    1.50,\n    "
         "1E+2\n  ]\n}"},
        {R"(["\/\\\/\n\"","/"])", "[\n  \"/\\\\/\\n\\\"\",\n  \"/\"\n]"},
        {"{\"a\":1,}", "{\n  \"a\": 1\n}"},
        {"[1,2,]", "[\n  1,\n  2\n]"},
        {"// top\n{ // open\n\"b\": 1, // b\n/* a1 */ /* a2 */ \"a\": /* v */ 2 // a\n, // next\n\"c\": 3 "
         "}\n// end",
         "// top\n{\n  /* a1 */\n  /* a2 */\n  /* v */\n  \"a\": 2, // a // next\n  // open\n  \"b\": 1, // "
         "b\n  \"c\": 3\n}\n// end"},
        {"[ /* none */ ]", "[\n  /* none */\n]"},
        {"[1 /* one */, 2 /* two */]", "[\n  1,\n  /* one */\n  2\n  /* two */\n]"},
        {"\"text\"", "\"text\""},
    };
    for (const auto& [before, after] : rows) {
        EXPECT_EQ(rewritten(before), after) << before.constData();
        EXPECT_EQ(rewritten(QByteArray::fromStdString(after)), after) << "not stable: " << before.constData();
    }
}

TEST(JsonTextTest, refusesWhatIsNoJson)
{
    for (const QByteArray& content : {QByteArray("{"),
                                      QByteArray("}"),
                                      QByteArray("{\"a\"}"),
                                      QByteArray("{\"a\":}"),
                                      QByteArray("{a:1}"),
                                      QByteArray("{'a':1}"),
                                      QByteArray("[1 2]"),
                                      QByteArray("[,]"),
                                      QByteArray("[1,,2]"),
                                      QByteArray("01"),
                                      QByteArray("1."),
                                      QByteArray(".5"),
                                      QByteArray("+1"),
                                      QByteArray("-"),
                                      QByteArray("1e"),
                                      QByteArray("nul"),
                                      QByteArray("NaN"),
                                      QByteArray("\"a"),
                                      QByteArray("\"\\"),
                                      QByteArray("\"\n\""),
                                      QByteArray("\"\\u12g4\""),
                                      QByteArray("\"\\u"),
                                      QByteArray("{} x"),
                                      QByteArray("/"),
                                      QByteArray("/* x"),
                                      QByteArray("{}\0", 3),
                                      QByteArray("[").repeated(100000),
                                      QByteArray("{\"a\":").repeated(100000),
                                      QByteArray("\xEF\xBB")})
        EXPECT_FALSE(JsonText::parse(content)) << content.left(20).constData();
}

TEST(JsonTextTest, sameAsSeesThroughOrderLayoutAndEscapesOnly)
{
    const struct
    {
        QByteArray one;
        QByteArray other;
        bool same;
    } rows[] = {
        {R"({"a": 1, "b": [1, 2]})", R"({"b":[1,2],"a":1})", true},
        {R"(["\u00e9\ud83d\ude00\/"])", "[\"\xC3\xA9\xF0\x9F\x98\x80/\"]", true},
        {R"({"\u0061": 1})", R"({"a": 1})", true},
        {R"([1, 2])", R"([2, 1])", false},
        {R"([1])", R"([1.0])", false},
        {R"(["1"])", R"([1])", false},
        {R"({"a": 1})", R"({"a": 1, "a": 1})", false},
        {R"({"a": 1, "a": 2})", R"({"a": 2, "a": 1})", false},
        {R"([1 // why
])",
         R"([1])", false},
    };
    for (const auto& row : rows)
        EXPECT_EQ(JsonText::parse(row.one)->root.sameAs(JsonText::parse(row.other)->root), row.same)
            << row.one.constData();
}

TEST(JsonTextTest, theLastOfEqualKeysIsTheMember)
{
    auto text = JsonText::parse(R"({"a": 1, "\u0061": 2, "b": 3})");
    EXPECT_EQ(text->root.member("a")->spelling(), "2");
    text->root.setMember("a", JsonValue::string("q\"\\\n\x01/"));
    text->root.setMember("new", JsonValue::number(-7));
    EXPECT_EQ(text->written().toStdString(),
              "{\n  \"a\": 1,\n  \"a\": \"q\\\"\\\\\\u000a\\u0001/\",\n  \"b\": 3,\n  \"new\": -7\n}");
    EXPECT_EQ(text->root.member("a")->text(), "q\"\\\n\x01/");
    EXPECT_EQ(text->root.member("none"), nullptr);
}

nlohmann::json randomJson(std::mt19937& chance, int depth)
{
    const auto below = [&chance](int bound) {
        return std::uniform_int_distribution<int>(0, bound - 1)(chance);
    };
    const auto randomText = [&] {
        static const std::vector<std::string> parts{"a",  "B",  "\"",   "\\",       "/",
                                                    "\n", "\t", "\x01", "\xC3\xA9", "\xF0\x9F\x90\xBE",
                                                    " ",  "//", "/*",   ","};
        std::string text;
        for (int i = below(6); i > 0; --i)
            text += parts[static_cast<std::size_t>(below(static_cast<int>(parts.size())))];
        return text;
    };
    nlohmann::json value;
    switch (below(depth > 4 ? 4 : 6)) {
    case 0:
        return randomText();
    case 1:
        return below(2000) - 1000;
    case 2:
        return below(1000) / 8.0;
    case 3:
        return nullptr;
    case 4:
        value = nlohmann::json::array();
        for (int i = below(5); i > 0; --i)
            value.push_back(randomJson(chance, depth + 1));
        return value;
    default:
        value = nlohmann::json::object();
        for (int i = below(5); i > 0; --i)
            value[randomText()] = randomJson(chance, depth + 1);
        return value;
    }
}

TEST(JsonTextTest, saysTheSameAsAnotherReaderOfWhatItWrites)
{
    std::mt19937 chance(20261121);
    for (int i = 0; i < 2000; ++i) {
        const nlohmann::json value = randomJson(chance, 0);
        const QByteArray source = QByteArray::fromStdString(value.dump(i % 2 == 0 ? -1 : 3, ' ', i % 3 == 0));
        const auto text = JsonText::parse(source);
        ASSERT_TRUE(text) << source.constData();
        const QByteArray written = text->written();
        ASSERT_EQ(nlohmann::json::parse(written.begin(), written.end()), value) << source.constData();
        ASSERT_TRUE(JsonText::parse(written)->root.sameAs(text->root)) << source.constData();
    }
}

TEST(JsonTextTest, anyCutOrChangedByteIsReadOrRefusedButNothingElse)
{
    const QByteArray whole = "\xEF\xBB\xBF// c\r\n{\"a\": [1.5e3, \"\\ud83d\\ude00\\/\", /* x */ true,], "
                             "\"hooks\": {\"Stop\": []}}\r\n";
    std::mt19937 chance(7);
    for (int i = 0; i < 4000; ++i) {
        QByteArray content =
            whole.left(static_cast<qsizetype>(chance() % static_cast<unsigned>(whole.size() + 1)));
        for (auto change = chance() % 3; change > 0 && !content.isEmpty(); --change)
            content[static_cast<qsizetype>(chance() % static_cast<unsigned>(content.size()))] =
                static_cast<char>(chance() % 256);
        const auto text = JsonText::parse(content);
        if (!text)
            continue;
        const auto again = JsonText::parse(text->written());
        ASSERT_TRUE(again) << content.constData();
        ASSERT_TRUE(again->root.sameAs(text->root)) << content.constData();
    }
}

} // namespace
} // namespace nibbo::test
