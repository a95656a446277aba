#include "pet/view/PetView.h"

#include "pet/PetLayout.h"
#include "pet/PetViewModel.h"

#include <QEvent>
#include <QPaintEvent>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace nibbo {
namespace {

constexpr Seconds ordinaryFade{0.22};
constexpr Seconds reactionFade{0.35};
constexpr double fadeRate = 30;
constexpr double squashRate = 45;
constexpr double fastestSpeed = 4;
/// Coarse timers may be late by a twentieth, which is not seen at low rates and saves wake-ups.
constexpr double coarseRateLimit = 12;

/// Poses whose props are signs that are read: a question mark, a "Z", a prompt, ticks and notes.
bool showsSigns(PetState state)
{
    switch (state) {
    case PetState::waitingApproval:
    case PetState::sleeping:
    case PetState::drowsy:
    case PetState::running:
    case PetState::planning:
    case PetState::relaxing:
        return true;
    default:
        return false;
    }
}

double eased(double t)
{
    return t * t * (3 - 2 * t);
}

} // namespace

PetView::PetView(PetViewModel& model, PetPictures& pictures, const Clock& clock, QWidget* parent)
    : QWidget(parent)
    , m_model(model)
    , m_pictures(pictures)
    , m_clock(clock)
    , m_state(model.state())
    , m_stateSince(clock.now())
    , m_bumpsSeen(model.bumpTrigger())
{
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setFocusPolicy(Qt::NoFocus);
    connect(&model, &PetViewModel::stateChanged, this, &PetView::onStateChanged);
    connect(&model, &PetViewModel::facingChanged, this, &PetView::refresh);
    connect(&model, &PetViewModel::bumpChanged, this, &PetView::onBump);
}

void PetView::setSide(int side)
{
    m_side = side;
    adjustSize();
}

void PetView::setAnimationSpeed(double speed)
{
    m_speed = std::isfinite(speed) ? std::min(speed, fastestSpeed) : 1;
    restartTimer();
    refresh();
}

void PetView::setReducedMotion(bool reduced)
{
    m_reducedMotion = reduced;
    m_previous.reset();
    restartTimer();
    refresh();
}

void PetView::picturesChanged()
{
    m_previous.reset();
    restartTimer();
    m_shown = pictureNow();
    update();
}

void PetView::adjustSize()
{
    m_pictures.setSize(m_side, devicePixelRatioF());
    restartTimer();
    m_shown = pictureNow();
    update();
}

void PetView::onStateChanged()
{
    const PetState next = m_model.state();
    if (next == m_state)
        return;
    const auto now = m_clock.now();
    const bool samePictures = frameAnimationName(next) == frameAnimationName(m_state);
    // What is half faded already goes at once; a third picture would not be seen.
    if (samePictures || still())
        m_previous.reset();
    else
        m_previous = sightOf(m_state, m_stateSince);
    m_fadeDuration = isReaction(next) ? reactionFade : ordinaryFade;
    m_state = next;
    m_stateSince = now;
    restartTimer();
    refresh();
}

void PetView::onBump()
{
    if (m_model.bumpTrigger() == m_bumpsSeen || !m_model.bumpDirection())
        return;
    m_bumpsSeen = m_model.bumpTrigger();
    if (still())
        return;
    m_bumpDirection = m_model.bumpDirection();
    m_bumpAt = m_clock.now();
    restartTimer();
}

bool PetView::isFading() const
{
    return m_previous && m_clock.now() - m_stateSince < m_fadeDuration;
}

PetView::Sight PetView::sightOf(PetState state, std::chrono::nanoseconds since) const
{
    Sight sight;
    sight.state = state;
    sight.mirrored = m_model.facing() < 0 && !showsSigns(state);
    if (still())
        return sight;
    const Seconds elapsed = Seconds(m_clock.now() - since) * m_speed;
    sight.pose = poseAt(PetAnimation::forState(state), elapsed);
    // A step may come a hair early; it still belongs to the frame that it was meant to show.
    const double frames = elapsed.count() * m_pictures.framesPerSecond(state) + 0.05;
    sight.frame = int(std::fmod(frames, m_pictures.frameCount(state)));
    return sight;
}

PetView::Picture PetView::pictureNow() const
{
    Picture picture;
    if (isFading()) {
        picture.fading = m_previous;
        picture.faded = eased(std::clamp(Seconds(m_clock.now() - m_stateSince) / m_fadeDuration, 0.0, 1.0));
    }
    if (m_bumpDirection) {
        picture.squash = squashAt(Seconds(m_clock.now() - m_bumpAt));
        picture.edge = *m_bumpDirection;
    }
    picture.sight = sightOf(m_state, m_stateSince);
    return picture;
}

void PetView::restartTimer()
{
    double rate = 0;
    if (isVisible() && !still()) {
        const PetAnimation& animation = PetAnimation::forState(m_state);
        const double frames = m_pictures.frameCount(m_state) > 1 ? m_pictures.framesPerSecond(m_state) : 0;
        const bool moves = animation.scaleFrom != animation.scaleTo ||
                           animation.rotationFrom != animation.rotationTo ||
                           animation.xFrom != animation.xTo || animation.yFrom != animation.yTo;
        if (moves)
            rate = smoothRate(animation, std::max(frames, 1.0), m_side);
        else
            rate = frames;
        rate *= m_speed;
        if (isFading())
            rate = std::max(rate, fadeRate);
        if (m_bumpDirection)
            rate = std::max(rate, squashRate);
        rate = std::min(rate, 60.0);
    }
    const int interval = rate > 0 ? std::max(1, int(std::lround(1000 / rate))) : 0;
    if (interval == m_interval && (interval == 0) == !m_timer.isActive())
        return;
    m_interval = interval;
    if (interval == 0)
        m_timer.stop();
    else
        m_timer.start(interval, rate > coarseRateLimit ? Qt::PreciseTimer : Qt::CoarseTimer, this);
}

