#pragma once

#include "app/onboarding/OnboardingView.h"
#include "settings/view/Aside.h"
#include "settings/view/SettingsServices.h"

#include <QObject>
#include <QPointer>

#include <functional>

namespace nibbo {

/// Leads a new user through three pages: welcome, pet, agents. Main thread. Its destructor closes the window
/// and waits for an install or import that is under way.
class OnboardingWindowController final : public QObject
{
    Q_OBJECT
public:
    /// What is in `services` outlives the controller. `onComplete` is called when the user has gone through
    /// all pages, after the window has closed; closing the window before that calls nobody.
    explicit OnboardingWindowController(SettingsServices services, std::function<void()> onComplete);
    ~OnboardingWindowController() override;

    /// Brings the window to the front, with the first page where there was no window.
    void show();
    /// Null while there is none.
    OnboardingView* window() const { return m_window; }

private:
    void completeOnboarding();

    SettingsServices m_services;
    std::function<void()> m_onComplete;
    Aside m_aside;
    QPointer<OnboardingView> m_window;
};

} // namespace nibbo
