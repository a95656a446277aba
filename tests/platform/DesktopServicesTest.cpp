#include "app/NibboNotifications.h"
#include "platform/linux/AutostartLoginItem.h"
#include "platform/linux/DBusNotifier.h"
#include "settings/SettingsStore.h"
#include "support/Wait.h"

#include <QDBusConnection>
#include <QDBusContext>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace nibbo {
namespace {

QString s(const char16_t* text)
{
    return QString::fromUtf16(text);
}

TEST(NotificationBody, isShortAndNeverMarkup)
{
    EXPECT_EQ(notificationBody(s(u"<b>rm & \"x\"</b>"), true),
              s(u"&lt;b&gt;rm &amp; &quot;x&quot;&lt;/b&gt;"));
    EXPECT_EQ(notificationBody(s(u"<b>rm</b>"), false), s(u"<b>rm</b>"));
    EXPECT_EQ(notificationBody(s(u"a\nb\nc\nd\ne"), false), s(u"a\nb\nc\nd…"));
    EXPECT_EQ(notificationBody(s(u"a\x1b[31mb\x07"), false), s(u"a[31mb"));
    const QString family = QStringLiteral("👨‍👩‍👧");
    EXPECT_EQ(notificationBody(family.repeated(151), false), family.repeated(150) + s(u"…"))
        << "a picture of several characters is one that a person counts";
}

TEST(AutostartLoginItem, followsTheProgramAndTheUser)
{
    const QTemporaryDir config;
    const QString path = config.filePath(s(u"autostart/nibbo.desktop"));
    const auto write = [&path](const QByteArray& content) {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write(content);
    };
    const auto content = [&path] {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    };
    AutostartLoginItem item(config.path(), s(u"/opt/my \"pet\"/100%/nibbo"));
    item.refresh();
    EXPECT_FALSE(QFile::exists(path)) << "an entry that the user took away stays away";
    item.set(true);
    EXPECT_TRUE(item.isEnabled());
    EXPECT_TRUE(content().contains("\nExec=\"/opt/my \\\\\"pet\\\\\"/100%%/nibbo\"\n"))
        << content().toStdString();

    AutostartLoginItem moved(config.path(), s(u"/usr/bin/nibbo"));
    moved.refresh();
    EXPECT_TRUE(content().contains("\nExec=\"/usr/bin/nibbo\"\n"));

    for (const char* off : {"Hidden=true\n", "X-GNOME-Autostart-enabled=false\n"}) {
        write(QByteArray("[Desktop Entry]\nExec=/elsewhere\n") + off);
        moved.refresh();
        EXPECT_FALSE(moved.isEnabled());
        EXPECT_TRUE(content().contains("/elsewhere")) << "what the desktop's settings switched off is theirs";
    }
    moved.set(true);
    EXPECT_TRUE(moved.isEnabled());
    moved.set(false);
    EXPECT_FALSE(QFile::exists(path));
    moved.set(false);
}

class RecordingNotifier final : public Notifier
{
public:
    QList<Notification> posted;
    void post(const Notification& notification) override { posted.append(notification); }
    void withdraw(const QUuid&) override {}
};

TEST(NibboNotifications, postWhatTheSwitchesLet)
{
    const QTemporaryDir folder;
    UserDefaults defaults(folder.filePath(s(u"defaults.json")));
    SettingsStore settings(defaults);
    settings.change([](Settings& value) { value.language = AppLanguage::zh; });
    RecordingNotifier notifier;
    NibboNotifications notifications(settings, notifier);
    AgentEvent event;
    event.message = s(u"message");
    notifications.notify(AgentEventType::approvalRequired, event);
    event.command = s(u"make");
    notifications.notify(AgentEventType::approvalRequired, event);
    notifications.notify(AgentEventType::riskyActionDetected, event);
    notifications.notify(AgentEventType::taskCompleted, event);
    notifications.notify(AgentEventType::coding, event);
    ASSERT_EQ(notifier.posted.size(), 4);
    EXPECT_EQ(notifier.posted.at(0).body, s(u"message"));
    EXPECT_EQ(notifier.posted.at(1).body, s(u"make"));
    EXPECT_EQ(notifier.posted.at(1).title, s(u"Nibbo · 授权"));
    EXPECT_EQ(notifier.posted.at(2).title, s(u"Nibbo · 高风险操作"));
    EXPECT_EQ(notifier.posted.at(3).title, s(u"Nibbo"));

    for (bool Settings::*off : {&Settings::notifyTaskCompleted, &Settings::showNotifications}) {
        notifier.posted.clear();
        settings.change([off](Settings& value) { value.*off = false; });
        notifications.notify(AgentEventType::taskCompleted, event);
        EXPECT_TRUE(notifier.posted.isEmpty());
    }
    notifications.notify(AgentEventType::approvalRequired, event);
    EXPECT_TRUE(notifier.posted.isEmpty()) << "the master switch rules all";
}

/// A notification server of our own on the private bus.
class StandInServer final : public QObject, protected QDBusContext
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Notifications")
public:
    QStringList capabilities;
    QStringList bodies;
    QList<QVariantMap> hints;
    QList<uint> closed;
    int actionCount = 0;

public Q_SLOTS:
    QStringList GetCapabilities() const { return capabilities; }
    uint Notify(const QString&, uint, const QString&, const QString&, const QString& body,
                const QStringList& actions, const QVariantMap& given, int)
    {
        bodies.append(body);
        hints.append(given);
        actionCount += static_cast<int>(actions.size());
        return static_cast<uint>(bodies.size());
    }
    void CloseNotification(uint id) { closed.append(id); }
};

