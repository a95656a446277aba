#include "bridge/Dialect.h"

#include <algorithm>
#include <array>

namespace nibbo::bridge {

namespace {

constexpr std::array<const Dialect*, 12> dialects = {
    &claudeDialect,    &codexDialect, &geminiDialect, &openCodeDialect, &qwenDialect,    &qoderDialect,
    &codeBuddyDialect, &kimiDialect,  &iFlowDialect,  &cursorDialect,   &copilotDialect, &clineDialect,
};

} // namespace

std::span<const Dialect* const> allDialects()
{
    return dialects;
}

const Dialect* dialectNamed(std::string_view id)
{
    const auto same = [](char known, char given) {
        return known == (given >= 'A' && given <= 'Z' ? static_cast<char>(given - 'A' + 'a') : given);
    };
    const auto found = std::find_if(dialects.begin(), dialects.end(), [&](const Dialect* dialect) {
        return std::equal(dialect->id.begin(), dialect->id.end(), id.begin(), id.end(), same);
    });
    return found == dialects.end() ? nullptr : *found;
}

bool answers(const Dialect& dialect, std::string_view event)
{
    return std::any_of(dialect.events.begin(), dialect.events.end(), [&](const EventRow& row) {
        return row.event == event && (row.meaning == Meaning::permission || row.meaning == Meaning::gate);
    });
}

} // namespace nibbo::bridge
