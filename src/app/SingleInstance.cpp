#include "app/SingleInstance.h"

#include "base/AppPaths.h"
#include "base/NibboLog.h"

#include <QLocalSocket>

namespace nibbo {
namespace {

constexpr int answerLimitMs = 3000;

} // namespace

SingleInstance::SingleInstance(const AppPaths& paths, QObject* parent)
    : QObject(parent)
    , m_socketPath(paths.applicationSupport() + QStringLiteral("/show"))
    , m_lock(m_socketPath + QStringLiteral(".lock"))
{
    // Only the death of its holder frees the lock, not its age.
    m_lock.setStaleLockTime(0);
}

SingleInstance::~SingleInstance() = default;

SingleInstance::Role SingleInstance::claim()
{
    if (!m_lock.tryLock(0)) {
        if (m_lock.error() != QLockFile::LockFailedError) {
            NibboLog::log(QStringLiteral("single instance: %1.lock cannot be written").arg(m_socketPath));
            return Role::unknown;
        }
        QLocalSocket other;
        other.connectToServer(m_socketPath);
        if (!other.waitForConnected(answerLimitMs))
            return Role::secondUnanswered;
        other.write("show\n");
        other.waitForBytesWritten(answerLimitMs);
        return other.waitForReadyRead(answerLimitMs) && other.readAll() == "ok\n" ? Role::second
                                                                                  : Role::secondUnanswered;
    }
    m_server = std::make_unique<QLocalServer>();
    m_server->setSocketOptions(QLocalServer::UserAccessOption);
    QLocalServer::removeServer(m_socketPath);
    connect(m_server.get(), &QLocalServer::newConnection, this, [this] {
        while (QLocalSocket* const asking = m_server->nextPendingConnection()) {
            connect(asking, &QLocalSocket::disconnected, asking, &QObject::deleteLater);
            connect(asking, &QLocalSocket::readyRead, this, [this, asking] {
                if (asking->readLine(16) != "show\n")
                    return asking->abort();
                asking->write("ok\n");
                asking->flush();
                Q_EMIT showRequested();
            });
        }
    });
    if (!m_server->listen(m_socketPath))
        NibboLog::log(QStringLiteral("single instance: cannot listen: ") + m_server->errorString());
    return Role::first;
}

} // namespace nibbo
