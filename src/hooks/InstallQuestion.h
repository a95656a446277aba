#pragma once

#include "base/Language.h"

#include <QString>

namespace nibbo {

class HookInstaller;

/// What the user is asked before an install touches any file.
struct InstallQuestion
{
    QString title;
    QString message;
    QString agree;
};

/// Lists the files of the enabled providers.
InstallQuestion installQuestion(const HookInstaller& installer, AppLanguage language);

} // namespace nibbo
