#pragma once

#include "platform/DesktopPreferences.h"

#include <QDBusConnection>
#include <QDBusVariant>

namespace nibbo {

/// The preferences that desktops publish through their settings portal. Every call is asynchronous; without a
/// portal nothing is preferred.
class PortalPreferences final : public DesktopPreferences
{
    Q_OBJECT
public:
    explicit PortalPreferences(QDBusConnection bus = QDBusConnection::sessionBus());

private Q_SLOTS:
    void onSettingChanged(const QString& group, const QString& key, const QDBusVariant& value);

private:
    void ask(const QString& group, const QString& key);
    void take(const QString& group, const QString& key, const QVariant& value);

    QDBusConnection m_bus;
};

} // namespace nibbo
