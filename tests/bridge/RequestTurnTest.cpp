// Hooks of one session that run side by side: what one of them reports must not take away the card on which
// another waits, where the agent's own prompt comes only after its hook.
#include "HelperProcess.h"
#include "StandInServer.h"

#include <gtest/gtest.h>

#include <csignal>
#include <memory>

namespace nibbo::bridge::test {
namespace {

std::string codexHook(const std::string& session, const std::string& command)
{
    return R"({"session_id":")" + session + R"(","tool_name":"Bash","tool_input":{"command":")" + command +
           "\"}}";
}

class RequestTurns : public testing::Test
{
protected:
    std::unique_ptr<HelperProcess> start(const std::string& agent, const std::string& event,
                                         const std::string& payload)
    {
        auto helper = std::make_unique<HelperProcess>(
            HelperProcess::Options{.arguments = hookArguments(agent, event), .home = m_home.path()});
        helper->write(payload);
        helper->closeInput();
        return helper;
    }

    void runToEnd(const std::string& agent, const std::string& event, const std::string& payload)
    {
        EXPECT_TRUE(start(agent, event, payload)->wait().exitedWithZero());
    }

    /// How many of the lines so far hold this text.
    long count(StandInServer& server, const std::string& text)
    {
        long found = 0;
        for (const std::string& line : server.lines())
            found += line.find(text) != std::string::npos ? 1 : 0;
        return found;
    }

    ScratchHome m_home;
};

StandInServer::Answer keepingRequests()
{
    return [](const std::string& line) -> std::optional<std::string> {
        if (line.find("approvalRequired") != std::string::npos)
            return std::nullopt;
        return "{\"ok\":true}\n";
    };
}

TEST_F(RequestTurns, keepStepsOfTheSameSessionBack)
{
    StandInServer server(m_home, keepingRequests());
    const auto request = start("codex", "PermissionRequest", codexHook("s", "asked"));
    server.waitForLines(1);
    runToEnd("codex", "PreToolUse", codexHook("s", "step"));
    runToEnd("codex", "PostToolUse", codexHook("s", "step"));
    EXPECT_EQ(count(server, "step"), 0);
    // What concerns others, or ends the turn, is told.
    runToEnd("codex", "PreToolUse", codexHook("t", "step"));
    runToEnd("qwen", "PreToolUse", codexHook("s", "step"));
    EXPECT_EQ(count(server, "step"), 2);
    runToEnd("codex", "UserPromptSubmit", R"({"session_id":"s","prompt":"another prompt"})");
    runToEnd("codex", "Stop", R"({"session_id":"s","last_assistant_message":"last words"})");
    EXPECT_EQ(count(server, "another prompt"), 1);
    EXPECT_EQ(count(server, "last words"), 1);
}

// Killed or answered: either way the session's steps are told again.
TEST_F(RequestTurns, endWithTheirHelper)
{
    StandInServer server(m_home, keepingRequests());
    const auto request = start("codex", "PermissionRequest", codexHook("s", "asked"));
    server.waitForLines(1);
    request->signal(SIGKILL);
    request->wait();
    runToEnd("codex", "PreToolUse", codexHook("s", "step"));
    EXPECT_EQ(count(server, "step"), 1);
}

// In Claude the dialog is up together with the hook, and a step may well mean that the user has answered
// there.
TEST_F(RequestTurns, doNotExistWhereTheTerminalAsksAsWell)
{
    StandInServer server(m_home, keepingRequests());
    const auto request = start("claude", "PermissionRequest", codexHook("s", "asked"));
    server.waitForLines(1);
    runToEnd("claude", "PreToolUse", codexHook("s", "step"));
    EXPECT_EQ(count(server, "step"), 1);
}

TEST_F(RequestTurns, passFromOneRequestToTheNext)
{
    StandInServer server(m_home, keepingRequests());
    const auto first = start("codex", "PermissionRequest", codexHook("s", "asked"));
    server.waitForLines(1);
    const auto second = start("codex", "PermissionRequest", codexHook("s", "asked"));
    const auto third = start("codex", "PermissionRequest", codexHook("s", "asked"));
    // However long that takes them, the others do not come before the first has ended.
    EXPECT_EQ(server.lines().size(), 1U);
    first->signal(SIGTERM);
    EXPECT_TRUE(first->wait().exitedWithZero());
    server.waitForLines(2);
    EXPECT_EQ(server.lines().size(), 2U);
}

TEST_F(RequestTurns, areTakenOnceMoreWhenCrowdedOutAtOnce)
{
    int requests = 0;
    StandInServer server(m_home, [&](const std::string&) {
        return std::string(++requests == 1 ? "" : "{\"approval\":\"granted\"}\n");
    });
    const HelperResult result =
        start("gemini", "BeforeTool",
              R"({"session_id":"s","tool_name":"run_shell_command","tool_input":{"command":"x"}})")
            ->wait();
    EXPECT_EQ(result.out, "{\"decision\":\"allow\"}\n");
    EXPECT_EQ(server.lines().size(), 2U);
}

} // namespace
} // namespace nibbo::bridge::test
