#include "app/onboarding/PetPreview.h"

#include "settings/Settings.h"

#include <QPainter>
#include <QTimerEvent>

#include <utility>

namespace nibbo {
namespace {

constexpr PetState shownState = PetState::idle;

} // namespace

PetPreview::PetPreview(int side, QString officialPictures, QWidget* parent)
    : QWidget(parent)
    , m_side(side)
    , m_pictures(std::move(officialPictures))
{
    setFixedSize(qRound(side * PetPictures::widest), side);
}

void PetPreview::present(const Settings& settings)
{
    m_pictures.setLook(PetLook::of(settings));
    m_speed = settings.animationSpeed;
    m_frame = 0;
    restartTimer();
    update();
}

void PetPreview::setReducedMotion(bool reduced)
{
    m_reducedMotion = reduced;
    restartTimer();
}

void PetPreview::restartTimer()
{
    m_timer.stop();
    m_pictures.setSize(m_side, devicePixelRatioF());
    const double rate = m_pictures.framesPerSecond(shownState) * m_speed;
    if (isVisible() && !m_reducedMotion && rate > 0 && m_pictures.frameCount(shownState) > 1)
        m_timer.start(qBound(20, qRound(1000 / rate), 2000), this);
}

void PetPreview::paintEvent(QPaintEvent*)
{
    m_pictures.setSize(m_side, devicePixelRatioF());
    const QImage picture = m_pictures.frame(shownState, m_frame % m_pictures.frameCount(shownState));
    if (picture.isNull())
        return;
    QPainter painter(this);
    const QSizeF size = picture.deviceIndependentSize();
    painter.drawImage(QPointF((width() - size.width()) / 2, height() - size.height()), picture);
}

void PetPreview::timerEvent(QTimerEvent* event)
{
    if (event->timerId() != m_timer.timerId())
        return QWidget::timerEvent(event);
    m_frame = (m_frame + 1) % m_pictures.frameCount(shownState);
    update();
}

void PetPreview::showEvent(QShowEvent* event)
{
    QWidget::showEvent(event);
    restartTimer();
}

void PetPreview::hideEvent(QHideEvent* event)
{
    QWidget::hideEvent(event);
    m_timer.stop();
}

} // namespace nibbo
