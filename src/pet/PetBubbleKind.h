#pragma once

#include "agents/AgentProvider.h"
#include "approval/ApprovalPrompt.h"

#include <QString>

#include <optional>
#include <variant>

namespace nibbo {

/// The pet's own words, or a short notice.
struct MessageBubble
{
    QString text;

    bool operator==(const MessageBubble&) const = default;
};

/// What an agent is at: its words, and the activity line above them when there is one.
struct NarrationBubble
{
    AgentProvider provider;
    std::optional<QString> detail;
    QString text;

    bool operator==(const NarrationBubble&) const = default;
};

/// A permission request with its buttons.
struct ApprovalBubble
{
    ApprovalPrompt prompt;
    /// How many other requests wait behind this one.
    int othersWaiting = 0;
    /// Where the agent works; empty when it did not say.
    QString folder = {};

    bool operator==(const ApprovalBubble&) const = default;
};

/// What the speech bubble holds.
using PetBubbleKind = std::variant<MessageBubble, NarrationBubble, ApprovalBubble>;

/// The content in one line of words, for the log and for screen readers.
QString plainText(const PetBubbleKind& kind);

} // namespace nibbo
