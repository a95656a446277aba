#pragma once

namespace nibbo {

/// How much Nibbo decides by itself about what an agent wants to run.
enum class ApprovalMode
{
    manual,
    smart,
    fullAuto,
    allowAll
};

} // namespace nibbo
