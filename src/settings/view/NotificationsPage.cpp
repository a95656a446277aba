#include "settings/view/NotificationsPage.h"

namespace nibbo {

NotificationsPage::NotificationsPage(const Context& context)
    : SettingsPage(context, {{u"Notifications", u"通知"},
                             {u"For what you should not miss while you look elsewhere.",
                              u"在你看别处时，不错过重要的事。"}})
{
    SettingsGroup* const all = group();
    toggle(*all, "showNotifications",
           {{u"Show notifications", u"显示通知"},
            {u"Through your desktop's own notifications.", u"使用桌面系统自带的通知。"}},
           &Settings::showNotifications);

    SettingsGroup* const kinds = group({u"Notify me about", u"通知内容"});
    const QList<QWidget*> each{
        toggle(*kinds, "notifyApprovalRequired",
               {{u"Approvals", u"授权请求"},
                {u"An agent waits for your permission.", u"有 agent 在等待你的授权。"}},
               &Settings::notifyApprovalRequired),
        toggle(*kinds, "notifyTaskCompleted",
               {{u"Finished tasks", u"任务完成"},
                {u"An agent is done with what you asked.", u"agent 完成了你交给它的任务。"}},
               &Settings::notifyTaskCompleted),
        toggle(*kinds, "notifyRiskyAction",
               {{u"Risky actions", u"高风险操作"},
                {u"An agent tried something on your list of dangerous commands.",
                 u"agent 试图执行危险命令列表中的操作。"}},
               &Settings::notifyRiskyAction),
    };
    note({u"A notification only tells. Requests are answered on Nibbo's card, never on a notification.",
          u"通知只负责提醒。授权请求只能在 Nibbo 的卡片上回答，不能在通知上回答。"});
    onSettings([each](const Settings& settings) {
        for (QWidget* toggle : each)
            toggle->setEnabled(settings.showNotifications);
    });
}

} // namespace nibbo
