#pragma once

#include "platform/Notifier.h"

#include <QDBusConnection>
#include <QHash>
#include <QObject>

#include <deque>
#include <optional>

class QDBusPendingCallWatcher;

namespace nibbo {

/// Notifications through org.freedesktop.Notifications. Every call is asynchronous. The server's capabilities
/// are asked once per server; until they are known nothing is sent, lest a body be read as markup.
class DBusNotifier final : public QObject, public Notifier
{
    Q_OBJECT
public:
    explicit DBusNotifier(QDBusConnection bus = QDBusConnection::sessionBus(), QObject* parent = nullptr);

    void post(const Notification& notification) override;
    void withdraw(const QUuid& tag) override;

private Q_SLOTS:
    void onClosed(uint id, uint reason);

private:
    void askCapabilities();
    void onCapabilities(QDBusPendingCallWatcher* answer);
    void send(const Notification& notification);
    void close(uint id);

    QDBusConnection m_bus;
    std::optional<QStringList> m_capabilities;
    bool m_isAsking = false;
    std::deque<Notification> m_waiting;
    QHash<QUuid, uint> m_shown;
    /// Tags that were withdrawn while their Notify call was under way.
    QList<QUuid> m_sending;
    QList<QUuid> m_withdrawnEarly;
};

/// What a body may show: cut to a few lines and characters, and escaped where the server reads markup.
QString notificationBody(const QString& body, bool serverReadsMarkup);

} // namespace nibbo
