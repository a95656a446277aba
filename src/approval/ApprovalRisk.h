#pragma once

#include "base/Language.h"

#include <QString>

namespace nibbo {

/// How much care the approval card asks of the user.
enum class ApprovalRisk
{
    normal,
    risky
};

/// The case's name.
inline QString rawValue(ApprovalRisk risk)
{
    return risk == ApprovalRisk::risky ? QStringLiteral("risky") : QStringLiteral("normal");
}

inline QString title(ApprovalRisk risk, AppLanguage language)
{
    return risk == ApprovalRisk::risky ? text(language, u"Risky", u"高风险")
                                       : text(language, u"Normal", u"普通");
}

} // namespace nibbo
