#include "settings/view/AgentFacts.h"

#include <algorithm>
#include <array>

namespace nibbo {
namespace {

constexpr TextPair everything{u"Sees prompts, tools, answers and permission requests.",
                              u"可见：提问、工具、回答和授权请求。"};
constexpr TextPair firstWins{u"Answer here or in the terminal; whichever comes first counts.",
                             u"可在这里或终端里回答，先答者有效。"};
constexpr TextPair denyOnly{u"Deny holds; after Allow the agent may still ask in its terminal.",
                            u"拒绝有效；允许后 agent 仍可能在终端里再问一次。"};

constexpr auto facts = std::to_array<AgentFacts>({
    {u"claude", everything, firstWins},
    {u"codex",
     everything,
     {u"Answers count once you have trusted the hooks inside Codex with /hooks.",
      u"先在 Codex 里用 /hooks 信任这些 hook，回答才有效。"}},
    {u"gemini", {u"Sees prompts, tools and answers.", u"可见：提问、工具和回答。"}, denyOnly},
    {u"opencode", everything, firstWins},
    {u"qwen",
     everything,
     {u"Asks here first; after about a minute and a half it asks in the terminal.",
      u"先在这里询问，约一分半后转到终端询问。"}},
    {u"qoder", everything, firstWins},
    {u"codebuddy", everything, {u"Asks here first, then in the terminal.", u"先在这里询问，再到终端询问。"}},
    {u"kimi",
     {u"Older versions only; newer ones read a file of another form.",
      u"仅限旧版本；新版本读取另一种格式的文件。"},
     {u"Requests are answered in the terminal.", u"授权请求只能在终端里回答。"}},
    {u"iflow",
     {u"Sees prompts, tools and answers.", u"可见：提问、工具和回答。"},
     {u"Requests are answered in the terminal.", u"授权请求只能在终端里回答。"}},
    {u"cursor",
     {u"Sees shell commands, MCP calls and edited files.", u"可见：shell 命令、MCP 调用和文件修改。"},
     denyOnly},
    {u"copilot",
     everything,
     {u"Asks here before its own rules do, for every command.",
      u"每条命令都先在这里询问，再轮到它自己的规则。"}},
    {u"cline",
     {u"Sees tasks and tools.", u"可见：任务和工具。"},
     {u"Deny stops the whole task; after Allow Cline may still ask.",
      u"拒绝会停止整个任务；允许后 Cline 仍可能再问。"}},
});

constexpr std::array<TextPair, 4> statusTitles{{
    {u"Not looked for yet", u"尚未检测"},
    {u"Installed", u"已安装"},
    {u"Not found on this computer", u"未在本机找到"},
    {u"Running", u"正在运行"},
}};

} // namespace

const AgentFacts* agentFacts(const QString& providerId)
{
    const auto row = std::ranges::find_if(
        facts, [&](const AgentFacts& each) { return providerId == QStringView(each.id); });
    return row == facts.end() ? nullptr : &*row;
}

QString title(AgentStatus status, AppLanguage language)
{
    return statusTitles.at(static_cast<std::size_t>(status)).in(language);
}

} // namespace nibbo
