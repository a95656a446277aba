#pragma once

#include "settings/SettingsStore.h"
#include "settings/view/SettingsServices.h"
#include "settings/view/SettingsWidgets.h"

#include <QWidget>

class QVBoxLayout;

namespace nibbo {

class Aside;

/// One page of the onboarding. Texts are set by `retranslate`, at first and whenever the language changes.
class OnboardingPage : public QWidget
{
    Q_OBJECT
public:
    /// What pages share; outlives them.
    struct Context
    {
        const SettingsServices& services;
        Aside& aside;
    };

    explicit OnboardingPage(const Context& context);

    virtual void retranslate() = 0;

Q_SIGNALS:
    /// The page begins or ends something that is not to be walked away from.
    void busyChanged(bool busy);

protected:
    const SettingsServices& services() const { return m_context.services; }
    SettingsStore& settings() const { return m_context.services.settings; }
    Aside& aside() const { return m_context.aside; }
    AppLanguage language() const { return settings().language(); }
    QString say(const char16_t* english, const char16_t* chinese) const
    {
        return text(language(), english, chinese);
    }

    /// Title and subtitle, centred.
    void addHeading(QVBoxLayout& column);
    void setHeading(const QString& title, const QString& subtitle);

private:
    Context m_context;
    TextLabel* m_title = nullptr;
    TextLabel* m_subtitle = nullptr;
};

/// Whether pictures are to stand still.
bool reducesMotion(const SettingsServices& services, const QWidget& widget);

} // namespace nibbo
