#pragma once

#include "app/onboarding/OnboardingPage.h"

#include <QMap>

#include <vector>

namespace nibbo {

class OnboardingAgentRow;
class OnboardingButton;

/// Connects the user's agent tools: which ones, and the hook bridge into their configuration.
class AgentIntegrationPage final : public OnboardingPage
{
    Q_OBJECT
public:
    explicit AgentIntegrationPage(const Context& context);

    void retranslate() override;

protected:
    void showEvent(QShowEvent* event) override;

private:
    enum class Bridge
    {
        notInstalled,
        installing,
        installed
    };

    void runDetection();
    void askToInstall();
    void installBridge();
    void setBridge(Bridge bridge);
    void refresh();
    void onSettingsChanged();

    Bridge m_bridge = Bridge::notInstalled;
    std::vector<OnboardingAgentRow*> m_rows;
    TextLabel* m_message;
    OnboardingButton* m_detect;
    OnboardingButton* m_install;
    QWidget* m_installed;
    QLabel* m_installedSymbol;
    TextLabel* m_installedText;
    /// What the install that is under way, or was the last, was told to do.
    QMap<QString, bool> m_installedFor;
};

} // namespace nibbo
