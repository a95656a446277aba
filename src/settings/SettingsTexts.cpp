#include "settings/SettingsTexts.h"

#include <array>

namespace nibbo {
namespace {

constexpr std::array<EnumRow<PetSource>, 3> petSources{{
    {PetSource::official, u"official", {u"Official Nibbo", u"官方 Nibbo"}},
    {PetSource::custom, u"custom", {u"Custom Image", u"自定义图片"}},
    {PetSource::pack, u"pack", {u"Pet Pack", u"宠物包"}},
}};

constexpr std::array<EnumRow<BubbleStyle>, 3> bubbleStyles{{
    {BubbleStyle::compact, u"compact", {u"Compact", u"紧凑"}},
    {BubbleStyle::normal, u"normal", {u"Normal", u"标准"}},
    {BubbleStyle::large, u"large", {u"Large", u"宽松"}},
}};

constexpr std::array<EnumRow<SingleClickBehavior>, 3> singleClickBehaviors{{
    {SingleClickBehavior::toggleBubble, u"toggleBubble", {u"Toggle Bubble", u"切换气泡"}},
    {SingleClickBehavior::quickPanel, u"quickPanel", {u"Open Quick Panel", u"打开快捷面板"}},
    {SingleClickBehavior::none, u"none", {u"Do Nothing", u"不响应"}},
}};

constexpr std::array<EnumRow<DoubleClickBehavior>, 3> doubleClickBehaviors{{
    {DoubleClickBehavior::petReaction, u"petReaction", {u"Pet the Companion", u"摸摸宠物"}},
    {DoubleClickBehavior::openSettings, u"openSettings", {u"Open Settings", u"打开设置"}},
    {DoubleClickBehavior::none, u"none", {u"Do Nothing", u"不响应"}},
}};

// The Chinese title of `smart` mixes in the English word on purpose: it is the mode's name.
constexpr std::array<EnumRow<ApprovalMode>, 4> approvalModes{{
    {ApprovalMode::manual, u"manual", {u"Manual", u"全部手动"}},
    {ApprovalMode::smart, u"smart", {u"Smart", u"Smart 保守"}},
    {ApprovalMode::fullAuto, u"fullAuto", {u"Mostly Auto", u"尽量自动"}},
    {ApprovalMode::allowAll, u"allowAll", {u"Allow All (on)", u"全部允许（已开启）"}},
}};

constexpr std::array<TextPair, 4> approvalDetails{{
    {u"Ask every time a CLI requests to run or continue.", u"每次 CLI 请求执行或继续时都询问。"},
    {u"Auto-allow trusted commands; ask for unknown and dangerous ones.",
     u"可信命令自动放行，未知和危险命令询问。"},
    {u"Auto-allow everything except dangerous commands.", u"除危险命令外尽量自动放行。"},
    {u"Enabled from an approval card. Ordinary commands auto-allow; dangerous ones still ask.",
     u"从授权卡片一键开启。普通命令自动放行，危险命令仍会询问。"},
}};

constexpr std::array<EnumRow<SummaryProvider>, 4> summaryProviders{{
    {SummaryProvider::anthropic, u"anthropic", {u"Anthropic", u"Anthropic"}},
    {SummaryProvider::openai, u"openai", {u"OpenAI", u"OpenAI"}},
    {SummaryProvider::deepseek, u"deepseek", {u"DeepSeek", u"DeepSeek"}},
    {SummaryProvider::custom, u"custom", {u"Custom (OpenAI-compatible)", u"自定义（兼容 OpenAI）"}},
}};

// The languages are listed under their own names, whichever is in effect.
constexpr std::array<EnumRow<AppLanguage>, 3> languages{{
    {AppLanguage::system, u"system", {u"Follow System", u"跟随系统"}},
    {AppLanguage::en, u"en", {u"English", u"English"}},
    {AppLanguage::zh, u"zh", {u"中文", u"中文"}},
}};

} // namespace

std::span<const EnumRow<PetSource>> rowsOf(PetSource)
{
    return petSources;
}

std::span<const EnumRow<BubbleStyle>> rowsOf(BubbleStyle)
{
    return bubbleStyles;
}

std::span<const EnumRow<SingleClickBehavior>> rowsOf(SingleClickBehavior)
{
    return singleClickBehaviors;
}

std::span<const EnumRow<DoubleClickBehavior>> rowsOf(DoubleClickBehavior)
{
    return doubleClickBehaviors;
}

std::span<const EnumRow<ApprovalMode>> rowsOf(ApprovalMode)
{
    return approvalModes;
}

std::span<const EnumRow<SummaryProvider>> rowsOf(SummaryProvider)
{
    return summaryProviders;
}

std::span<const EnumRow<AppLanguage>> rowsOf(AppLanguage)
{
    return languages;
}

QString detail(ApprovalMode mode, AppLanguage language)
{
    return approvalDetails[static_cast<std::size_t>(mode)].in(language);
}

} // namespace nibbo
