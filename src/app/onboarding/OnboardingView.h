#pragma once

#include "app/onboarding/OnboardingPage.h"

#include <vector>

class QStackedWidget;

namespace nibbo {

class OnboardingButton;

/// The onboarding's window: its pages one after the other, with the bar that leads through them. Return goes
/// on, Escape closes. Its language and colours follow the settings. Main thread.
class OnboardingView final : public QWidget
{
    Q_OBJECT
public:
    /// What is in `context` outlives the window.
    explicit OnboardingView(const OnboardingPage::Context& context);

    int page() const;
    /// Forward from the last page ends the onboarding.
    void forward();
    void back();

Q_SIGNALS:
    void finished();

protected:
    void changeEvent(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    class Dots;
    class Transition;

    void goTo(int page);
    void adoptLook();
    void retranslate();
    void refreshBar();
    void fit();

    const SettingsServices& m_services;
    QStackedWidget* m_stack;
    std::vector<OnboardingPage*> m_pages;
    Transition* m_transition;
    OnboardingButton* m_back;
    Dots* m_dots;
    OnboardingButton* m_forward;
    AppLanguage m_shownLanguage;
    int m_busyPages = 0;
};

} // namespace nibbo
