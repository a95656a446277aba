#pragma once

#include "settings/Settings.h"

#include <optional>
#include <span>

namespace nibbo {

/// A stored enumeration's case: what is written for it, and what the user reads.
template <typename Enum>
struct EnumRow
{
    Enum value;
    const char16_t* raw;
    TextPair title;
};

/// The cases in declaration order, which is the order of pickers.
std::span<const EnumRow<PetSource>> rowsOf(PetSource);
std::span<const EnumRow<BubbleStyle>> rowsOf(BubbleStyle);
std::span<const EnumRow<SingleClickBehavior>> rowsOf(SingleClickBehavior);
std::span<const EnumRow<DoubleClickBehavior>> rowsOf(DoubleClickBehavior);
std::span<const EnumRow<ApprovalMode>> rowsOf(ApprovalMode);
std::span<const EnumRow<SummaryProvider>> rowsOf(SummaryProvider);
std::span<const EnumRow<AppLanguage>> rowsOf(AppLanguage);

template <typename Enum>
const EnumRow<Enum>& rowOf(Enum value)
{
    return rowsOf(Enum{})[static_cast<std::size_t>(value)];
}

template <typename Enum>
QString rawValue(Enum value)
{
    return QString::fromUtf16(rowOf(value).raw);
}

template <typename Enum>
std::optional<Enum> fromRawValue(const QString& raw)
{
    for (const EnumRow<Enum>& row : rowsOf(Enum{})) {
        if (raw == QStringView(row.raw))
            return row.value;
    }
    return std::nullopt;
}

template <typename Enum>
QString title(Enum value, AppLanguage language)
{
    return rowOf(value).title.in(language);
}

/// The line that explains a mode beside its title.
QString detail(ApprovalMode mode, AppLanguage language);

} // namespace nibbo
