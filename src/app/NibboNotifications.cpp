#include "app/NibboNotifications.h"

#include "settings/SettingsStore.h"

#include <array>

namespace nibbo {
namespace {

struct CategoryRow
{
    AgentEventType type;
    NotificationCategory category;
    bool Settings::*isOn;
    Urgency urgency;
    TextPair title;
};

constexpr std::array<CategoryRow, 3> rows{{
    {AgentEventType::approvalRequired,
     NotificationCategory::approvalRequired,
     &Settings::notifyApprovalRequired,
     Urgency::critical,
     {u"Nibbo · Approval", u"Nibbo · 授权"}},
    {AgentEventType::taskCompleted,
     NotificationCategory::taskCompleted,
     &Settings::notifyTaskCompleted,
     Urgency::normal,
     {u"Nibbo", u"Nibbo"}},
    {AgentEventType::riskyActionDetected,
     NotificationCategory::riskyAction,
     &Settings::notifyRiskyAction,
     Urgency::critical,
     {u"Nibbo · Risky Action", u"Nibbo · 高风险操作"}},
}};

} // namespace

NibboNotifications::NibboNotifications(const SettingsStore& settings, Notifier& notifier)
    : m_settings(settings)
    , m_notifier(notifier)
{}

void NibboNotifications::notify(AgentEventType type, const AgentEvent& event)
{
    for (const CategoryRow& row : rows) {
        if (row.type != type)
            continue;
        const bool isRequest = type == AgentEventType::approvalRequired;
        const QString body = isRequest ? event.command.value_or(event.message) : event.message;
        post(row.title.in(m_settings.language()), body, row.category, isRequest ? event.id : QUuid());
    }
}

void NibboNotifications::post(const QString& title, const QString& body, NotificationCategory category,
                              const QUuid& tag)
{
    const CategoryRow& row = rows[static_cast<std::size_t>(category)];
    const Settings& settings = m_settings.current();
    if (settings.showNotifications && settings.*row.isOn)
        m_notifier.post({tag, title, body, row.urgency});
}

} // namespace nibbo
