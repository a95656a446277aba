// The helper must never hold up, alarm or outlive its agent, whatever happens around it.
#include "HelperProcess.h"
#include "StandInServer.h"

#include <gtest/gtest.h>

#include <csignal>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace nibbo::bridge::test {
namespace {

const std::string toolEvent = R"({"session_id":"s","tool_name":"Bash","tool_input":{"command":"make"}})";

StandInServer::Answer acknowledging()
{
    return [](const std::string&) { return "{\"ok\":true}\n"; };
}

StandInServer::Answer keepingWaiting()
{
    return [](const std::string&) { return std::nullopt; };
}

void expectSilence(const HelperResult& result)
{
    EXPECT_TRUE(result.exitedWithZero()) << result.waitStatus;
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.err, "");
}

TEST(HelperFailsOpen, onInputThatIsNoPayload)
{
    const ScratchHome home;
    StandInServer server(home, acknowledging());
    const std::vector<std::string> inputs = {
        "",
        "\n",
        "hello",
        "null",
        "[1,2]",
        "\"text\"",
        "{",
        R"({"session_id":)",
        R"({"session_id" "s"})",
        std::string("\0\0\0", 3),
        "\xFF\xFE{\0}\0",
        std::string(1'000'000, '['),
        std::string(1'000'000, '{'),
        "{\"a\":" + std::string(1'000'000, '['),
        "{\"a\":" + std::string(3'000'000, '1') + '}',
        "{\"a\":tru}",
        "{\"a\":1e999999}",
        std::string(4'000'000, ' '),
    };
    for (std::size_t i = 0; i < inputs.size(); ++i) {
        SCOPED_TRACE(i);
        for (const char* event : {"PreToolUse", "PermissionRequest", "Stop"})
            expectSilence(HelperProcess::run(
                {.arguments = hookArguments("claude", event), .home = home.path()}, inputs[i]));
    }
    EXPECT_TRUE(server.lines().empty());
}

TEST(HelperFailsOpen, onArgumentsThatSayNothing)
{
    const ScratchHome home;
    StandInServer server(home, acknowledging());
    const std::vector<std::vector<std::string>> argumentLists = {
        {},
        {"--source"},
        {"--source", "claude"},
        {"--event", "PreToolUse"},
        {"--source", "nobody", "--event", "PreToolUse"},
        {"--source", "", "--event", ""},
        {"--source", "claude", "--event", "pretooluse"},
        {"PreToolUse", "claude"},
    };
    for (const auto& arguments : argumentLists)
        expectSilence(HelperProcess::run({.arguments = arguments, .home = home.path()}, toolEvent));
    EXPECT_TRUE(server.lines().empty());
}

TEST(HelperFailsOpen, withoutAnApplication)
{
    const std::vector<std::string> arguments = hookArguments("claude", "PermissionRequest");
    {
        SCOPED_TRACE("no home");
        expectSilence(HelperProcess::run({.arguments = arguments, .home = ""}, toolEvent));
    }
    {
        SCOPED_TRACE("no folder");
        expectSilence(HelperProcess::run({.arguments = arguments, .home = "/nonexistent"}, toolEvent));
    }
    {
        SCOPED_TRACE("a home too long for a socket");
        expectSilence(
            HelperProcess::run({.arguments = arguments, .home = '/' + std::string(300, 'h')}, toolEvent));
    }
    const ScratchHome home;
    {
        SCOPED_TRACE("a socket that nobody listens at any more");
        {
            StandInServer server(home, acknowledging());
        }
        expectSilence(HelperProcess::run({.arguments = arguments, .home = home.path()}, toolEvent));
    }
    {
        SCOPED_TRACE("something else in its place");
        const ScratchHome other;
        other.write("Library/Application Support/Nibbo/nibbo.sock", "text");
        expectSilence(HelperProcess::run({.arguments = arguments, .home = other.path()}, toolEvent));
    }
}

TEST(HelperFailsOpen, whenTheApplicationDiesInMidWait)
{
    const ScratchHome home;
    StandInServer server(home, keepingWaiting());
    HelperProcess helper({.arguments = hookArguments("claude", "PermissionRequest"), .home = home.path()});
    helper.write(toolEvent);
    helper.closeInput();
    server.waitForLines(1);
    server.dropClient();
    expectSilence(helper.wait());
}

// Only the acknowledgement is missing: the event has arrived, and the agent need not know.
TEST(HelperFailsOpen, whenTheApplicationDoesNotAnswer)
{
    const ScratchHome home;
    StandInServer server(home, keepingWaiting());
    expectSilence(HelperProcess::run(
        {.arguments = hookArguments("claude", "PreToolUse"), .home = home.path()}, toolEvent));
    EXPECT_EQ(server.waitForLines(1).size(), 1U);
}

TEST(HelperLife, endsWhenThePayloadIsThereThoughThePipeStaysOpen)
{
    const ScratchHome home;
    StandInServer server(home, acknowledging());
    HelperProcess helper({.arguments = hookArguments("claude", "PreToolUse"), .home = home.path()});
    helper.write(toolEvent);
    expectSilence(helper.wait());
    EXPECT_EQ(server.lines().size(), 1U);
}

