#pragma once

#include <QLocalServer>
#include <QLockFile>
#include <QObject>

#include <memory>

namespace nibbo {

class AppPaths;

/// One pet per user: the socket, the preferences and the hooks are the user's, whichever the display. The
/// first start holds a lock and listens; a later one asks it to show itself. All that can be asked is exactly
/// that. Main thread.
class SingleInstance final : public QObject
{
    Q_OBJECT
public:
    enum class Role
    {
        first,
        /// Another one runs and was asked to show itself.
        second,
        /// Another one holds the lock and does not answer.
        secondUnanswered,
        /// Nobody can tell: the lock cannot be had for another reason, which is in the log.
        unknown
    };

    explicit SingleInstance(const AppPaths& paths, QObject* parent = nullptr);
    ~SingleInstance() override;

    /// Takes the role, or asks the one that has it. May wait a few seconds for an answer.
    Role claim();

Q_SIGNALS:
    void showRequested();

private:
    QString m_socketPath;
    QLockFile m_lock;
    std::unique_ptr<QLocalServer> m_server;
};

} // namespace nibbo
