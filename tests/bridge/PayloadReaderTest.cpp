#include "bridge/PayloadReader.h"
#include "bridge/Wire.h"

#include <gtest/gtest.h>

namespace nibbo::bridge::test {
namespace {

std::optional<Payload> readWhole(std::string_view text)
{
    PayloadReader reader(PayloadReader::wholeLineBytes);
    reader.feed(text);
    return reader.take();
}

std::optional<Payload> readInPieces(std::string_view text, std::size_t size)
{
    PayloadReader reader(PayloadReader::wholeLineBytes);
    for (std::size_t at = 0; at < text.size(); at += size)
        reader.feed(text.substr(at, size));
    return reader.take();
}

TEST(PayloadReader, keepsWhatIsInBounds)
{
    const std::string text =
        R"( {"a":"x\"\\\/\b\f\n\r\té\u00e9😀\ud83d\ude00","b":[1,-2.5e3,true,false,null,{}],"":{"c":[]}} )";
    const auto payload = readWhole(text);
    ASSERT_TRUE(payload);
    EXPECT_EQ(payload->root, Json::parse(text));
    EXPECT_FALSE(payload->pruned);
    EXPECT_EQ(readWhole("\xEF\xBB\xBF{\"a\":1}")->root, Json({{"a", 1}}));
}

TEST(PayloadReader, replacesTextThatIsBroken)
{
    const std::string r = "\xEF\xBF\xBD";
    const std::vector<std::pair<std::string, std::string>> rows = {
        {R"(\ud83d)", r},
        {R"(\ud83dx)", r + "x"},
        {R"(\ude00)", r},
        {R"(\ud83d\ud83d\ude00)", r + "😀"},
        {R"(\ud83d\n)", r + "\n"},
        {R"(\ud83dé)", r + "é"},
        {R"(\ud83d\u0041)", r + "A"},
        {R"(\u12)", r},
        {R"(\u12g)", r + "g"},
        {R"(\x)", r},
        {R"(\u0000)", std::string(1, '\0')},
        {std::string(1, '\0'), std::string(1, '\0')},
        {"\n\t", "\n\t"},
        {"\xC3", r},
        {"\xC3x", r + "x"},
        {"\x80", r},
        {"\xC0\xAF", r + r},
        {"\xED\xA0\x80", r + r + r},
        {"\xF4\x90\x80\x80", r + r + r + r},
        {"\xF0\x9F\x98", r},
        {"\xE2\x82\xAC", "€"},
    };
    for (const auto& [raw, expected] : rows) {
        const std::string text = "{\"a\":\"" + raw + "\"}";
        SCOPED_TRACE(testing::PrintToString(raw));
        const auto payload = readWhole(text);
        ASSERT_TRUE(payload);
        EXPECT_EQ(payload->root.at("a").get<std::string>(), expected);
    }
}

// Whatever the pieces in which a pipe hands it over.
TEST(PayloadReader, doesNotDependOnHowTheBytesArrive)
{
    const std::vector<std::string> texts = {
        R"({"a":"x\ud83d\ude00\ud83d\\","b":[[],{"c":"é€😀\u00e9"}],"d":1})",
        "{\"a\":\"\xC3\xC3\xA9\xF0\x9F\",\"b\":[1,2,3]}",
        "{\"a\":\"" + std::string(PayloadReader::wholeLineBytes + 40, '\\') + "\",\"b\":\"\\\"}\"}",
        "{\"a\":" + std::string(40, '[') + std::string(40, ']') + ",\"b\":\"c\"}",
    };
    for (const std::string& text : texts) {
        const auto whole = readWhole(text);
        ASSERT_TRUE(whole);
        for (const std::size_t size : {1U, 2U, 3U, 5U, 7U}) {
            const auto pieces = readInPieces(text, size);
            ASSERT_TRUE(pieces) << size;
            EXPECT_EQ(pieces->root, whole->root) << size;
        }
    }
}

TEST(PayloadReader, cutsALongStringBetweenCharacters)
{
    for (const char* unit : {"x", "é", "€", "😀", "\\u20ac", "\\ud83d\\ude00", "\\\"", "\\n"}) {
        std::string text = "{\"a\":\"y";
        for (int i = 0; i < 70'000; ++i)
            text += unit;
        text += "\",\"b\":\"after\"}";
        SCOPED_TRACE(unit);
        const auto payload = readWhole(text);
        ASSERT_TRUE(payload);
        const auto kept = payload->root.at("a").get<std::string>();
        EXPECT_TRUE(kept.ends_with(cutMark));
        EXPECT_GE(kept.size() - cutMark.size(), PayloadReader::wholeLineBytes);
        EXPECT_LT(kept.size() - cutMark.size(), PayloadReader::wholeLineBytes + 4);
        EXPECT_NO_THROW(static_cast<void>(payload->root.dump())); // throws on a broken character
        EXPECT_EQ(payload->root.at("b"), "after");
    }
}

TEST(PayloadReader, marksOnlyWhatItCut)
{
    for (const std::size_t size : {9U, 10U, 11U}) {
        PayloadReader reader(10);
        reader.feed("{\"a\":\"" + std::string(size, 'x') + "\",\"b\":\"c\"}");
        const auto payload = reader.take();
        ASSERT_TRUE(payload);
        EXPECT_EQ(payload->root.at("a").get<std::string>().ends_with(cutMark), size > 10) << size;
        EXPECT_EQ(payload->root.at("b"), "c");
    }
}

TEST(PayloadReader, dropsWhatIsTooDeepOrTooMany)
{
    const std::string deep =
        "{\"a\":" + std::string(100'000, '[') + "\"]\"" + std::string(100'000, ']') + ",\"b\":\"after\"}";
    const auto first = readWhole(deep);
    ASSERT_TRUE(first);
    EXPECT_EQ(first->root.at("b"), "after");
    EXPECT_TRUE(first->pruned);

    std::string many = "{\"a\":[0";
    for (int i = 1; i < 100'000; ++i)
        many += ",{\"x\":[\"]\",1]}";
    many += "],\"b\":\"after\"}";
    const auto second = readWhole(many);
    ASSERT_TRUE(second);
    EXPECT_EQ(second->root.at("b"), "after");
    EXPECT_EQ(second->root.at("a").size(), PayloadReader::maxEntries);
    EXPECT_TRUE(second->pruned);
}

TEST(PayloadReader, refusesWhatIsNoObject)
{
    for (const char* text : {"", " ", "1", "\"{}\"", "[{}]", "null", "}", "x{}", "{", "{\"a\"", "{\"a\":}",
                             "{]", "{\"a\":[}]", "{\"a\" 1}", "\xEF\xBB\xBF\xEF\xBB\xBF{}"})
        EXPECT_FALSE(readWhole(text)) << text;
}

// A list of long strings, each within its own bounds.
TEST(PayloadReader, staysInBoundsAsAWhole)
{
    PayloadReader reader(PayloadReader::wholeLineBytes);
    reader.feed("{\"a\":[\"\"");
    const std::string entry = ",\"" + std::string(PayloadReader::wholeLineBytes, 'x') + '"';
    for (int i = 0; i < 200; ++i)
        reader.feed(entry);
    reader.feed("]}");
    EXPECT_FALSE(reader.take());
}

} // namespace
} // namespace nibbo::bridge::test