void PetView::timerEvent(QTimerEvent* event)
{
    if (event->timerId() != m_timer.timerId()) {
        QWidget::timerEvent(event);
        return;
    }
    const bool fadeOver = m_previous && !isFading();
    const bool bumpOver = m_bumpDirection && Seconds(m_clock.now() - m_bumpAt) >= squashDuration;
    if (fadeOver)
        m_previous.reset();
    if (bumpOver)
        m_bumpDirection.reset();
    if (fadeOver || bumpOver)
        restartTimer();
    refresh();
}

void PetView::refresh()
{
    const Picture now = pictureNow();
    if (now == m_shown)
        return;
    const QRect before = boxOf(m_shown);
    m_shown = now;
    update(before | boxOf(m_shown));
}

QTransform PetView::transformOf(const Picture& picture, const Sight& sight) const
{
    const double points = m_side / 150.0;
    const QMargins around = spriteMargins(m_side);
    const double left = around.left();
    const double top = around.top();
    const QPointF feet(left + m_side / 2.0, top + m_side * 0.93);
    QTransform transform;
    if (picture.squash > 0) {
        // Flat against the edge that was hit, and wider along it.
        const BumpDirection edge = picture.edge;
        const double squash = picture.squash;
        const bool sideways = edge == BumpDirection::left || edge == BumpDirection::right;
        const QPointF fixed(edge == BumpDirection::left    ? left
                            : edge == BumpDirection::right ? left + m_side
                                                           : feet.x(),
                            edge == BumpDirection::top ? top : feet.y());
        transform.translate(fixed.x(), fixed.y());
        transform.scale(sideways ? 1 - squash : 1 + squash / 2, sideways ? 1 + squash / 2 : 1 - squash);
        transform.translate(-fixed.x(), -fixed.y());
    }
    transform.translate(feet.x() + sight.pose.x * points, feet.y() + sight.pose.y * points);
    transform.rotate(sight.pose.rotation);
    transform.scale(sight.mirrored ? -sight.pose.scale : sight.pose.scale, sight.pose.scale);
    transform.translate(-feet.x(), -feet.y());
    return transform;
}

QRect PetView::boxOf(const Picture& picture) const
{
    const QMargins around = spriteMargins(m_side);
    const double width = m_side * PetPictures::widest;
    const QRectF sprite(around.left() + (m_side - width) / 2, around.top(), width, m_side);
    QRectF box = transformOf(picture, picture.sight).mapRect(sprite);
    if (picture.fading)
        box |= transformOf(picture, *picture.fading).mapRect(sprite);
    return box.toAlignedRect().adjusted(-1, -1, 1, 1);
}

void PetView::paintSight(QPainter& painter, const Picture& picture, const Sight& sight, double opacity) const
{
    const QImage image = m_pictures.frame(sight.state, sight.frame);
    if (image.isNull())
        return;
    const QMargins around = spriteMargins(m_side);
    const QSizeF size = image.deviceIndependentSize();
    const QPointF at(around.left() + (m_side - size.width()) / 2, around.top() + m_side - size.height());
    painter.setOpacity(opacity);
    const QTransform transform = transformOf(picture, sight);
    const double ratio = devicePixelRatioF();
    if (transform.type() <= QTransform::TxTranslate) {
        // On whole pixels it is copied; a fraction of one is not seen in a hop.
        const QPointF moved = transform.map(at) * ratio;
        painter.drawImage(QPointF(std::round(moved.x()), std::round(moved.y())) / ratio, image);
        return;
    }
    // Rows in one go that Qt spreads over its threads, whose waking costs more than the drawing: not so many.
    constexpr int rowsDrawnInPlace = 64;
    const int band = std::max(1, int(rowsDrawnInPlace / ratio));
    for (int y = 0; y < height(); y += band) {
        painter.save();
        painter.setClipRect(QRect(0, y, width(), band));
        painter.setTransform(transform, true);
        painter.drawImage(at, image);
        painter.restore();
    }
}

void PetView::paintEvent(QPaintEvent*)
{
    const Picture& picture = m_shown;
    QPainter painter(this);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    if (!picture.fading) {
        paintSight(painter, picture, picture.sight, 1);
        return;
    }
    // Both shares have to add up to a pet that is never seen through. Adding saturates before it weighs, so
    // the second share is weighed on a sheet of its own.
    QImage sheet(size() * devicePixelRatioF(), QImage::Format_ARGB32_Premultiplied);
    sheet.setDevicePixelRatio(devicePixelRatioF());
    sheet.fill(Qt::transparent);
    QPainter sheetPainter(&sheet);
    sheetPainter.setRenderHint(QPainter::SmoothPixmapTransform);
    paintSight(sheetPainter, picture, picture.sight, picture.faded);
    sheetPainter.end();
    painter.save();
    paintSight(painter, picture, *picture.fading, 1 - picture.faded);
    painter.restore();
    painter.setCompositionMode(QPainter::CompositionMode_Plus);
    painter.drawImage(QPoint(0, 0), sheet);
}

void PetView::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    adjustSize();
}

void PetView::hideEvent(QHideEvent* event)
{
    QWidget::hideEvent(event);
    m_interval = 0;
    m_timer.stop();
}

bool PetView::event(QEvent* event)
{
    if (event->type() == QEvent::ScreenChangeInternal)
        adjustSize();
    return QWidget::event(event);
}

} // namespace nibbo
