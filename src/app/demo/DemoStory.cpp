#include "app/demo/DemoStory.h"

#include <array>

namespace nibbo {
namespace {

constexpr std::array story{
    DemoBeat{3, "claude", "SessionStart", R"({"source":"startup"})", "Claude starts"},
    DemoBeat{5, "claude", "UserPromptSubmit",
             R"({"prompt":"The total is wrong once a coupon has expired. Find out why."})", "Claude thinks"},
    DemoBeat{9, "claude", "PreToolUse",
             R"({"tool_name":"Grep","tool_input":{"pattern":"expiresAt","path":"src"}})", "Claude searches"},
    DemoBeat{11, "claude", "PostToolUse",
             R"({"tool_name":"Grep","tool_input":{"pattern":"expiresAt"},"tool_response":{"numFiles":3}})",
             ""},
    DemoBeat{12, "claude", "PreToolUse",
             R"({"tool_name":"Read","tool_input":{"file_path":"src/cart/Coupon.cpp"}})", "Claude reads"},
    DemoBeat{15, "codex", "SessionStart", R"({"source":"startup","model":"demo"})", ""},
    DemoBeat{15.5, "codex", "UserPromptSubmit", R"({"prompt":"Write the release notes."})", "Codex thinks"},
    DemoBeat{
        18, "claude", "PostToolUse",
        R"({"tool_name":"Read","tool_input":{"file_path":"src/cart/Coupon.cpp"},"tool_response":{"type":"text"}})",
        ""},
    DemoBeat{
        20, "codex", "PreToolUse",
        R"({"tool_name":"Bash","tool_input":{"command":"git log --oneline v2.3..HEAD"},"tool_use_id":"c1"})",
        "Codex runs git"},
    DemoBeat{
        22.5, "codex", "PostToolUse",
        R"({"tool_name":"Bash","tool_input":{"command":"git log --oneline v2.3..HEAD"},"tool_response":"ok","tool_use_id":"c1"})",
        ""},
    DemoBeat{
        25, "claude", "PreToolUse",
        R"({"tool_name":"WebFetch","tool_input":{"url":"https://en.cppreference.com/w/cpp/chrono","prompt":"time zones"}})",
        "Claude looks it up"},
    DemoBeat{29, "claude", "PreToolUse", R"({"tool_name":"TodoWrite","tool_input":{"todos":[]}})",
             "Claude plans"},
    DemoBeat{32, "codex", "Stop", R"({"last_assistant_message":"The release notes are in NOTES.md."})",
             "Codex is done"},
    DemoBeat{
        37, "claude", "PreToolUse",
        R"({"tool_name":"Edit","tool_input":{"file_path":"src/cart/Coupon.cpp","old_string":"a","new_string":"b"}})",
        "Claude edits"},
    DemoBeat{41, "claude", "PreToolUse",
             R"({"tool_name":"Bash","tool_input":{"command":"ctest --preset dev"}})",
             "Claude runs the tests"},
    DemoBeat{
        46, "claude", "PermissionRequest",
        R"({"tool_name":"Bash","tool_input":{"command":"rm -rf build/dev && cmake --preset dev && cmake --build --preset dev","description":"Build from scratch"}})",
        "Claude asks: Deny or Allow?"},
    DemoBeat{
        57, "claude", "PostToolUse",
        R"({"tool_name":"Bash","tool_input":{"command":"cmake --build --preset dev"},"tool_response":{"stdout":"100% tests passed"}})",
        ""},
    DemoBeat{60, "copilot", "sessionStart", R"({"source":"new"})", ""},
    DemoBeat{61, "copilot", "userPromptSubmitted", R"({"prompt":"Deploy to staging"})", "Copilot thinks"},
    DemoBeat{64, "claude", "PreCompact", R"({"trigger":"auto"})", "Claude compacts its context"},
    DemoBeat{68, "copilot", "preToolUse", R"({"toolName":"bash","toolArgs":{"command":"kubectl get pods"}})",
             "Copilot runs a command"},
    DemoBeat{
        74, "claude", "Stop",
        R"({"last_assistant_message":"Fixed: the expiry was compared in local time. All tests pass.","stop_hook_active":false})",
        "Claude answers"},
    DemoBeat{73, "copilot", "sessionEnd", R"({"reason":"error"})", "Copilot fails"},
    DemoBeat{78.5, "copilot", "sessionEnd", R"({"reason":"complete"})", ""},
    DemoBeat{
        79, "claude", "Stop",
        R"({"last_assistant_message":"Fixed: the expiry was compared in local time. All tests pass.","stop_hook_active":false})",
        "Claude answers"},
    DemoBeat{87, "claude", "Notification",
             R"({"message":"Claude is waiting for your input","notification_type":"idle_prompt"})",
             "Claude waits for your input"},
    DemoBeat{94, "claude", "SessionEnd", R"({"reason":"prompt_input_exit"})",
             "Nobody works: the pet lives for itself"},
    DemoBeat{95, "codex", "SessionEnd", R"({"reason":"exit"})", ""},
};

} // namespace

std::span<const DemoBeat> demoStory()
{
    return story;
}

} // namespace nibbo
