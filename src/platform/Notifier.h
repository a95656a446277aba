#pragma once

#include <QString>
#include <QUuid>

namespace nibbo {

/// How much a notification presses; the desktop decides what that looks like.
enum class Urgency
{
    low,
    normal,
    critical
};

struct Notification
{
    /// Whose occasion it is, so that it can be withdrawn; null for what nobody will withdraw.
    QUuid tag;
    QString title;
    /// Plain text, as it came; the implementation escapes what its server would read as markup.
    QString body;
    Urgency urgency = Urgency::normal;
};

/// The desktop's notifications. Posting returns at once and never fails for the caller: a server that is
/// absent, slow or restarted costs the notification and nothing else. Main thread.
class Notifier
{
public:
    virtual ~Notifier() = default;
    virtual void post(const Notification& notification) = 0;
    /// Takes back what was posted under the tag, if it is still there.
    virtual void withdraw(const QUuid& tag) = 0;
};

} // namespace nibbo
