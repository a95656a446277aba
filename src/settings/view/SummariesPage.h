#pragma once

#include "settings/SecretStore.h"
#include "settings/view/SettingsPage.h"

class QLineEdit;

namespace nibbo {

/// Summaries by a model provider: whose, with which model, at which address, and with which key. Keys are
/// written to the keyring and never read back into a field.
class SummariesPage final : public SettingsPage
{
    Q_OBJECT
public:
    explicit SummariesPage(const Context& context);

protected:
    void opened() override;

private:
    void addProvider();
    void addKey();
    void addTest();

    SummaryProvider provider() const { return settings().current().summaryProvider; }
    QString keyName() const { return apiKeyName(rawValue(provider())); }
    void showOverrides();
    void showAddressWarning();
    void readKey();
    SecretStore::Done thenForgetKeys(SecretStore::Done done);
    void saveKey();
    void removeKey();
    void test();
    /// An answer callback that is left out when the page is gone or something newer was asked.
    template <typename Answer>
    auto newest(int& serial, Answer answer);

    std::optional<SummaryProvider> m_shownProvider;
    QLineEdit* m_model = nullptr;
    SettingRow* m_addressRow = nullptr;
    QLineEdit* m_address = nullptr;
    TextLabel* m_addressWarning = nullptr;
    QLineEdit* m_key = nullptr;
    QPushButton* m_saveKey = nullptr;
    QPushButton* m_removeKey = nullptr;
    TextLabel* m_keyState = nullptr;
    QPushButton* m_test = nullptr;
    TextLabel* m_testAnswer = nullptr;
    int m_keySerial = 0;
    int m_testSerial = 0;
};

} // namespace nibbo
