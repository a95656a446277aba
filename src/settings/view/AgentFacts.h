#pragma once

#include "agents/AgentStatus.h"
#include "base/Language.h"

#include <QString>

namespace nibbo {

/// What Nibbo gets to see of an agent, and what an answer on Nibbo does there.
struct AgentFacts
{
    const char16_t* id;
    TextPair sees;
    TextPair answers;
};

/// Null for a provider without a row.
const AgentFacts* agentFacts(const QString& providerId);

QString title(AgentStatus status, AppLanguage language);

} // namespace nibbo
