#include "bridge/Wire.h"
#include "StandInServer.h"
#include "bridge/PayloadReader.h"
#include "bridge/Transcript.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

namespace nibbo::bridge::test {
namespace {

TEST(WireLine, neverExceedsWhatTheServerReads)
{
    for (const std::string& unit :
         {std::string("x"), std::string("\""), std::string("\x01"), std::string("😀"), std::string("\n€")}) {
        std::string text;
        while (text.size() < 300'000)
            text += unit;
        Event event;
        event.kind = EventKind::coding;
        event.message = event.command = event.toolName = event.say = event.cwd = event.sessionId = text;
        event.exitCode = INT32_MIN;
        event.afterTool = true;
        const WireLine line = wireLine("claude", event);
        EXPECT_LE(line.text.size(), maxLineBytes + 1);
        EXPECT_GT(line.text.size(), maxLineBytes - 32);
        EXPECT_TRUE(line.commandWasCut);
        EXPECT_EQ(line.text.find('\n'), line.text.size() - 1);
        const Json json = Json::parse(line.text); // refuses a character that was cut in two
        const auto command = json.at("command").get<std::string>();
        EXPECT_TRUE(command.ends_with("… [cut]"));
        EXPECT_GT(command.size(), std::size_t{4000});
        EXPECT_TRUE(text.starts_with(json.at("say").get<std::string>()));
    }
}

// Around the size at which a command no longer fits.
TEST(WireLine, cutsTheCommandOnlyWhenItMust)
{
    Event event;
    event.kind = EventKind::coding;
    event.command = "x";
    const std::size_t room = maxLineBytes - (wireLine("claude", event).text.size() - 2);
    for (const std::size_t size : {room - 1, room, room + 1}) {
        event.command = std::string(size, 'x');
        const WireLine line = wireLine("claude", event);
        EXPECT_EQ(line.commandWasCut, size > room);
        EXPECT_EQ(Json::parse(line.text).at("command") == event.command, size <= room);
        EXPECT_LE(line.text.size(), maxLineBytes + 1);
    }
}

TEST(CutAtCharacter, keepsWholeCharacters)
{
    EXPECT_EQ(cutAtCharacter("aé€😀", 100), "aé€😀");
    EXPECT_EQ(cutAtCharacter("aé€😀", 9), "aé€");
    EXPECT_EQ(cutAtCharacter("aé€😀", 2), "a");
    EXPECT_EQ(cutAtCharacter("€", 2), "");
    EXPECT_EQ(cutAtCharacter("", 0), "");
}

std::string assistantLine(const std::string& words)
{
    return R"({"type":"assistant","message":{"content":[{"type":"text","text":")" + words + "\"}]}}\n";
}

TEST(Transcript, isReadOnlyAtItsEnd)
{
    const ScratchHome home;
    const std::string padding =
        R"({"type":"user","message":{"content":")" + std::string(1000, 'p') + "\"}}\n";
    std::string near = assistantLine("near");
    while (near.size() < 200'000)
        near += padding;
    EXPECT_EQ(latestWords(home.write("near.jsonl", assistantLine("older") + near)), "near");
    std::string far = assistantLine("far");
    while (far.size() < 300'000)
        far += padding;
    EXPECT_EQ(latestWords(home.write("far.jsonl", far)), "");
    // A last line that is still being written.
    EXPECT_EQ(latestWords(home.write("torn.jsonl", assistantLine("whole") + R"({"type":"assistant","mess)")),
              "whole");
    EXPECT_EQ(latestWords(home.write("one.jsonl", R"({"type":"assistant","message":{"content":"only"}})")),
              "only");
    // One line longer than all that is read.
    EXPECT_EQ(latestWords(home.write("long.jsonl", assistantLine(std::string(400'000, 'x')))), "");
}

TEST(Transcript, mayBeAnything)
{
    const ScratchHome home;
    const std::string pipe = home.path() + "/pipe";
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    for (const std::string& path :
         {std::string(), home.path(), pipe, std::string("/nonexistent"), std::string("/dev/zero"),
          home.write("empty", ""), home.write("newlines", "\n\n\n"),
          home.write("nul", std::string(5000, '\0')), home.write("garbage", "assistant\n[[[[\n")})
        EXPECT_EQ(latestWords(path), "") << path;
}

} // namespace
} // namespace nibbo::bridge::test
