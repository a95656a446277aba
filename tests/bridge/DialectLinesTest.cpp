// What each agent's hooks send, and the line that the application gets of it, by the real helper and a real
// socket.
#include "HelperProcess.h"
#include "StandInServer.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>

namespace nibbo::bridge::test {
namespace {

using Json = nlohmann::json;

const std::string payloads = NIBBO_SOURCE_DIR "/tests/bridge/payloads/";

std::string contentsOf(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    EXPECT_TRUE(file) << path;
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

struct Row
{
    std::string agent;
    std::string event;
    std::string payload; // the name of a file, or the text itself
    std::string line;    // without the provider; "-" for none
};

std::vector<Row> capturedRows()
{
    std::vector<Row> rows;
    std::istringstream table(contentsOf(payloads + "lines.tsv"));
    for (std::string text; std::getline(table, text);) {
        if (text.empty() || text.front() == '#')
            continue;
        std::istringstream columns(text);
        Row row;
        std::getline(columns, row.agent, '\t');
        std::getline(columns, row.event, '\t');
        std::getline(columns, row.payload, '\t');
        std::getline(columns, row.line, '\t');
        rows.push_back(row);
    }
    return rows;
}

class DialectLines : public testing::Test
{
protected:
    /// Runs a hook and gives the lines that came of it. Requests get a reply that is no verdict.
    std::vector<Json> linesFor(const Row& row)
    {
        ScratchHome home;
        return linesFor(row, home);
    }

    std::vector<Json> linesFor(const Row& row, const ScratchHome& home)
    {
        StandInServer server(home, [](const std::string&) { return "{\"ok\":true}\n"; });
        const std::string payload = row.payload.starts_with('{')
                                        ? row.payload
                                        : contentsOf(payloads + row.agent + '/' + row.payload + ".json");
        const HelperResult result = HelperProcess::run(
            {.arguments = hookArguments(row.agent, row.event), .home = home.path()}, payload);
        EXPECT_TRUE(result.exitedWithZero());
        EXPECT_EQ(result.err, "");
        // Only Cursor wants some JSON where nobody decided.
        const bool wantsJson =
            row.agent == "cursor" && row.event.starts_with("before") && row.event.ends_with("Execution");
        EXPECT_EQ(result.out, wantsJson ? "{}\n" : "");
        std::vector<Json> lines;
        for (const std::string& line : server.lines()) {
            lines.push_back(Json::parse(line, nullptr, false));
            EXPECT_EQ(lines.back().value("provider", ""), row.agent) << line;
            lines.back().erase("provider");
        }
        return lines;
    }
};

TEST_F(DialectLines, ofCapturedPayloads)
{
    const std::vector<Row> rows = capturedRows();
    ASSERT_GT(rows.size(), 150U);
    for (const Row& row : rows) {
        SCOPED_TRACE(row.agent + ' ' + row.payload);
        const std::vector<Json> lines = linesFor(row);
        if (row.line == "-") {
            EXPECT_TRUE(lines.empty()) << lines.front();
            continue;
        }
        ASSERT_EQ(lines.size(), 1U);
        EXPECT_EQ(lines.front(), Json::parse(row.line));
    }
}

// What was not caught in a run, or is worth saying beside the captured ones.
TEST_F(DialectLines, ofOtherPayloads)
{
    const std::vector<Row> rows = {
        // A prompt that the agent made itself is not shown as the user's words.
        {"claude", "UserPromptSubmit",
         R"({"session_id":"s","prompt":"<task-notification>done</task-notification>"})",
         R"({"type":"thinking","sessionId":"s"})"},
        {"copilot", "userPromptSubmitted", R"({"sessionId":"s","prompt":"<system_notification>x"})",
         R"({"type":"thinking","sessionId":"s"})"},
        // Plans and questions are the user's to answer, not to allow.
        {"claude", "PermissionRequest",
         R"({"session_id":"s","tool_name":"ExitPlanMode","tool_input":{"plan":"1. x"}})",
         R"({"type":"inputRequired","message":"Claude asks in the terminal","sessionId":"s"})"},
        {"gemini", "BeforeTool",
         R"({"session_id":"s","tool_name":"ask_user","tool_input":{"questions":[{"question":"Red?"}]}})",
         R"({"type":"inputRequired","message":"Red?","sessionId":"s"})"},
        // An answered question lets the agent go on.
        {"claude", "PostToolUse", R"({"session_id":"s","tool_name":"AskUserQuestion","tool_input":{}})",
         R"({"type":"thinking","sessionId":"s"})"},
        // Statuses that are not known are not told.
        {"claude", "PostToolUse",
         R"({"tool_name":"Bash","tool_input":{"command":"x"},"tool_response":{"interrupted":true}})",
         R"({"type":"coding","toolName":"Bash","phase":"post","command":"x"})"},
        {"claude", "PostToolUse",
         R"({"tool_name":"Bash","tool_input":{"command":"x"},"tool_response":{"backgroundTaskId":"b"}})",
         R"({"type":"coding","toolName":"Bash","phase":"post","command":"x"})"},
        {"codex", "PostToolUse",
         R"({"tool_name":"Bash","tool_input":{"command":"x"},"tool_response":"exit code 4"})",
         R"({"type":"coding","toolName":"Bash","phase":"post","command":"x"})"},
        // The command's own words do not count as its status.
        {"copilot", "postToolUse",
         R"({"toolName":"bash","toolArgs":{"command":"x"},"toolResult":{"textResultForLlm":)"
         R"("says exit code 9\n<shellId: 1 completed with exit code 3>"}})",
         R"({"type":"coding","toolName":"bash","phase":"post","exitCode":3,"command":"x"})"},
        {"gemini", "AfterTool",
         R"({"tool_name":"run_shell_command","tool_input":{"command":"x"},"tool_response":{"llmContent":"Exit Code: 3"}})",
         R"({"type":"coding","toolName":"Bash","phase":"post","exitCode":3,"command":"x"})"},
        {"codebuddy", "PostToolUse",
         R"({"tool_name":"Bash","tool_input":{"command":"x"},"tool_response":{"exitCode":99999999999}})",
         R"({"type":"coding","toolName":"Bash","phase":"post","command":"x"})"},
        // A tool that the user broke off ends the turn.
        {"claude", "PostToolUseFailure", R"({"session_id":"s","tool_name":"Bash","is_interrupt":true})",
         R"({"type":"agentStopped","message":"Interrupted","sessionId":"s"})"},
        {"cursor", "stop", R"({"conversation_id":"c","status":"aborted"})",
         R"({"type":"agentStopped","message":"Cursor was interrupted","sessionId":"c"})"},
        {"cursor", "stop", R"({"conversation_id":"c","status":"error"})",
         R"({"type":"taskFailed","message":"Cursor failed","sessionId":"c"})"},
        {"copilot", "sessionEnd", R"({"sessionId":"s","reason":"error"})",
         R"({"type":"taskFailed","message":"Copilot CLI ended with an error","sessionId":"s"})"},
        {"cline", "TaskComplete", R"({"taskId":"t","turn":{"outputText":"No.","status":"failed"}})",
         R"({"type":"taskFailed","message":"No.","say":"No.","sessionId":"t"})"},
        // What no list of trusted commands may take for a command line.
        {"claude", "PermissionRequest",
         R"({"cwd":"/p","tool_name":"Write","tool_input":{"file_path":"git status/../x"}})",
         R"({"type":"approvalRequired","message":"Write","toolName":"Write","cwd":"/p","command":"/p/git status/../x"})"},
        {"claude", "PermissionRequest",
         R"({"tool_name":"mcp__git__status","tool_input":{"b":[1],"a":"git status"}})",
         R"({"type":"approvalRequired","message":"mcp__git__status","toolName":"mcp__git__status",)"
         R"("command":"[mcp__git__status] {\"a\":\"git status\",\"b\":[1]}"})"},
        {"claude", "PermissionRequest", R"({"tool_name":"WebFetch","tool_input":{"url":"git status"}})",
         R"({"type":"approvalRequired","message":"WebFetch","toolName":"WebFetch","command":"[WebFetch] git status"})"},
        {"claude", "PermissionRequest", R"({"tool_name":"git status"})",
         R"({"type":"approvalRequired","message":"git status","toolName":"git status","command":"[git status] "})"},
        // A second place could be the one that runs: then all of it is shown and judged.
        {"claude", "PermissionRequest",
         R"({"tool_name":"Bash","tool_input":{"command":"rm -rf x","commands":["ls"]}})",
         R"({"type":"approvalRequired","message":"Bash","toolName":"Bash",)"
         R"("command":"[Bash] {\"command\":\"rm -rf x\",\"commands\":[\"ls\"]}"})"},
        {"claude", "PermissionRequest",
         R"({"tool_name":"Bash","tool_input":{"commands":[{"command":"git","args":["push"]}]}})",
         R"({"type":"approvalRequired","message":"Bash","toolName":"Bash",)"
         R"("command":"[Bash] {\"commands\":[{\"args\":[\"push\"],\"command\":\"git\"}]}"})"},
        {"claude", "PermissionRequest",
         R"({"tool_name":"WebFetch","tool_input":{"urls":["https://a","https://b"]}})",
         R"({"type":"approvalRequired","message":"WebFetch","toolName":"WebFetch",)"
         R"("command":"[WebFetch] {\"urls\":[\"https://a\",\"https://b\"]}"})"},
        {"codex", "PermissionRequest",
         R"({"cwd":"/p","tool_name":"apply_patch","tool_input":{"command":"*** Begin Patch\n*** Delete File: a\n)"
         R"(*** Update File: /b\n*** Move to: c\n*** End Patch"}})",
         R"({"type":"approvalRequired","message":"apply_patch","toolName":"apply_patch","cwd":"/p",)"
         R"x("command":"/p/a (deleted)\n/b\n/p/c (new name)"})x"},
        // Copilot asks its hook even for what it would never ask its user.
        {"copilot", "permissionRequest",
         R"({"hookName":"permissionRequest","toolName":"view","toolInput":{"path":"/x"}})", "-"},
        // Several commands of one call are shown as what they are: one after the other.
        {"cline", "PreToolUse", R"({"tool_call":{"name":"run_commands","input":{"commands":["a","b"]}}})",
         R"({"type":"approvalRequired","toolName":"Bash","command":"a && b","message":)"
         R"("Bash · Deny stops Cline's whole run; after Allow, Cline may still ask in the terminal"})"},
        // A subagent of Cline, told by its parent; everybody has an agent id there.
        {"cline", "PreToolUse",
         R"({"taskId":"t","agent_id":"a","parent_agent_id":"p","tool_call":{"name":"read_files","input":{}}})",
         R"({"type":"coding","toolName":"Read","sessionId":"t:a"})"},
        // The requests of subagents are cards of their own.
        {"claude", "PermissionRequest",
         R"({"session_id":"s","agent_id":"a","tool_name":"Bash","tool_input":{"command":"x"}})",
         R"({"type":"approvalRequired","message":"Bash","toolName":"Bash","sessionId":"s:a","command":"x"})"},
        {"cursor", "beforeShellExecution", "{\"command\":\"x\",\"cwd\":\"\",\"workspace_roots\":[\"/w\"]}",
         R"({"type":"approvalRequired","message":"Bash · after Allow, Cursor may still ask","toolName":"Bash",)"
         R"("cwd":"/w","command":"x"})"},
        // Fields of another type than promised count as absent.
        {"claude", "PreToolUse", R"({"session_id":7,"cwd":[],"tool_name":"Bash","tool_input":"rm"})",
         R"({"type":"coding","toolName":"Bash"})"},
        {"claude", "Stop", R"({"last_assistant_message":{"a":1},"transcript_path":3})",
         R"({"type":"responding"})"},
        {"kimi", "UserPromptSubmit", R"({"prompt":[1,{"text":"a"},null,{"text":"b"}]})",
         R"({"type":"thinking","message":"a b"})"},
        // A request for nothing is no request.
        {"claude", "PermissionRequest", R"({"session_id":"s"})", "-"},
        {"claude", "NoSuchEvent", R"({"session_id":"s"})", "-"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.agent + ' ' + row.event + ' ' + row.payload);
        const std::vector<Json> lines = linesFor(row);
        if (row.line == "-") {
            EXPECT_TRUE(lines.empty()) << lines.front();
            continue;
        }
        ASSERT_EQ(lines.size(), 1U);
        EXPECT_EQ(lines.front(), Json::parse(row.line));
    }
}

