#pragma once

#include "agents/AgentStatus.h"
#include "base/Language.h"

#include <QWidget>

class QLabel;

namespace nibbo {

struct ProviderSpec;
class SettingsStore;
class ToggleSwitch;

/// One agent tool: what it is, whether it is on this machine, and the switch that lets Nibbo hook into it. It
/// follows the store, whoever changes it.
class OnboardingAgentRow final : public QWidget
{
    Q_OBJECT
public:
    /// `settings` outlives the row; `spec` is one of the registry's.
    OnboardingAgentRow(const ProviderSpec& spec, SettingsStore& settings);

    void retranslate();

protected:
    void paintEvent(QPaintEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    void refresh();
    AgentStatus status() const;

    const ProviderSpec& m_spec;
    SettingsStore& m_settings;
    QLabel* m_title;
    QLabel* m_status;
    ToggleSwitch* m_switch;
};

/// What a tool's status is called.
QString statusText(AgentStatus status, AppLanguage language);

} // namespace nibbo
