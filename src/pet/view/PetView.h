#pragma once

#include "pet/PetPose.h"
#include "pet/PetState.h"
#include "pet/view/pictures/PetPictures.h"

#include <QBasicTimer>
#include <QWidget>

#include <optional>

namespace nibbo {

class PetViewModel;

/// The pet itself: the current frame, moved by its state's motion, mirrored by where it looks, pressed flat
/// by a bump, and faded over softly from one state to the next. Everything is a function of the elapsed time;
/// a timer runs only while something changes, at the lowest rate that looks smooth, and only the pet's own
/// box is painted. The widget is the
/// pet's square and the margins around it. Takes no input. Main thread.
class PetView final : public QWidget
{
    Q_OBJECT

public:
    /// All references outlive the view.
    PetView(PetViewModel& model, PetPictures& pictures, const Clock& clock, QWidget* parent = nullptr);

    void setSide(int side);
    /// 1 is the ordinary speed; 0 and less stand still.
    void setAnimationSpeed(double speed);
    /// Still pictures without motion and fades, for people whose desktop says so.
    void setReducedMotion(bool reduced);
    /// After the pictures were given another look.
    void picturesChanged();

protected:
    void paintEvent(QPaintEvent* event) override;
    void timerEvent(QTimerEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    bool event(QEvent* event) override;

private:
    /// What is painted of one state at one moment.
    struct Sight
    {
        PetState state = PetState::idle;
        int frame = 0;
        PetPose pose;
        bool mirrored = false;

        bool operator==(const Sight&) const = default;
    };
    struct Picture
    {
        Sight sight;
        std::optional<Sight> fading;
        /// How much of the new state is seen already, 0 to 1.
        double faded = 1;
        double squash = 0;
        BumpDirection edge = BumpDirection::left;

        bool operator==(const Picture&) const = default;
    };

    void onStateChanged();
    void onBump();
    void adjustSize();
    void restartTimer();
    void refresh();
    bool still() const { return m_reducedMotion || m_speed <= 0; }
    bool isFading() const;
    Sight sightOf(PetState state, std::chrono::nanoseconds since) const;
    Picture pictureNow() const;
    void paintSight(QPainter& painter, const Picture& picture, const Sight& sight, double opacity) const;
    QTransform transformOf(const Picture& picture, const Sight& sight) const;
    QRect boxOf(const Picture& picture) const;

    PetViewModel& m_model;
    PetPictures& m_pictures;
    const Clock& m_clock;
    int m_side = 150;
    double m_speed = 1;
    bool m_reducedMotion = false;

    PetState m_state;
    std::chrono::nanoseconds m_stateSince{};
    std::optional<Sight> m_previous;
    Seconds m_fadeDuration{};
    std::optional<BumpDirection> m_bumpDirection;
    std::chrono::nanoseconds m_bumpAt{};
    int m_bumpsSeen = 0;

    Picture m_shown;
    QBasicTimer m_timer;
    int m_interval = 0;
};

} // namespace nibbo
