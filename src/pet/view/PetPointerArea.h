#pragma once

#include <QWidget>

namespace nibbo {

class PetPointer;

/// The pet's square: hands every pointer event to the pointer model. Paints nothing. Main thread.
class PetPointerArea final : public QWidget
{
    Q_OBJECT

public:
    PetPointerArea(PetPointer& pointer, QWidget* parent);

    /// Where the pointer was last, in Qt's global coordinates.
    QPointF lastPosition() const { return m_last; }

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void enterEvent(QEnterEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    void endLostDrag();
    PetPointer& m_pointer;
    QPointF m_last;
};

} // namespace nibbo
