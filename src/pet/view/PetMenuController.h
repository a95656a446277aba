#pragma once

#include "base/Language.h"

#include <QObject>

#include <functional>
#include <memory>

class QMenu;

namespace nibbo {

class PetViewModel;

/// The pet's menu: every state to try out, then the everyday commands. It is built afresh each time it is
/// wanted, in the language of that moment. The status item shows the same menu. Main thread; the view model
/// outlives it.
class PetMenuController final : public QObject
{
    Q_OBJECT

public:
    PetMenuController(PetViewModel& viewModel, std::function<AppLanguage()> language,
                      QObject* parent = nullptr);

    /// Until they are set, their items do nothing.
    void setOpenSettingsHandler(std::function<void()> handler) { m_openSettings = std::move(handler); }
    void setResetPositionHandler(std::function<void()> handler) { m_resetPosition = std::move(handler); }

    /// The items act as long as the controller lives.
    std::unique_ptr<QMenu> makeMenu();
    /// Replaces the items of a menu that stays, as the one of a status item.
    void fill(QMenu& menu);

private:
    void setState(const QVariant& representedObject);

    PetViewModel& m_viewModel;
    std::function<AppLanguage()> m_language;
    std::function<void()> m_openSettings;
    std::function<void()> m_resetPosition;
};

} // namespace nibbo
