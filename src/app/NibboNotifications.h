#pragma once

#include "agents/AgentEvent.h"
#include "platform/Notifier.h"

namespace nibbo {

class SettingsStore;

enum class NotificationCategory
{
    approvalRequired,
    taskCompleted,
    riskyAction
};

/// Which events become a notification, with which words, and whether the user's switches let them. Main
/// thread.
class NibboNotifications final
{
public:
    NibboNotifications(const SettingsStore& settings, Notifier& notifier);

    /// Posts for the three kinds that matter when nobody looks at the pet; does nothing for any other.
    void notify(AgentEventType type, const AgentEvent& event);
    /// `tag` names the occasion for `withdraw`.
    void post(const QString& title, const QString& body, NotificationCategory category, const QUuid& tag);
    /// The request was answered: its notification would only mislead.
    void withdraw(const QUuid& tag) { m_notifier.withdraw(tag); }

private:
    const SettingsStore& m_settings;
    Notifier& m_notifier;
};

} // namespace nibbo
