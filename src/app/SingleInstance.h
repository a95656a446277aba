#pragma once

#include <QLocalServer>
#include <QLockFile>
#include <QObject>

#include <memory>

namespace nibbo {

class AppPaths;

/// One pet per user and display. The first start holds a lock and listens; a later one asks it to show
/// itself. All that can be asked is exactly that. Main thread.
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
        secondUnanswered
    };

    /// `display` tells the screens of one user apart.
    SingleInstance(const AppPaths& paths, const QString& display, QObject* parent = nullptr);
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
