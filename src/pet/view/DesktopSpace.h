#pragma once

#include "pet/PetMotion.h"

#include <QPoint>
#include <QPointF>
#include <QRect>

#include <optional>
#include <vector>

class QScreen;

namespace nibbo {

/// The one place where the desktop's coordinates are converted. The motion counts points upwards from the
/// lower left corner of the main screen; the desktop counts physical pixels downwards, and Qt its own pixels,
/// which leave gaps between scaled screens. A point is a physical pixel divided by the main screen's scale
/// factor, so that the screens join without gaps. A value: take a new one when the screens have changed. Main
/// thread.
class DesktopSpace final
{
public:
    DesktopSpace();

    /// The main one first.
    std::vector<DesktopScreen> screens() const;
    /// A position that Qt gave (of an event, of a window).
    ScreenPoint fromQt(QPointF global) const;

    /// The same point counted downwards from the upper left corner of the main screen.
    QPoint downwards(ScreenPoint origin, double height) const;
    ScreenPoint upwards(QPoint topLeft, double height) const;
    /// From the downwards convention to the pixels of the desktop.
    QPoint physical(QPoint downwards) const;

    /// The free part, downwards, of the screen that shows most of this rectangle.
    std::optional<QRect> freeAreaAround(const QRect& downwards) const;

private:
    QRectF toPoints(const QRect& area, const QScreen& screen) const;

    double m_scale = 1;
    /// The main screen's bottom.
    double m_ground = 0;
};

} // namespace nibbo
