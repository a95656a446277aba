// A request that waits, the user's verdict, and what the agent gets to read.
#include "HelperProcess.h"
#include "StandInServer.h"

#include <gtest/gtest.h>

#include <array>
#include <nlohmann/json.hpp>

namespace nibbo::bridge::test {
namespace {

struct Row
{
    std::string agent;
    std::string event;
    std::string payload;
    std::string granted;
    std::string denied;
    std::string none;
};

const std::string claudeAllow =
    R"({"hookSpecificOutput":{"hookEventName":"PermissionRequest","decision":{"behavior":"allow"}}})"
    "\n";
const std::string claudeDeny =
    R"({"hookSpecificOutput":{"hookEventName":"PermissionRequest","decision":{"behavior":"deny","message":"The user denied this on Nibbo."}}})"
    "\n";
const std::string bashRequest = R"({"session_id":"s","tool_name":"Bash","tool_input":{"command":"make"}})";

const std::vector<Row>& rows()
{
    static const std::vector<Row> table = {
        {"claude", "PermissionRequest", bashRequest, claudeAllow, claudeDeny, ""},
        {"qwen", "PermissionRequest", bashRequest, claudeAllow, claudeDeny, ""},
        {"qoder", "PermissionRequest", bashRequest, claudeAllow, claudeDeny, ""},
        {"codebuddy", "PermissionRequest", bashRequest, claudeAllow, claudeDeny, ""},
        {"codex", "PermissionRequest", bashRequest, claudeAllow, claudeDeny, ""},
        {"gemini", "BeforeTool", R"({"tool_name":"run_shell_command","tool_input":{"command":"make"}})",
         "{\"decision\":\"allow\"}\n",
         "{\"decision\":\"deny\",\"reason\":\"The user denied this on Nibbo.\"}\n", ""},
        {"cursor", "beforeShellExecution", R"({"command":"make","cwd":"/p"})", "{\"permission\":\"allow\"}\n",
         R"({"permission":"deny","user_message":"Denied on Nibbo.","agent_message":"The user denied this on Nibbo."})"
         "\n",
         "{}\n"},
        {"cursor", "beforeMCPExecution", R"({"tool_name":"make","tool_input":"{}"})",
         "{\"permission\":\"allow\"}\n",
         R"({"permission":"deny","user_message":"Denied on Nibbo.","agent_message":"The user denied this on Nibbo."})"
         "\n",
         "{}\n"},
        {"copilot", "permissionRequest", R"({"toolName":"bash","toolInput":{"command":"make"}})",
         "{\"behavior\":\"allow\"}\n",
         "{\"behavior\":\"deny\",\"message\":\"The user denied this on Nibbo.\"}\n", ""},
        {"cline", "PreToolUse", R"({"tool_call":{"name":"run_commands","input":{"commands":["make"]}}})",
         "{\"cancel\":false}\n", "{\"cancel\":true,\"errorMessage\":\"The user denied this on Nibbo.\"}\n",
         ""},
        {"opencode", "permission.asked",
         R"({"properties":{"permission":"bash","metadata":{"command":"make"}}})", "{\"reply\":\"once\"}\n",
         "{\"reply\":\"reject\"}\n", ""},
    };
    return table;
}

HelperResult answered(const Row& row, const std::string& reply)
{
    ScratchHome home;
    StandInServer server(home, [&](const std::string&) { return reply; });
    const HelperResult result = HelperProcess::run(
        {.arguments = hookArguments(row.agent, row.event), .home = home.path()}, row.payload);
    const std::vector<std::string> lines = server.lines();
    EXPECT_FALSE(lines.empty());
    for (const std::string& line : lines)
        EXPECT_NE(line.find("\"approvalRequired\""), std::string::npos) << line;
    return result;
}

TEST(Verdicts, reachEachAgentInItsOwnForm)
{
    for (const Row& row : rows()) {
        const std::array<std::pair<std::string, std::string>, 8> replies = {{
            {"{\"approval\":\"granted\"}\n", row.granted},
            {"{\"approval\":\"denied\"}\n", row.denied},
            {"", row.none},
            {"{\"ok\":true}\n", row.none},
            {"{\"approval\":\"GRANTED\"}\n", row.none},
            {"{\"approval\":true}\n", row.none},
            {"granted\n", row.none},
            // Cut off by the application's death: not a whole line, not a verdict.
            {"{\"approval\":\"granted\"}", row.none},
        }};
        for (const auto& [reply, expected] : replies) {
            SCOPED_TRACE(row.agent + ' ' + row.event + ' ' + reply);
            const HelperResult result = answered(row, reply);
            EXPECT_TRUE(result.exitedWithZero());
            EXPECT_EQ(result.out, expected);
            EXPECT_EQ(result.err, "");
        }
    }
}

TEST(Verdicts, areNotAskedForWithoutAnApplication)
{
    for (const Row& row : rows()) {
        SCOPED_TRACE(row.agent);
        const ScratchHome home;
        const HelperResult result = HelperProcess::run(
            {.arguments = hookArguments(row.agent, row.event), .home = home.path()}, row.payload);
        EXPECT_TRUE(result.exitedWithZero());
        EXPECT_EQ(result.out, row.none);
        EXPECT_EQ(result.err, "");
    }
}

// The reply may come in pieces; the line feed ends it.
TEST(Verdicts, waitForTheWholeLine)
{
    const ScratchHome home;
    std::string line = R"({"approval":"granted"})";
    line += std::string(1000, ' ');
    StandInServer server(home, [&](const std::string&) { return line + '\n'; });
    const HelperResult result = HelperProcess::run(
        {.arguments = hookArguments("claude", "PermissionRequest"), .home = home.path()}, bashRequest);
    EXPECT_EQ(result.out, claudeAllow);
}

// Nobody can decide on a command that they cannot read to its end: the terminal asks.
TEST(Verdicts, areNotTakenOnWhatCannotBeShownWhole)
{
    const std::string longCommand = "git status; " + std::string(70'000, 'x') + "; rm -rf ~";
    std::string manyCommands = R"({"tool_call":{"name":"run_commands","input":{"commands":["a")";
    for (int i = 0; i < 3000; ++i)
        manyCommands += ",\"b\"";
    manyCommands += "]}}}";
    const std::vector<Row> requests = {
        {"claude",
         "PermissionRequest",
         R"({"tool_name":"Bash","tool_input":{"command":")" + longCommand + "\"}}",
         {},
         {},
         {}},
        {"codex",
         "PermissionRequest",
         R"({"tool_name":"apply_patch","tool_input":{"command":"*** Update File: a\n)" + longCommand +
             R"(\n*** Delete File: b"}})",
         {},
         {},
         {}},
        {"cline", "PreToolUse", manyCommands, {}, {}, {}},
    };
    for (const Row& row : requests) {
        SCOPED_TRACE(row.agent);
        const ScratchHome home;
        StandInServer server(home, [](const std::string&) { return "{\"approval\":\"granted\"}\n"; });
        const HelperResult result = HelperProcess::run(
            {.arguments = hookArguments(row.agent, row.event), .home = home.path()}, row.payload);
        EXPECT_EQ(result.out, "");
        const std::vector<std::string> lines = server.lines();
        ASSERT_EQ(lines.size(), 1U);
        EXPECT_LE(lines.front().size(), 65536U);
        EXPECT_EQ(nlohmann::json::parse(lines.front()).value("type", ""), "inputRequired");
    }
}

} // namespace
} // namespace nibbo::bridge::test
