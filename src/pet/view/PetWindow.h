#pragma once

#include "pet/PetLayout.h"
#include "pet/PetMotion.h"
#include "pet/PetPointer.h"
#include "pet/view/DesktopSpace.h"
#include "pet/view/pictures/PetPictures.h"
#include "settings/Settings.h"

#include <QObject>
#include <QTimer>
#include <QWidget>

#include <memory>

namespace nibbo {

class BubblePane;
class PetPointerArea;
class PetView;
class PetViewModel;
class SettingsStore;
class StepTimer;
class WindowPlacement;

/// The pet's window: frameless, transparent, never focused, on every workspace, taking clicks only on the
/// pet's square and on the bubble's controls. It owns the pet's picture, its pointer and its bubble, and
/// moves by the motion model. Where nothing blends transparent pixels it is cut out along what is painted.
/// The model, the settings, the clock and the scheduler outlive it. Main thread.
class PetWindowController final : public QObject, private PetMotionListener, private PetPointerActions
{
    Q_OBJECT

public:
    static constexpr char originXKey[] = "pet.originX";
    static constexpr char originYKey[] = "pet.originY";

    /// `bubble` may be null: a pet without words.
    PetWindowController(PetViewModel& model, SettingsStore& settings, const Clock& clock,
                        Scheduler& scheduler, QString officialPictures, std::unique_ptr<BubblePane> bubble);
    ~PetWindowController() override;

    /// Shows the pet at its saved place, or at home. Once.
    void showPet();
    /// Home in 0.3 s; that place is saved.
    void resetPosition();
    /// For people whose desktop asks for less motion.
    void setReducedMotion(bool reduced);

    QWidget& window();
    /// Where the pet's square belongs at the moment, in points counted downwards from the main screen's upper
    /// left corner; the window gets there as soon as the desktop has moved it.
    QRect petSquare() const;
    /// False where translucent pixels are not blended with what lies below.
    bool blendsTransparency() const;
    PetPictures& pictures() { return m_pictures; }

Q_SIGNALS:
    /// The right button asked for the pet's menu, at this place of the screen.
    void menuRequested(const QPoint& globalPosition);
    void blendingChanged();

private:
    class Window;

    void panelMoved(ScreenPoint origin) override;
    void bumped(BumpDirection direction) override;
    void facingChanged(double facing) override;
    void positionToSave(ScreenPoint origin) override;

    void dragBegan() override;
    void dragMoved() override;
    void dragEnded() override;
    void clicked() override;
    void doubleClicked() override;
    void hovered() override;
    void menuAsked() override;

    void onSettingsChanged(const Settings& before);
    void onScreensChanged();
    void watchScreens();
    void onPause(bool paused);
    void adoptWindowPosition();
    void runTimers();
    void place();
    void layOut();
    void applyInputRegion();
    void updateCut();
    QPoint panelDownwards() const;

    PetViewModel& m_model;
    SettingsStore& m_settings;
    PetPictures m_pictures;
    DesktopSpace m_space;
    PetMotion m_motion;
    PetPointer m_pointer;

    std::unique_ptr<Window> m_window;
    PetView* m_view = nullptr;
    PetPointerArea* m_area = nullptr;
    BubblePane* m_bubble = nullptr;
    std::unique_ptr<WindowPlacement> m_placement;
    std::unique_ptr<StepTimer> m_followTimer;
    std::unique_ptr<StepTimer> m_animationTimer;
    QTimer m_screensTimer;
    QTimer m_cutTimer;

    PetLayout m_layout;
    /// From the panel's upper left corner to the window's.
    QPoint m_windowOffset;
    std::optional<QPoint> m_placed;
};

} // namespace nibbo
