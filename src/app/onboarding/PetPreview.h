#pragma once

#include "pet/view/pictures/PetPictures.h"

#include <QBasicTimer>
#include <QWidget>

namespace nibbo {

struct Settings;

/// The pet as the settings have it, alive: its idle animation, drawn by what draws the pet on the desktop.
class PetPreview final : public QWidget
{
    Q_OBJECT
public:
    /// `officialPictures` is the folder of the official pet.
    PetPreview(int side, QString officialPictures, QWidget* parent = nullptr);

    /// Reads the pictures again when they differ.
    void present(const Settings& settings);
    void setReducedMotion(bool reduced);

protected:
    void paintEvent(QPaintEvent* event) override;
    void timerEvent(QTimerEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    void restartTimer();

    int m_side;
    PetPictures m_pictures;
    double m_speed = 1;
    bool m_reducedMotion = false;
    int m_frame = 0;
    QBasicTimer m_timer;
};

} // namespace nibbo
