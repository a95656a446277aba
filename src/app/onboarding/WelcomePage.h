#pragma once

#include "app/onboarding/OnboardingPage.h"

namespace nibbo {

/// Says hello and what comes.
class WelcomePage final : public OnboardingPage
{
    Q_OBJECT
public:
    explicit WelcomePage(const Context& context);

    void retranslate() override;

private:
    TextLabel* m_title;
    TextLabel* m_subtitle;
    TextLabel* m_body;
    QWidget* m_mascot;
};

} // namespace nibbo
