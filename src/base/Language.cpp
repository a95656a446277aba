#include "base/Language.h"

#include <QLocale>

namespace nibbo {

AppLanguage effectiveLanguage(AppLanguage chosen, const QString& firstPreferred)
{
    if (chosen != AppLanguage::system)
        return chosen;
    return firstPreferred.startsWith(QLatin1String("zh")) ? AppLanguage::zh : AppLanguage::en;
}

QString firstPreferredLanguage()
{
    const QStringList languages = QLocale::system().uiLanguages();
    return languages.isEmpty() ? QStringLiteral("en") : languages.first();
}

} // namespace nibbo
