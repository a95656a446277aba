#pragma once

#include "pet/view/BubbleLook.h"

#include <QObject>
#include <QUuid>

#include <optional>

namespace nibbo {

class BubbleView;
class PetViewModel;
class SettingsStore;
enum class CardButton;

/// Ties the bubble to what it shows: the view model's bubble in the look that the settings and the desktop
/// ask for, and the card's answers back to the view model. All of them outlive it; main thread.
class BubblePresenter final : public QObject
{
    Q_OBJECT

public:
    BubblePresenter(BubbleView& view, PetViewModel& viewModel, const SettingsStore& settings,
                    QObject* parent = nullptr);

    /// What the desktop says about its colours; without a word from it the palette decides.
    void setDesktopScheme(std::optional<ColourScheme> scheme);
    /// Bubbles come and go at once for those whose desktop asks for less motion.
    void setReducedMotion(bool reduced);
    /// Whether a compositor draws translucency.
    void setComposited(bool composited);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void showBubble();
    void refreshLook();
    void answer(const QUuid& eventId, CardButton button);

    BubbleView& m_view;
    PetViewModel& m_viewModel;
    const SettingsStore& m_settings;
    std::optional<ColourScheme> m_desktopScheme;
    bool m_reducedMotion = false;
    bool m_composited = true;
};

} // namespace nibbo
