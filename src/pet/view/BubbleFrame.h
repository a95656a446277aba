#pragma once

#include "pet/view/BubbleLook.h"
#include "pet/view/BubblePane.h"

#include <QMarginsF>
#include <QPainterPath>
#include <QPixmap>
#include <QSize>

class QPainter;

namespace nibbo {

/// Sets the painter up for a bubble that is coming or going: from 0, gone, to 1, there; it grows out of
/// `origin`.
void applyPresence(QPainter& painter, double presence, QPointF origin);

/// The bubble's body: a rounded rectangle with a soft tail towards the pet and a shadow around both. Drawn
/// once for a size and kept.
class BubbleFrame final
{
public:
    /// The room around the body that tail and shadow take.
    static QMarginsF margins(TailSide side);

    /// `tip` is the distance of the tail's tip from the left edge of the whole.
    void shape(QSize whole, TailSide side, int tip, double radius);
    QRectF body() const { return m_body; }
    QPointF tip() const { return m_tip; }
    const QPainterPath& outline() const { return m_outline; }
    void draw(QPainter& painter, const BubbleLook& look);

private:
    QSize m_whole;
    QRectF m_body;
    double m_radius = 0.0;
    QPointF m_tip;
    QPainterPath m_outline;
    QPixmap m_picture;
    BubbleLook m_pictureLook;
};

} // namespace nibbo
