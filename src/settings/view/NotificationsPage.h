#pragma once

#include "settings/view/SettingsPage.h"

namespace nibbo {

class NotificationsPage final : public SettingsPage
{
    Q_OBJECT
public:
    explicit NotificationsPage(const Context& context);
};

} // namespace nibbo
