#pragma once

#include "settings/view/SettingsPage.h"

class QPlainTextEdit;

namespace nibbo {

/// The settings as a file, and what helps when something is wrong.
class AdvancedPage final : public SettingsPage
{
    Q_OBJECT
public:
    explicit AdvancedPage(const Context& context);

private:
    void addFile();
    void addTrouble();
    void addOnboarding();

    void exportSettings();
    void importSettings();
    void takeIn(const QString& path);
    void askReset();
    void openLogs();
    void runDoctor();

    QPushButton* m_doctor = nullptr;
    QPushButton* m_copy = nullptr;
    QPlainTextEdit* m_report = nullptr;
};

} // namespace nibbo
