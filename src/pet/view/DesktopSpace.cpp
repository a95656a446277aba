#include "pet/view/DesktopSpace.h"

#include <QGuiApplication>
#include <QScreen>

#include <cmath>

namespace nibbo {

DesktopSpace::DesktopSpace()
{
    if (const QScreen* main = QGuiApplication::primaryScreen()) {
        m_scale = main->devicePixelRatio();
        m_ground = toPoints(main->geometry(), *main).bottom();
    }
}

QRectF DesktopSpace::toPoints(const QRect& area, const QScreen& screen) const
{
    // A screen's corner is at its physical place; only what is inside is scaled.
    const QPointF corner = screen.geometry().topLeft();
    const double factor = screen.devicePixelRatio();
    const QPointF topLeft = corner + (area.topLeft() - corner) * factor;
    return {topLeft / m_scale, QSizeF(area.size()) * factor / m_scale};
}

std::vector<DesktopScreen> DesktopSpace::screens() const
{
    std::vector<DesktopScreen> result;
    const QScreen* main = QGuiApplication::primaryScreen();
    const auto add = [&](const QScreen& screen) {
        const auto upward = [this](const QRectF& area) {
            return ScreenArea{area.x(), m_ground - area.bottom(), area.width(), area.height()};
        };
        result.push_back({upward(toPoints(screen.geometry(), screen)),
                          upward(toPoints(screen.availableGeometry(), screen))});
    };
    if (main)
        add(*main);
    for (const QScreen* screen : QGuiApplication::screens()) {
        if (screen != main)
            add(*screen);
    }
    return result;
}

ScreenPoint DesktopSpace::fromQt(QPointF global) const
{
    const QScreen* screen = QGuiApplication::screenAt(global.toPoint());
    if (!screen)
        screen = QGuiApplication::primaryScreen();
    QPointF point = global;
    if (screen) {
        const QPointF corner = screen->geometry().topLeft();
        point = (corner + (global - corner) * screen->devicePixelRatio()) / m_scale;
    }
    return {point.x(), m_ground - point.y()};
}

QPoint DesktopSpace::downwards(ScreenPoint origin, double height) const
{
    return {int(std::lround(origin.x)), int(std::lround(m_ground - origin.y - height))};
}

ScreenPoint DesktopSpace::upwards(QPoint topLeft, double height) const
{
    return {double(topLeft.x()), m_ground - topLeft.y() - height};
}

QPoint DesktopSpace::physical(QPoint downwards) const
{
    return {int(std::lround(downwards.x() * m_scale)), int(std::lround(downwards.y() * m_scale))};
}

std::optional<QRect> DesktopSpace::freeAreaAround(const QRect& downwards) const
{
    std::optional<QRect> best;
    double most = 0;
    for (const QScreen* screen : QGuiApplication::screens()) {
        const QRectF common = toPoints(screen->geometry(), *screen) & QRectF(downwards);
        const double area = common.width() * common.height();
        if (area > most) {
            most = area;
            best = toPoints(screen->availableGeometry(), *screen).toRect();
        }
    }
    return best;
}

} // namespace nibbo
