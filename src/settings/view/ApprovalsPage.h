#pragma once

#include "settings/view/SettingsPage.h"

namespace nibbo {

class CommandListEditor;

/// Which commands run without asking.
class ApprovalsPage final : public SettingsPage
{
    Q_OBJECT
public:
    explicit ApprovalsPage(const Context& context);

private:
    void addModes();
    void addList(const char* name, TextPair heading, Wording wording, QStringList Settings::*list,
                 QStringList (*defaults)());
    void addTrial();
    void addBypass();
};

} // namespace nibbo
