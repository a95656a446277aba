#pragma once

#include "app/onboarding/OnboardingPage.h"

#include <array>

namespace nibbo {

class OnboardingButton;
class PetPreview;
enum class PetSource;

/// Whose pictures the pet wears, with the pet itself to look at. Pictures and packs are chosen in a dialog or
/// dropped onto the page.
class PetSelectionPage final : public OnboardingPage
{
    Q_OBJECT
public:
    explicit PetSelectionPage(const Context& context);

    void retranslate() override;

    /// Takes over a picture or a pack, by what the file is; the page tells when it cannot.
    void import(const QString& path);

protected:
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    void choose(PetSource source);
    void openDialog(PetSource source);
    void importImage(const QString& path);
    void importPack(const QString& path);
    void setBusy(bool busy);
    void refuse(const QString& why);
    void presentPet();
    QString petName() const;

    PetPreview* m_preview;
    TextLabel* m_name;
    TextLabel* m_sourceLabel;
    std::array<OnboardingButton*, 3> m_sources;
    TextLabel* m_note;
    bool m_busy = false;
    QString m_refusal;
};

} // namespace nibbo
