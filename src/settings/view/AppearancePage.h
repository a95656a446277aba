#pragma once

#include "settings/view/SettingsPage.h"

namespace nibbo {

class AppearancePage final : public SettingsPage
{
    Q_OBJECT
public:
    explicit AppearancePage(const Context& context);
};

} // namespace nibbo
