#pragma once

#include <QRegion>
#include <QSize>
#include <QWidget>

namespace nibbo {

/// Where the tail of the bubble points to: the side of the bubble on which the pet is.
enum class TailSide
{
    bottom,
    top
};

/// What the pet's window knows of the speech bubble above the pet: how large it wants to be and where it
/// takes clicks. The window places it (as a child widget) and tells it where the pet is; the bubble draws
/// itself and decides whether it is wanted at all. Sizes are device-independent pixels. Main thread.
class BubblePane : public QWidget
{
    Q_OBJECT

public:
    using QWidget::QWidget;

    /// The size it wants now, tail included; empty when there is nothing to show. While a bubble fades away
    /// it still wants its size.
    virtual QSize preferredSize() const = 0;

    /// Where it takes clicks, in its own coordinates (buttons, scrolling text). Everything else falls through
    /// to the windows below.
    virtual QRegion clickRegion() const = 0;

    /// The tail leaves on that side; `tip` is how far from the bubble's left edge it points to the pet's
    /// middle.
    virtual void setTail(TailSide side, int tip) = 0;

Q_SIGNALS:
    void preferredSizeChanged();
    void clickRegionChanged();
};

} // namespace nibbo