TEST_F(DialectLines, endTheSessionOfASubagentThatHasFinished)
{
    const std::vector<std::pair<std::string, std::string>> hooks = {
        {"PostToolUse",
         R"({"session_id":"s","tool_name":"Agent","tool_response":{"status":"completed","agentId":"a1"}})"},
        {"UserPromptSubmit",
         R"({"session_id":"s","prompt":"<task-notification>\n<task-id>a1</task-id>\n<status>completed</status>"})"},
    };
    for (const auto& [event, payload] : hooks) {
        SCOPED_TRACE(event);
        const std::vector<Json> lines = linesFor({"claude", event, payload, {}});
        ASSERT_EQ(lines.size(), 2U);
        EXPECT_EQ(lines[0].value("type", ""), "agentStopped");
        EXPECT_EQ(lines[0].value("sessionId", ""), "s:a1");
        EXPECT_EQ(lines[1].value("sessionId", ""), "s");
    }
}

TEST_F(DialectLines, takeTheLastWordsFromTheTranscript)
{
    ScratchHome home;
    const std::string claude = home.write("claude.jsonl", R"({"type":"user","message":{"content":"hello"}}
{"type":"assistant","message":{"content":[{"type":"text","text":"First."}]}}
{"type":"assistant","message":{"content":[{"type":"text","text":"Second."},{"type":"text","text":"Third."}]}}
{"type":"assistant","isSidechain":true,"message":{"content":[{"type":"text","text":"A subagent's."}]}}
{"type":"assistant","message":{"content":[{"type":"tool_use","name":"Bash"}]}}
)");
    const std::string qwen = home.write(
        "qwen.jsonl",
        R"({"type":"assistant","message":{"parts":[{"thought":true,"text":"Hm."},{"text":"Done."}]}})");
    const std::string copilot =
        home.write("copilot.jsonl", R"({"type":"assistant.message","data":{"content":"Written."}}
{"type":"session.idle"}
)");
    const std::string codex = home.write(
        "codex.jsonl",
        R"({"type":"response_item","payload":{"type":"message","role":"assistant","content":[{"type":"output_text","text":"Ok."}]}})");
    home.write(
        ".kimi-code/sessions/wd_1/session_k/agents/main/wire.jsonl",
        R"({"type":"context.append_loop_event","event":{"type":"content.part","part":{"type":"text","text":"Kimi's."}}})");
    const std::vector<Row> rows = {
        {"claude", "Stop", R"({"transcript_path":")" + claude + "\"}", "Second.\nThird."},
        {"claude", "Stop", R"({"last_assistant_message":"Told.","transcript_path":")" + claude + "\"}",
         "Told."},
        {"qwen", "Stop", R"({"transcript_path":")" + qwen + "\"}", "Done."},
        {"copilot", "agentStop", R"({"transcriptPath":")" + copilot + "\"}", "Written."},
        {"codex", "Stop", R"({"last_assistant_message":null,"transcript_path":")" + codex + "\"}", "Ok."},
        {"kimi", "Stop", R"({"session_id":"session_k"})", "Kimi's."},
        {"kimi", "Stop", R"({"session_id":"../wd_1/session_k"})", ""},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.agent + ' ' + row.payload);
        std::filesystem::remove(home.socketPath());
        const std::vector<Json> lines = linesFor(row, home);
        ASSERT_EQ(lines.size(), 1U);
        EXPECT_EQ(lines.front().value("type", ""), "responding");
        EXPECT_EQ(lines.front().value("say", ""), row.line);
    }
}

} // namespace
} // namespace nibbo::bridge::test
