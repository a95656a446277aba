#include "pet/PetState.h"

#include <algorithm>
#include <cstddef>

namespace nibbo {
namespace {

enum class Group
{
    other,
    tool,
    reaction,
    persistent,
    calm
};

struct Row
{
    PetState state;
    const char16_t* name;
    const char16_t* image;
    const char16_t* frames;
    double fps;
    const char16_t* icon;
    TextPair line;
    Group group;
};

// clang-format off
constexpr std::array<Row, petStateCount> rows{{
    {PetState::idle, u"idle", u"idle", u"idle", 4, nullptr, {u"Idle", u"待机"}, Group::calm},
    {PetState::thinking, u"thinking", u"thinking", u"thinking", 8, nullptr, {u"Thinking…", u"思考中…"}, Group::other},
    {PetState::coding, u"coding", u"coding", u"coding", 6, u"pencil", {u"Working…", u"工作中…"}, Group::tool},
    {PetState::reading, u"reading", u"thinking", u"reading", 6, u"book", {u"Reading…", u"正在读取…"}, Group::tool},
    {PetState::searching, u"searching", u"thinking", u"searching", 8, u"magnifyingglass", {u"Searching…", u"正在搜索…"}, Group::tool},
    {PetState::running, u"running", u"coding", u"running", 10, u"terminal", {u"Running…", u"正在运行…"}, Group::tool},
    {PetState::browsing, u"browsing", u"thinking", u"browsing", 6, u"globe", {u"Browsing the web…", u"正在查阅网页…"}, Group::tool},
    {PetState::planning, u"planning", u"coding", u"planning", 6, u"checklist", {u"Planning…", u"正在规划…"}, Group::tool},
    {PetState::compactingContext, u"compactingContext", u"coding", u"compacting_context", 10, nullptr, {u"Compacting context…", u"正在压缩上下文…"}, Group::other},
    {PetState::responding, u"responding", u"input", u"responding", 7, nullptr, {u"Responding…", u"回答中…"}, Group::other},
    {PetState::waitingApproval, u"waitingApproval", u"approval", u"approval", 8, nullptr, {u"Waiting for your approval.", u"等待你的授权。"}, Group::persistent},
    {PetState::waitingInput, u"waitingInput", u"input", u"input", 7, nullptr, {u"Waiting for your input.", u"等待你的输入。"}, Group::persistent},
    {PetState::success, u"success", u"success", u"wave", 6, nullptr, {u"Done!", u"完成！"}, Group::other},
    {PetState::warning, u"warning", u"warning", u"warning", 14, nullptr, {u"Careful — risky action.", u"小心 — 高风险操作。"}, Group::persistent},
    {PetState::sleeping, u"sleeping", u"sleeping", u"sleeping", 3, nullptr, {u"Zzz…", u"Zzz…"}, Group::other},
    {PetState::dragging, u"dragging", u"idle", u"walk", 12, nullptr, {u"Walking…", u"走路中…"}, Group::other},
    {PetState::coffee, u"coffee", u"coffee", u"coffee", 6, nullptr, {u"Coffee break…", u"喝杯咖啡…"}, Group::calm},
    {PetState::relaxing, u"relaxing", u"happy", u"relaxing", 6, nullptr, {u"Relaxing~", u"放松一下～"}, Group::calm},
    {PetState::walking, u"walking", u"idle", u"walk", 12, nullptr, {u"Wandering around…", u"到处走走…"}, Group::calm},
    {PetState::drowsy, u"drowsy", u"sleeping", u"drowsy", 4, nullptr, {u"Getting sleepy…", u"有点困了…"}, Group::calm},
    {PetState::reactStartled, u"reactStartled", u"idle", u"react_startled", 12, nullptr, {u"！", u"！"}, Group::reaction},
    {PetState::reactGrumpy, u"reactGrumpy", u"sad", u"react_grumpy", 10, nullptr, {u"Don't bug me…", u"别吵我…"}, Group::reaction},
    {PetState::reactShoo, u"reactShoo", u"wave", u"react_shoo", 10, nullptr, {u"I'm busy!", u"我在忙！"}, Group::reaction},
    {PetState::reactHappy, u"reactHappy", u"happy", u"react_happy", 12, nullptr, {u"Hehe~", u"嘿嘿～"}, Group::reaction},
    {PetState::reactShy, u"reactShy", u"happy", u"react_shy", 8, nullptr, {u"Oh my…", u"哎呀…"}, Group::reaction},
}};
// clang-format on

constexpr bool inOrderOfStates()
{
    for (std::size_t i = 0; i < rows.size(); ++i) {
        if (rows[i].state != static_cast<PetState>(i))
            return false;
    }
    return true;
}
static_assert(inOrderOfStates());

const Row& row(PetState state)
{
    return rows[static_cast<std::size_t>(state)];
}

} // namespace

const std::array<PetState, petStateCount>& allPetStates()
{
    static const std::array<PetState, petStateCount> states = [] {
        std::array<PetState, petStateCount> all{};
        std::transform(rows.begin(), rows.end(), all.begin(), [](const Row& each) { return each.state; });
        return all;
    }();
    return states;
}

QString rawValue(PetState state)
{
    return QString::fromUtf16(row(state).name);
}

std::optional<PetState> petState(const QString& rawValue)
{
    for (const Row& each : rows) {
        if (rawValue == QStringView(each.name))
            return each.state;
    }
    return std::nullopt;
}

QString imageName(PetState state)
{
    return QString::fromUtf16(row(state).image);
}

QString frameAnimationName(PetState state)
{
    return QString::fromUtf16(row(state).frames);
}

double frameFPS(PetState state)
{
    return row(state).fps;
}

std::optional<QString> activityIcon(PetState state)
{
    const char16_t* icon = row(state).icon;
    return icon != nullptr ? std::optional(QString::fromUtf16(icon)) : std::nullopt;
}

QString bubbleText(PetState state, AppLanguage language)
{
    return row(state).line.in(language);
}

bool isToolPose(PetState state)
{
    return row(state).group == Group::tool;
}

bool isReaction(PetState state)
{
    return row(state).group == Group::reaction;
}

bool isPersistent(PetState state)
{
    return row(state).group == Group::persistent;
}

bool isCalm(PetState state)
{
    return row(state).group == Group::calm;
}

} // namespace nibbo
