#include "app/StatusItem.h"

#include "pet/view/PetMenuController.h"

#include <QDBusConnection>
#include <QDBusServiceWatcher>
#include <QFileInfo>

namespace nibbo {

StatusItem::StatusItem(PetMenuController& menu, const QString& picture, QObject* parent)
    : QObject(parent)
    , m_controller(menu)
    , m_icon(QFileInfo::exists(picture) ? QIcon(picture) : QIcon::fromTheme(QStringLiteral("nibbo")))
{
    connect(&m_menu, &QMenu::aboutToShow, this, &StatusItem::refreshMenu);
    refreshMenu();
    show();
    // A status bar that starts after us, or again, finds the item only when it is registered anew.
    auto* const watcher = new QDBusServiceWatcher(QStringLiteral("org.kde.StatusNotifierWatcher"),
                                                  QDBusConnection::sessionBus(),
                                                  QDBusServiceWatcher::WatchForRegistration, this);
    connect(watcher, &QDBusServiceWatcher::serviceRegistered, this, &StatusItem::show);
}

void StatusItem::refreshMenu()
{
    m_controller.fill(m_menu);
}

void StatusItem::show()
{
    m_item = std::make_unique<QSystemTrayIcon>(m_icon);
    m_item->setToolTip(QStringLiteral("Nibbo"));
    m_item->setContextMenu(&m_menu);
    connect(m_item.get(), &QSystemTrayIcon::activated, this,
            [this](QSystemTrayIcon::ActivationReason reason) {
                if (reason == QSystemTrayIcon::Trigger || reason == QSystemTrayIcon::DoubleClick)
                    Q_EMIT activated();
            });
    m_item->show();
}

} // namespace nibbo
