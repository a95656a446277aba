#include "app/StatusItem.h"

#include "pet/view/PetMenuController.h"
#include "platform/OldTray.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>
#include <QDBusVariant>
#include <QFileInfo>

#include <chrono>

namespace nibbo {

namespace {

const QString service = QStringLiteral("org.kde.StatusNotifierWatcher");
const QString objectPath = QStringLiteral("/StatusNotifierWatcher");

} // namespace

StatusItem::StatusItem(PetMenuController& menu, const QString& picture, QObject* parent)
    : QObject(parent)
    , m_controller(menu)
    , m_icon(QFileInfo::exists(picture) ? QIcon(picture) : QIcon::fromTheme(QStringLiteral("nibbo")))
{
    connect(&m_menu, &QMenu::aboutToShow, this, &StatusItem::refreshMenu);
    refreshMenu();
    QDBusConnection bus = QDBusConnection::sessionBus();
    auto* const watcher =
        new QDBusServiceWatcher(service, bus, QDBusServiceWatcher::WatchForRegistration, this);
    connect(watcher, &QDBusServiceWatcher::serviceRegistered, this, &StatusItem::askForHost);
    bus.connect(service, objectPath, service, QStringLiteral("StatusNotifierHostRegistered"), this,
                SLOT(askForHost()));
    m_look.setTimerType(Qt::VeryCoarseTimer);
    m_look.setInterval(std::chrono::seconds(15));
    connect(&m_look, &QTimer::timeout, this, &StatusItem::lookForOldTray);
    askForHost();
}

void StatusItem::askForHost()
{
    QDBusMessage message = QDBusMessage::createMethodCall(
        service, objectPath, QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"));
    message.setArguments({service, QStringLiteral("IsStatusNotifierHostRegistered")});
    message.setAutoStartService(false);
    auto* const answer = new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(message), this);
    connect(answer, &QDBusPendingCallWatcher::finished, this, [this](QDBusPendingCallWatcher* finished) {
        const QDBusPendingReply<QDBusVariant> reply = *finished;
        finished->deleteLater();
        if (!reply.isError() && reply.value().variant().toBool())
            show();
        else if (!m_item)
            lookForOldTray();
    });
}

void StatusItem::lookForOldTray()
{
    if (oldTrayExists())
        show();
    else if (++m_looks > 8)
        m_look.stop();
    else
        m_look.start();
}

void StatusItem::refreshMenu()
{
    m_controller.fill(m_menu);
}

void StatusItem::show()
{
    m_look.stop();
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
