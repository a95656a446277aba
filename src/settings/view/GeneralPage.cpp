#include "settings/view/GeneralPage.h"

#include <QSpinBox>

namespace nibbo {

GeneralPage::GeneralPage(const Context& context)
    : SettingsPage(context, {{u"General", u"通用"},
                             {u"How Nibbo lives on your desktop.", u"Nibbo 在桌面上的基本行为。"}})
{
    SettingsGroup* const basics = group();
    choice(*basics, "language",
           {{u"Language", u"语言"},
            {u"Of Nibbo's bubbles, menus and windows.", u"用于 Nibbo 的气泡、菜单和窗口。"}},
           &Settings::language);
    toggle(*basics, "launchAtLogin",
           {{u"Start at login", u"登录时启动"},
            {u"Nibbo is there as soon as your desktop is.", u"进入桌面后 Nibbo 就会出现。"}},
           &Settings::launchAtLogin);

    SettingsGroup* const place = group({u"On the desktop", u"在桌面上"});
    toggle(*place, "alwaysOnTop",
           {{u"Always on top", u"总在最前"},
            {u"Keep Nibbo above other windows.", u"让 Nibbo 显示在其他窗口之上。"}},
           &Settings::alwaysOnTop);
    toggle(*place, "edgeSnap",
           {{u"Snap to edges", u"贴边吸附"},
            {u"Nibbo settles at the edge of the screen when you drop it close by.",
             u"拖到屏幕边缘附近放下时，Nibbo 会贴到边上。"}},
           &Settings::edgeSnap);

    SettingsGroup* const rest = group({u"Sleep", u"睡眠"});
    toggle(*rest, "pauseNibbo",
           {{u"Pause Nibbo", u"暂停 Nibbo"},
            {u"Keep Nibbo sleeping until you resume it.", u"让 Nibbo 一直睡到你恢复它。"}},
           &Settings::pauseNibbo);
    auto* const minutes = new QSpinBox;
    minutes->setObjectName(QStringLiteral("idleSleepMinutes"));
    minutes->setRange(1, 240);
    guardWheel(minutes);
    row(*rest, minutes,
        {{u"Sleep after", u"入睡时间"},
         {u"After this much quiet time, Nibbo gets drowsy and sleeps.",
          u"安静这么久之后，Nibbo 会犯困并睡着。"}});
    onLanguage([this, minutes] { minutes->setSuffix(text(language(), u" min", u" 分钟")); });
    onSettings([minutes](const Settings& settings) {
        const QSignalBlocker quiet(minutes);
        minutes->setValue(static_cast<int>(std::clamp<qint64>(settings.idleSleepMinutes, 1, 240)));
    });
    connect(minutes, &QSpinBox::valueChanged, this, [this](int value) {
        this->settings().change([&](Settings& settings) { settings.idleSleepMinutes = value; });
    });

    SettingsGroup* const clicks = group({u"Clicks", u"点击"});
    choice(*clicks, "singleClickBehavior", {{u"Single click", u"单击"}}, &Settings::singleClickBehavior);
    choice(*clicks, "doubleClickBehavior", {{u"Double click", u"双击"}}, &Settings::doubleClickBehavior);
}

} // namespace nibbo
