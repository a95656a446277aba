#include "pet/view/BubbleFrame.h"

#include <QPainter>

#include <algorithm>

namespace nibbo {
namespace {

constexpr double shadowRoom = 12.0;
constexpr double shadowDrop = 2.5;
constexpr double shadowBelowTail = 6.0;
constexpr double tailHeight = 9.0;
constexpr double tailHalfWidth = 9.0;

/// Of the body alone: the tail's would reach beyond the room that is there. Wide soft strokes on top of one
/// another add up to a smooth fall-off.
void drawShadow(QPainter& painter, const QPainterPath& outline, QColor colour)
{
    constexpr int rings = 9;
    painter.save();
    painter.translate(0, shadowDrop);
    painter.setBrush(Qt::NoBrush);
    for (int ring = rings; ring >= 1; --ring) {
        colour.setAlpha(3 + (rings - ring) / 3);
        painter.setPen(QPen(colour, 2.0 * ring, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        painter.drawPath(outline);
    }
    painter.restore();
}

} // namespace

void applyPresence(QPainter& painter, double presence, QPointF origin)
{
    if (presence >= 1.0)
        return;
    const double scale = 0.9 + 0.1 * presence;
    painter.setOpacity(painter.opacity() * presence);
    painter.translate(origin);
    painter.scale(scale, scale);
    painter.translate(-origin);
}

QMarginsF BubbleFrame::margins(TailSide side)
{
    const double tailRoom = tailHeight + shadowBelowTail;
    return side == TailSide::bottom ? QMarginsF(shadowRoom, shadowRoom, shadowRoom, tailRoom)
                                    : QMarginsF(shadowRoom, tailRoom, shadowRoom, shadowRoom);
}

void BubbleFrame::shape(QSize whole, TailSide side, int tip, double radius)
{
    m_whole = whole;
    m_body = QRectF(QPointF(), QSizeF(whole)).marginsRemoved(margins(side));
    radius = std::min({radius, m_body.width() / 2, m_body.height() / 2});
    m_radius = radius;
    const double nearest = m_body.left() + radius + tailHalfWidth;
    const double farthest = m_body.right() - radius - tailHalfWidth;
    const double x =
        nearest < farthest ? std::clamp(static_cast<double>(tip), nearest, farthest) : m_body.center().x();
    const bool down = side == TailSide::bottom;
    const double edge = down ? m_body.bottom() : m_body.top();
    const double end = edge + (down ? tailHeight : -tailHeight);
    m_tip = QPointF(x, end);

    QPainterPath tail;
    tail.moveTo(x - tailHalfWidth - 3, edge);
    tail.cubicTo(x - tailHalfWidth * 0.45, edge, x - 3, end, x, end);
    tail.cubicTo(x + 3, end, x + tailHalfWidth * 0.45, edge, x + tailHalfWidth + 3, edge);
    // Into the body, so that both become one outline.
    tail.lineTo(x + tailHalfWidth + 3, edge + (down ? -1 : 1));
    tail.lineTo(x - tailHalfWidth - 3, edge + (down ? -1 : 1));
    tail.closeSubpath();
    QPainterPath body;
    body.addRoundedRect(m_body, radius, radius);
    m_outline = body.united(tail);
    m_picture = QPixmap();
}

void BubbleFrame::draw(QPainter& painter, const BubbleLook& look)
{
    const double ratio = painter.device()->devicePixelRatioF();
    if (m_picture.isNull() || m_picture.devicePixelRatio() != ratio || !(m_pictureLook == look)) {
        m_pictureLook = look;
        m_picture = QPixmap(m_whole * ratio);
        m_picture.setDevicePixelRatio(ratio);
        m_picture.fill(Qt::transparent);
        QPainter pen(&m_picture);
        const BubbleColours& colours = look.colours();
        pen.setRenderHint(QPainter::Antialiasing);
        if (look.composited) {
            QPainterPath body;
            body.addRoundedRect(m_body, m_radius, m_radius);
            drawShadow(pen, body, colours.shadow);
        }
        pen.setBrush(colours.surface);
        pen.setPen(Qt::NoPen);
        pen.drawPath(m_outline);
        pen.setBrush(Qt::NoBrush);
        pen.setPen(QPen(colours.outline, 1.0));
        pen.drawPath(m_outline);
    }
    painter.drawPixmap(0, 0, m_picture);
}

} // namespace nibbo