TEST(DBusNotifier, speaksToWhateverServerThereIs)
{
    if (!qEnvironmentVariableIsSet("NIBBO_TEST_DESKTOP"))
        GTEST_SKIP() << "needs the private bus";
    const QString address = qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS");
    QDBusConnection ours = QDBusConnection::connectToBus(address, s(u"ours"));
    QDBusConnection theirs = QDBusConnection::connectToBus(address, s(u"theirs"));
    ASSERT_TRUE(ours.isConnected() && theirs.isConnected());
    DBusNotifier notifier(ours);
    const QUuid tag = QUuid::createUuid();
    notifier.post({tag, s(u"t"), s(u"nobody hears it"), Urgency::normal});

    const QString name = s(u"org.freedesktop.Notifications");
    const auto serve = [&theirs, &name](StandInServer& server) {
        return theirs.registerObject(s(u"/org/freedesktop/Notifications"), &server,
                                     QDBusConnection::ExportAllSlots) &&
               theirs.registerService(name);
    };
    StandInServer plain;
    ASSERT_TRUE(serve(plain));
    ASSERT_TRUE(test::waitFor([&] {
        if (plain.bodies.isEmpty())
            notifier.post({QUuid(), s(u"t"), s(u"a <b>"), Urgency::critical});
        return plain.bodies.contains(s(u"a <b>"));
    }));
    EXPECT_EQ(plain.hints.last().value(s(u"urgency")).toInt(), 2);
    EXPECT_EQ(plain.actionCount, 0);

    // Another server takes its place: it reads markup.
    theirs.unregisterService(name);
    theirs.unregisterObject(s(u"/org/freedesktop/Notifications"));
    StandInServer rich;
    rich.capabilities = {s(u"body"), s(u"body-markup")};
    ASSERT_TRUE(serve(rich));
    ASSERT_TRUE(test::waitFor([&] {
        // The news of the other server may come after a first post.
        notifier.post({tag, s(u"t"), s(u"a <b>"), Urgency::normal});
        return rich.bodies.contains(s(u"a &lt;b&gt;"));
    }));
    // The answer to Notify comes after the call; withdrawing before or after it closes what was shown.
    ASSERT_TRUE(test::waitFor([&] {
        notifier.withdraw(tag);
        return !rich.closed.isEmpty();
    }));
    EXPECT_LE(rich.closed.first(), static_cast<uint>(rich.bodies.size()));
}

} // namespace
} // namespace nibbo

#include "DesktopServicesTest.moc"
