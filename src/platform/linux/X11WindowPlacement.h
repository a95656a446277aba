#pragma once

#include "platform/WindowPlacement.h"

#include <QAbstractNativeEventFilter>

#include <cstdint>
#include <optional>
#include <vector>

struct xcb_connection_t;
struct xcb_rectangle_t;

namespace nibbo {

/// The pet's window on X11, with any window manager, or none, and with or without a compositor, either of
/// which may come and go. The window must be an ordinary frameless one: manager after manager treats one of
/// the special types (tool, utility, notification, override-redirect) wrongly in one of the points that
/// matter here.
class X11WindowPlacement final : public WindowPlacement, public QAbstractNativeEventFilter
{
    Q_OBJECT

public:
    /// Nothing when the application does not talk to an X server.
    static std::unique_ptr<X11WindowPlacement> make(QWidget& window);
    ~X11WindowPlacement() override;

    void prepareToShow() override;
    void setAbove(bool above) override;
    void moveTo(QPoint physical) override;
    void setInputRegion(const QRegion& region) override;
    bool blendsTransparency() const override { return m_compositor; }
    void cutTo(const QRegion& region) override;

    bool nativeEventFilter(const QByteArray& type, void* message, qintptr* result) override;

private:
    enum Atom
    {
        netWmState,
        netWmStateAbove,
        netWmStateSticky,
        netWmStateSkipTaskbar,
        netWmStateSkipPager,
        netWmDesktop,
        netMoveResizeWindow,
        compositorSelection,
        atomCount
    };

    X11WindowPlacement(QWidget& window, xcb_connection_t* connection);

    std::uint32_t windowId() const;
    std::vector<xcb_rectangle_t> physicalRectangles(const QRegion& region) const;
    void sendToRoot(Atom type, const std::uint32_t (&data)[5]);
    void changeState(bool add, Atom first, std::optional<Atom> second);
    void applyInputRegion();
    void applyCut();
    bool ownsCompositorSelection() const;

    QWidget& m_window;
    xcb_connection_t* m_connection;
    std::uint32_t m_root = 0;
    std::uint32_t m_atoms[atomCount] = {};
    std::uint8_t m_selectionNotify = 0;
    bool m_above = false;
    bool m_compositor = true;
    /// A window manager has put the window into a frame of its own.
    bool m_framed = false;
    std::optional<QPoint> m_position;
    QRegion m_input;
    QRegion m_cut;
};

} // namespace nibbo
