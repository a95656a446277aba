#include "platform/linux/PortalPreferences.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>

#include <utility>

namespace nibbo {
namespace {

const QString service = QStringLiteral("org.freedesktop.portal.Desktop");
const QString objectPath = QStringLiteral("/org/freedesktop/portal/desktop");
const QString interface = QStringLiteral("org.freedesktop.portal.Settings");
const QString appearance = QStringLiteral("org.freedesktop.appearance");
const QString colorScheme = QStringLiteral("color-scheme");
const QString gnomeInterface = QStringLiteral("org.gnome.desktop.interface");
const QString enableAnimations = QStringLiteral("enable-animations");

/// Portals wrap their values once or twice.
QVariant unwrapped(QVariant value)
{
    while (value.canConvert<QDBusVariant>())
        value = value.value<QDBusVariant>().variant();
    return value;
}

} // namespace

void DesktopPreferences::setPrefersDark(std::optional<bool> dark)
{
    if (std::exchange(m_prefersDark, dark) != dark)
        Q_EMIT changed();
}

void DesktopPreferences::setReducesMotion(bool reduces)
{
    if (std::exchange(m_reducesMotion, reduces) != reduces)
        Q_EMIT changed();
}

std::unique_ptr<DesktopPreferences> makeDesktopPreferences()
{
    return std::make_unique<PortalPreferences>();
}

PortalPreferences::PortalPreferences(QDBusConnection bus)
    : m_bus(std::move(bus))
{
    if (!m_bus.isConnected())
        return;
    m_bus.connect(service, objectPath, interface, QStringLiteral("SettingChanged"), this,
                  SLOT(onSettingChanged(QString, QString, QDBusVariant)));
    const auto askAll = [this] {
        ask(appearance, colorScheme);
        ask(gnomeInterface, enableAnimations);
    };
    auto* const watcher =
        new QDBusServiceWatcher(service, m_bus, QDBusServiceWatcher::WatchForRegistration, this);
    connect(watcher, &QDBusServiceWatcher::serviceRegistered, this, askAll);
    askAll();
}

void PortalPreferences::ask(const QString& group, const QString& key)
{
    QDBusMessage message =
        QDBusMessage::createMethodCall(service, objectPath, interface, QStringLiteral("Read"));
    message.setArguments({group, key});
    auto* const answer = new QDBusPendingCallWatcher(m_bus.asyncCall(message), this);
    connect(answer, &QDBusPendingCallWatcher::finished, this,
            [this, group, key](QDBusPendingCallWatcher* finished) {
                const QDBusPendingReply<QDBusVariant> reply = *finished;
                finished->deleteLater();
                if (!reply.isError())
                    take(group, key, unwrapped(QVariant::fromValue(reply.value())));
            });
}

void PortalPreferences::onSettingChanged(const QString& group, const QString& key, const QDBusVariant& value)
{
    take(group, key, unwrapped(QVariant::fromValue(value)));
}

void PortalPreferences::take(const QString& group, const QString& key, const QVariant& value)
{
    if (group == appearance && key == colorScheme) {
        // 1 dark, 2 light, anything else no preference.
        const uint scheme = value.toUInt();
        setPrefersDark(scheme == 1 ? std::optional(true) : scheme == 2 ? std::optional(false) : std::nullopt);
    } else if (group == gnomeInterface && key == enableAnimations && value.typeId() == QMetaType::Bool) {
        setReducesMotion(!value.toBool());
    }
}

} // namespace nibbo