TEST(HelperLife, endsWhenThePayloadNeverComes)
{
    const ScratchHome home;
    HelperProcess helper({.arguments = hookArguments("claude", "PreToolUse"), .home = home.path()});
    helper.write("{\"session_id\":");
    expectSilence(helper.wait());
}

TEST(HelperLife, endsQuietlyOnEachSignalOfTheAgent)
{
    for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
        SCOPED_TRACE(signal);
        const ScratchHome home;
        StandInServer server(home, keepingWaiting());
        HelperProcess helper(
            {.arguments = hookArguments("copilot", "permissionRequest"), .home = home.path()});
        helper.write(R"({"toolName":"bash","toolInput":{"command":"make"}})");
        helper.closeInput();
        server.waitForLines(1);
        helper.signal(signal);
        expectSilence(helper.wait());
        EXPECT_TRUE(server.clientGone());
    }
}

TEST(HelperLife, endsWhenNobodyReadsItsAnswer)
{
    const ScratchHome home;
    StandInServer server(home, keepingWaiting());
    HelperProcess helper({.arguments = hookArguments("claude", "PermissionRequest"),
                          .home = home.path(),
                          .readsOutput = false});
    helper.write(toolEvent);
    helper.closeInput();
    EXPECT_TRUE(helper.wait().exitedWithZero());
}

// The agent is a shell here that starts the helper as its child and is killed while the request waits. Its
// own reader of stdout lives on: only the parent's death can tell.
TEST(HelperLife, endsWhenItsAgentIsKilled)
{
    const std::string runHook = "\"$@\" < \"$HOME/payload.json\"";
    // Started by the agent itself, and through a shell of the agent that waits for the hook.
    const std::vector<std::vector<std::string>> agents = {
        {"/bin/sh", "-c", runHook + " & wait", "agent"},
        {"/usr/bin/env", "sh", "-c", "/bin/sh -c '" + runHook + "; :' hook \"$@\" & wait", "agent"},
    };
    for (const auto& prefix : agents) {
        SCOPED_TRACE(prefix[0]);
        const ScratchHome home;
        home.write("payload.json", toolEvent);
        StandInServer server(home, keepingWaiting());
        HelperProcess process({.arguments = hookArguments("claude", "PermissionRequest"),
                               .home = home.path(),
                               .prefix = prefix});
        server.waitForLines(1);
        process.signal(SIGKILL);
        EXPECT_TRUE(server.clientGone());
        EXPECT_EQ(process.wait().out, "");
    }
}

TEST(HelperLife, readsAHugePayloadToItsEnd)
{
    const ScratchHome home;
    StandInServer server(home, acknowledging());
    constexpr std::size_t megabytes = 100;
    HelperProcess helper({.arguments = hookArguments("claude", "PostToolUse"), .home = home.path()});
    ASSERT_TRUE(helper.write(R"({"session_id":"s","tool_name":"Bash","tool_response":{"stdout":")"));
    const std::string block(1 << 20, 'x');
    bool readAll = true;
    for (std::size_t i = 0; i < megabytes && readAll; ++i)
        readAll = helper.write(block);
    EXPECT_TRUE(readAll);
    helper.write(R"("},"tool_input":{"command":"cat big"}})");
    helper.closeInput();
    expectSilence(helper.wait());
    const std::vector<std::string> lines = server.lines();
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_EQ(nlohmann::json::parse(lines.front()).value("command", ""), "cat big");
}

TEST(HelperLife, leavesNothingBehind)
{
    const ScratchHome home;
    {
        StandInServer server(home, acknowledging());
        HelperProcess::run({.arguments = hookArguments("claude", "PreToolUse"), .home = home.path()},
                           toolEvent);
    }
    ::unlink(home.socketPath().c_str());
    // Only the folders that the test made for the socket; rmdir refuses any that is not empty.
    EXPECT_EQ(::rmdir((home.path() + "/Library/Application Support/Nibbo").c_str()), 0);
    EXPECT_EQ(::rmdir((home.path() + "/Library/Application Support").c_str()), 0);
    EXPECT_EQ(::rmdir((home.path() + "/Library").c_str()), 0);
    EXPECT_EQ(::rmdir(home.path().c_str()), 0);
}

TEST(HelperLife, tellsAPersonWhatItIs)
{
    const HelperResult help = HelperProcess::run({.arguments = {"--help"}, .home = ""}, "");
    EXPECT_TRUE(help.exitedWithZero());
    EXPECT_NE(help.out.find("--source AGENT --event EVENT"), std::string::npos);
    const HelperResult version = HelperProcess::run({.arguments = {"--version"}, .home = ""}, "");
    EXPECT_TRUE(version.out.starts_with("nibbo-bridge ")) << version.out;
}

} // namespace
} // namespace nibbo::bridge::test
