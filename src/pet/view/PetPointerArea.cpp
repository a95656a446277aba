#include "pet/view/PetPointerArea.h"

#include "pet/PetPointer.h"

#include <QGuiApplication>
#include <QMouseEvent>

namespace nibbo {

PetPointerArea::PetPointerArea(PetPointer& pointer, QWidget* parent)
    : QWidget(parent)
    , m_pointer(pointer)
{
    setCursor(Qt::OpenHandCursor);
    setFocusPolicy(Qt::NoFocus);
}

void PetPointerArea::mousePressEvent(QMouseEvent* event)
{
    m_last = event->globalPosition();
    if (event->button() == Qt::LeftButton)
        m_pointer.press(m_last.x(), m_last.y());
    else if (event->button() == Qt::RightButton && !m_pointer.isDragging())
        m_pointer.rightPress();
}

void PetPointerArea::mouseDoubleClickEvent(QMouseEvent* event)
{
    // The pointer model counts the clicks itself.
    mousePressEvent(event);
}

void PetPointerArea::mouseMoveEvent(QMouseEvent* event)
{
    m_last = event->globalPosition();
    if (!(event->buttons() & Qt::LeftButton))
        return endLostDrag();
    m_pointer.move(m_last.x(), m_last.y());
    if (m_pointer.isDragging())
        setCursor(Qt::ClosedHandCursor);
}

void PetPointerArea::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton)
        return;
    m_last = event->globalPosition();
    m_pointer.release();
    setCursor(Qt::OpenHandCursor);
}

void PetPointerArea::endLostDrag()
{
    // A locked screen, or a desktop that takes the pointer away, keeps the release to itself.
    if (!m_pointer.isDragging())
        return;
    m_pointer.cancel();
    setCursor(Qt::OpenHandCursor);
}

void PetPointerArea::enterEvent(QEnterEvent*)
{
    if (!(QGuiApplication::mouseButtons() & Qt::LeftButton))
        endLostDrag();
    m_pointer.enter();
}

void PetPointerArea::hideEvent(QHideEvent*)
{
    m_pointer.cancel();
    setCursor(Qt::OpenHandCursor);
}

} // namespace nibbo
