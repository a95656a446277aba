#pragma once

#include <QObject>
#include <QPoint>
#include <QRegion>

#include <memory>

class QWidget;

namespace nibbo {

/// What a window of the pet's kind needs of its desktop and Qt cannot give: above the others and on every
/// workspace without taking the focus, clicks only where it says so, exact moves even off the screen, and an
/// outline where nothing blends transparent pixels. One object per window, which it must not outlive.
/// Regions are device-independent pixels of the window. Main thread.
class WindowPlacement : public QObject
{
    Q_OBJECT

public:
    /// Call it in the window's show event, which comes before the window reaches the screen: desktops forget
    /// what a hidden window was told.
    virtual void prepareToShow() = 0;
    /// Above ordinary windows or among them; takes effect at once and holds over hiding.
    virtual void setAbove(bool above) = 0;
    /// Moves the window's upper left corner, in physical pixels of the desktop.
    virtual void moveTo(QPoint physical) = 0;
    /// Where the window takes the pointer; everywhere else events reach what lies below.
    virtual void setInputRegion(const QRegion& region) = 0;
    /// False where transparent pixels would be seen as black ones: the window must then be cut out.
    virtual bool blendsTransparency() const = 0;
    /// Cuts the window to the region; a null one takes the cut back.
    virtual void cutTo(const QRegion& region) = 0;

Q_SIGNALS:
    void blendingChanged();
};

/// The one for the running desktop.
std::unique_ptr<WindowPlacement> makeWindowPlacement(QWidget& window);

} // namespace nibbo
