#include "base/ShippedFiles.h"

#include <QCoreApplication>
#include <QDir>

namespace nibbo {

QString shippedFolder(const QString& name)
{
    return QDir::cleanPath(QCoreApplication::applicationDirPath() + QStringLiteral("/../share/nibbo/") +
                           name);
}

} // namespace nibbo
