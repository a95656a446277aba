#pragma once

#include "pet/packs/PackLibrary.h"
#include "settings/view/PetGallery.h"
#include "settings/view/SettingsPage.h"

class QProgressBar;

namespace nibbo {

/// Which pet, how large and how fast. Pictures and packs are chosen, imported, dropped here and deleted; what
/// reads or writes them runs aside.
class PetPage final : public SettingsPage
{
    Q_OBJECT
public:
    explicit PetPage(const Context& context);

protected:
    void opened() override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    struct Listing
    {
        std::vector<PetPack> packs;
        std::vector<PetGallery::Card> cards;
    };

    void addGallery();
    /// Lists the packs again.
    void list();
    /// The cards that are no packs have their names in the user's language.
    void nameOurs();
    void showChoice(const Settings& settings);
    void choose(const QString& cardId);
    const PetPack* chosenPack() const;

    void chooseImage();
    void choosePack();
    void bringIn(const QString& path);
    void importPack(const QString& path);
    void importImage(const QString& path);
    void askDelete();
    void saveTemplate();
    void setBusy(int by);

    std::vector<PetPack> m_packs;
    PetGallery* m_gallery = nullptr;
    QPushButton* m_delete = nullptr;
    TextLabel* m_missing = nullptr;
    QProgressBar* m_progress = nullptr;
    int m_busy = 0;
    std::optional<QString> m_listedImage;
};

} // namespace nibbo
