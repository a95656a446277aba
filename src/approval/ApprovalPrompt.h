#pragma once

#include "agents/AgentProvider.h"
#include "approval/ApprovalRisk.h"

#include <QString>
#include <QUuid>

namespace nibbo {

/// A permission request as the card shows it. All texts come from the agent or name it: show them as plain
/// text.
struct ApprovalPrompt
{
    /// The prompt itself; the same request keeps it for as long as it waits.
    QUuid id;
    /// The event that asked; the key under which the verdict is given.
    QUuid eventId;
    AgentProvider provider{QString()};
    QString title;
    /// What will run, exactly as the agent sent it.
    QString command;
    ApprovalRisk risk = ApprovalRisk::normal;
    QString message;

    bool operator==(const ApprovalPrompt&) const = default;
};

} // namespace nibbo
