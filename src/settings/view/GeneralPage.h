#pragma once

#include "settings/view/SettingsPage.h"

namespace nibbo {

class GeneralPage final : public SettingsPage
{
    Q_OBJECT
public:
    explicit GeneralPage(const Context& context);
};

} // namespace nibbo
