#include "platform/linux/DBusNotifier.h"

#include "base/NibboLog.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>
#include <QTextBoundaryFinder>

#include <algorithm>
#include <utility>

namespace nibbo {
namespace {

const QString service = QStringLiteral("org.freedesktop.Notifications");
const QString objectPath = QStringLiteral("/org/freedesktop/Notifications");
constexpr int callTimeoutMs = 10'000;
/// A flood of requests while no server answers must not grow without bound.
constexpr std::size_t waitingLimit = 20;

QDBusMessage call(const QString& method)
{
    return QDBusMessage::createMethodCall(service, objectPath, service, method);
}

} // namespace

QString notificationBody(const QString& body, bool serverReadsMarkup)
{
    constexpr int characterLimit = 150;
    constexpr int lineLimit = 4;
    QString shown = body;
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, shown);
    qsizetype end = 0;
    int characters = 0;
    int lines = 1;
    while (characters < characterLimit && end < shown.size()) {
        if (shown.at(end) == QLatin1Char('\n') && ++lines > lineLimit)
            break;
        const qsizetype next = finder.toNextBoundary();
        if (next < 0)
            break;
        end = next;
        ++characters;
    }
    if (end < shown.size())
        shown = shown.left(end) + QChar(0x2026);
    // An agent's text may hold anything; servers draw what is left of it.
    shown.removeIf([](QChar letter) {
        return letter.category() == QChar::Other_Control && letter != QLatin1Char('\n');
    });
    return serverReadsMarkup ? shown.toHtmlEscaped() : shown;
}

DBusNotifier::DBusNotifier(QDBusConnection bus, QObject* parent)
    : QObject(parent)
    , m_bus(std::move(bus))
{
    auto* const watcher =
        new QDBusServiceWatcher(service, m_bus, QDBusServiceWatcher::WatchForOwnerChange, this);
    connect(watcher, &QDBusServiceWatcher::serviceOwnerChanged, this, [this] {
        // Another server speaks other things, and knows nothing of what the last one showed.
        m_capabilities.reset();
        m_shown.clear();
    });
    m_bus.connect(service, objectPath, service, QStringLiteral("NotificationClosed"), this,
                  SLOT(onClosed(uint, uint)));
}

void DBusNotifier::post(const Notification& notification)
{
    if (!m_bus.isConnected())
        return;
    if (m_capabilities) {
        send(notification);
        return;
    }
    if (m_waiting.size() == waitingLimit)
        m_waiting.pop_front();
    m_waiting.push_back(notification);
    if (!m_isAsking)
        askCapabilities();
}

void DBusNotifier::askCapabilities()
{
    m_isAsking = true;
    auto* const answer = new QDBusPendingCallWatcher(
        m_bus.asyncCall(call(QStringLiteral("GetCapabilities")), callTimeoutMs), this);
    connect(answer, &QDBusPendingCallWatcher::finished, this, &DBusNotifier::onCapabilities);
}

void DBusNotifier::onCapabilities(QDBusPendingCallWatcher* answer)
{
    const QDBusPendingReply<QStringList> reply = *answer;
    answer->deleteLater();
    m_isAsking = false;
    const std::deque<Notification> waiting = std::exchange(m_waiting, {});
    if (reply.isError()) {
        NibboLog::log(QStringLiteral("notifications: no server answers: ") + reply.error().message());
        return;
    }
    m_capabilities = reply.value();
    for (const Notification& notification : waiting)
        send(notification);
}

void DBusNotifier::send(const Notification& notification)
{
    const bool markup = m_capabilities && m_capabilities->contains(QStringLiteral("body-markup"));
    QVariantMap hints{
        {QStringLiteral("urgency"), QVariant::fromValue(static_cast<uchar>(notification.urgency))},
        {QStringLiteral("desktop-entry"), QStringLiteral("nibbo")}};
    if (m_capabilities && m_capabilities->contains(QStringLiteral("sound")))
        hints.insert(QStringLiteral("sound-name"), QStringLiteral("message-new-instant"));
    QDBusMessage message = call(QStringLiteral("Notify"));
    // No actions: nothing on a notification approves anything.
    message.setArguments({QStringLiteral("Nibbo"), 0U, QStringLiteral("nibbo"), notification.title,
                          notificationBody(notification.body, markup), QStringList(), hints, -1});
    auto* const answer = new QDBusPendingCallWatcher(m_bus.asyncCall(message, callTimeoutMs), this);
    const QUuid tag = notification.tag;
    if (!tag.isNull())
        m_sending.append(tag);
    connect(answer, &QDBusPendingCallWatcher::finished, this, [this, tag](QDBusPendingCallWatcher* finished) {
        const QDBusPendingReply<uint> reply = *finished;
        finished->deleteLater();
        m_sending.removeOne(tag);
        const bool withdrawn = m_withdrawnEarly.removeOne(tag);
        if (reply.isError()) {
            NibboLog::log(QStringLiteral("notifications: ") + reply.error().message());
            return;
        }
        if (tag.isNull())
            return;
        if (withdrawn)
            close(reply.value());
        else
            m_shown.insert(tag, reply.value());
    });
}

void DBusNotifier::withdraw(const QUuid& tag)
{
    std::erase_if(m_waiting, [&tag](const Notification& waiting) { return waiting.tag == tag; });
    if (m_sending.contains(tag))
        m_withdrawnEarly.append(tag);
    const auto shown = m_shown.constFind(tag);
    if (shown == m_shown.cend())
        return;
    close(*shown);
    m_shown.erase(shown);
}

void DBusNotifier::close(uint id)
{
    QDBusMessage message = call(QStringLiteral("CloseNotification"));
    message.setArguments({id});
    m_bus.asyncCall(message, callTimeoutMs);
}

void DBusNotifier::onClosed(uint id, uint)
{
    const auto shown = std::find(m_shown.begin(), m_shown.end(), id);
    if (shown != m_shown.end())
        m_shown.erase(shown);
}

} // namespace nibbo
