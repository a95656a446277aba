#pragma once

#include "base/Language.h"

#include <QString>

#include <functional>

class QWidget;

/// Boxes over a window that ask or tell and let the program go on. Their texts are plain, whatever they hold,
/// and each goes when it is closed. The box and its buttons ("agree", "cancel", "ok") have object names.
namespace nibbo {

struct BoxTexts
{
    QString title;
    QString message;
};

/// Beside `agree` there is only a way out, which Return takes as well. `yes` runs when the user agrees,
/// unless `asker` has gone.
void askUser(QWidget* asker, const QString& name, const BoxTexts& texts, const QString& agree,
             AppLanguage language, std::function<void()> yes);
void tellUser(QWidget* teller, const QString& name, const BoxTexts& texts, AppLanguage language);

} // namespace nibbo
