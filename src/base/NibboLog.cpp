#include "base/NibboLog.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <fcntl.h>
#include <syslog.h>
#include <unistd.h>

#include <cerrno>
#include <mutex>

namespace nibbo {
namespace {

std::mutex& logMutex()
{
    static std::mutex mutex;
    return mutex;
}

QString& logPath()
{
    static QString path;
    return path;
}

int openForAppending(const QString& path)
{
    return ::open(QFile::encodeName(path).constData(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC | O_NOFOLLOW,
                  0600);
}

} // namespace

bool appendToPrivateFile(const QString& path, const QByteArray& text)
{
    int file = openForAppending(path);
    if (file < 0 && errno == ENOENT) {
        QDir().mkpath(QFileInfo(path).absolutePath());
        file = openForAppending(path);
    }
    if (file < 0)
        return false;
    // One write of the whole line: with O_APPEND the lines of two processes never interleave.
    const bool written =
        ::write(file, text.constData(), static_cast<std::size_t>(text.size())) == text.size();
    ::close(file);
    return written;
}

void NibboLog::setFile(const QString& path)
{
    const std::lock_guard lock(logMutex());
    logPath() = path;
}

void NibboLog::log(const QString& message)
{
    const double seconds = static_cast<double>(QDateTime::currentMSecsSinceEpoch()) / 1000.0;
    const QByteArray line = QByteArray::number(seconds, 'f', 3) + ' ' + message.toUtf8() + '\n';
    const std::lock_guard lock(logMutex());
    if (!logPath().isEmpty())
        appendToPrivateFile(logPath(), line);
    ::syslog(LOG_DEBUG | LOG_USER, "NIBBO_DBG %s", message.toUtf8().constData());
}

} // namespace nibbo
