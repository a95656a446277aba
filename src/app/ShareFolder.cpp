#include "app/ShareFolder.h"

#include <QCoreApplication>
#include <QDir>

namespace nibbo {

QString installPrefix()
{
    return QDir::cleanPath(QCoreApplication::applicationDirPath() + QStringLiteral("/.."));
}

QString shareFolder()
{
    return installPrefix() + QStringLiteral("/share/nibbo");
}

} // namespace nibbo
