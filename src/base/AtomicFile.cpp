#include "base/AtomicFile.h"

#include <QDir>
#include <QFileInfo>
#include <QSaveFile>

namespace nibbo {

Result<void> writeAtomically(const QString& path, const QByteArray& content)
{
    const QFileInfo info(path);
    const QString folder = info.absolutePath();
    if (!QDir().mkpath(folder))
        return Failure{QStringLiteral("cannot make the folder %1").arg(folder)};
    QSaveFile file(info.isSymLink() ? info.symLinkTarget() : path);
    if (!file.open(QIODevice::WriteOnly))
        return Failure{QStringLiteral("cannot write %1: %2").arg(path, file.errorString())};
    file.setPermissions(QFile::ReadOwner | QFile::WriteOwner);
    if (file.write(content) != content.size() || !file.commit())
        return Failure{QStringLiteral("cannot write %1: %2").arg(path, file.errorString())};
    return {};
}

Result<QByteArray> readWholeFile(const QString& path, qint64 limit)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return Failure{QStringLiteral("cannot read %1: %2").arg(path, file.errorString())};
    QByteArray content = file.read(limit + 1);
    if (file.error() != QFileDevice::NoError)
        return Failure{QStringLiteral("cannot read %1: %2").arg(path, file.errorString())};
    if (content.size() > limit)
        return Failure{QStringLiteral("%1 is larger than %2 bytes").arg(path).arg(limit)};
    return content;
}

} // namespace nibbo
