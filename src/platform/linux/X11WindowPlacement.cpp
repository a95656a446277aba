#include "platform/linux/X11WindowPlacement.h"

#include "platform/null/NullWindowPlacement.h"

#include <QGuiApplication>
#include <QWidget>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <iterator>
#include <memory>
#include <string>

#include <xcb/shape.h>
#include <xcb/xcb.h>

namespace nibbo {
namespace {

constexpr std::uint32_t everyDesktop = 0xFFFFFFFF;
/// Window managers obey a pager to the pixel; an application's own wish they may bend into the work area.
constexpr std::uint32_t sourcePager = 2;

struct FreeDeleter
{
    void operator()(void* memory) const { std::free(memory); }
};
template <typename Reply>
using ReplyPointer = std::unique_ptr<Reply, FreeDeleter>;

int screenNumber(xcb_connection_t* connection, xcb_window_t root)
{
    int number = 0;
    for (auto it = xcb_setup_roots_iterator(xcb_get_setup(connection)); it.rem > 0; xcb_screen_next(&it)) {
        if (it.data->root == root)
            return number;
        ++number;
    }
    return 0;
}

} // namespace

std::unique_ptr<X11WindowPlacement> X11WindowPlacement::make(QWidget& window)
{
    const auto* x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    if (!x11 || !x11->connection())
        return nullptr;
    return std::unique_ptr<X11WindowPlacement>(new X11WindowPlacement(window, x11->connection()));
}

X11WindowPlacement::X11WindowPlacement(QWidget& window, xcb_connection_t* connection)
    : m_window(window)
    , m_connection(connection)
{
    const ReplyPointer<xcb_get_geometry_reply_t> geometry(
        xcb_get_geometry_reply(m_connection, xcb_get_geometry(m_connection, windowId()), nullptr));
    m_root = geometry ? geometry->root : xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data->root;

    const std::string names[atomCount] = {
        "_NET_WM_STATE",
        "_NET_WM_STATE_ABOVE",
        "_NET_WM_STATE_STICKY",
        "_NET_WM_STATE_SKIP_TASKBAR",
        "_NET_WM_STATE_SKIP_PAGER",
        "_NET_WM_DESKTOP",
        "_NET_MOVERESIZE_WINDOW",
        "_NET_WM_CM_S" + std::to_string(screenNumber(m_connection, m_root)),
    };
    xcb_intern_atom_cookie_t cookies[atomCount];
    for (int i = 0; i < atomCount; ++i)
        cookies[i] =
            xcb_intern_atom(m_connection, 0, static_cast<std::uint16_t>(names[i].size()), names[i].c_str());
    for (int i = 0; i < atomCount; ++i) {
        const ReplyPointer<xcb_intern_atom_reply_t> reply(
            xcb_intern_atom_reply(m_connection, cookies[i], nullptr));
        m_atoms[i] = reply ? reply->atom : 0U;
    }

    // Qt watches the owner of the compositor's selection for its own purposes on this very connection, so the
    // server's word of a change passes through our filter too.
    constexpr char fixes[] = "XFIXES";
    const ReplyPointer<xcb_query_extension_reply_t> extension(xcb_query_extension_reply(
        m_connection, xcb_query_extension(m_connection, sizeof fixes - 1, fixes), nullptr));
    if (extension && extension->present)
        m_selectionNotify = extension->first_event;
    m_compositor = ownsCompositorSelection();
    qGuiApp->installNativeEventFilter(this);
}

X11WindowPlacement::~X11WindowPlacement()
{
    if (qGuiApp)
        qGuiApp->removeNativeEventFilter(this);
}

std::uint32_t X11WindowPlacement::windowId() const
{
    return static_cast<std::uint32_t>(m_window.winId());
}

void X11WindowPlacement::prepareToShow()
{
    m_framed = false;
    std::vector<std::uint32_t> states = {m_atoms[netWmStateSkipTaskbar], m_atoms[netWmStateSkipPager],
                                         m_atoms[netWmStateSticky]};
    if (m_above)
        states.push_back(m_atoms[netWmStateAbove]);
    xcb_change_property(m_connection, XCB_PROP_MODE_REPLACE, windowId(), m_atoms[netWmState], XCB_ATOM_ATOM,
                        32, static_cast<std::uint32_t>(states.size()), states.data());
    xcb_change_property(m_connection, XCB_PROP_MODE_REPLACE, windowId(), m_atoms[netWmDesktop],
                        XCB_ATOM_CARDINAL, 32, 1, &everyDesktop);
    applyInputRegion();
    applyCut();
    xcb_flush(m_connection);
}

void X11WindowPlacement::setAbove(bool above)
{
    m_above = above;
    if (!m_window.isVisible())
        return;
    changeState(above, netWmStateAbove, std::nullopt);
    xcb_flush(m_connection);
}

void X11WindowPlacement::moveTo(QPoint physical)
{
    m_position = physical;
    const auto x = static_cast<std::uint32_t>(physical.x());
    const auto y = static_cast<std::uint32_t>(physical.y());
    if (m_framed) {
        constexpr std::uint32_t hasX = 1U << 8;
        constexpr std::uint32_t hasY = 1U << 9;
        sendToRoot(netMoveResizeWindow,
                   {XCB_GRAVITY_NORTH_WEST | hasX | hasY | sourcePager << 12, x, y, 0, 0});
    } else {
        const std::uint32_t values[] = {x, y};
        xcb_configure_window(m_connection, windowId(), XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y, values);
    }
    xcb_flush(m_connection);
}

void X11WindowPlacement::setInputRegion(const QRegion& region)
{
    m_input = region;
    applyInputRegion();
    xcb_flush(m_connection);
}

void X11WindowPlacement::cutTo(const QRegion& region)
{
    if (region.isNull() && m_cut.isNull())
        return;
    m_cut = region;
    applyCut();
    xcb_flush(m_connection);
}

void X11WindowPlacement::applyInputRegion()
{
    const std::vector<xcb_rectangle_t> rectangles = physicalRectangles(m_input);
    xcb_shape_rectangles(m_connection, XCB_SHAPE_SO_SET, XCB_SHAPE_SK_INPUT, XCB_CLIP_ORDERING_UNSORTED,
                         windowId(), 0, 0, static_cast<std::uint32_t>(rectangles.size()), rectangles.data());
}

void X11WindowPlacement::applyCut()
{
    if (m_cut.isNull()) {
        xcb_shape_mask(m_connection, XCB_SHAPE_SO_SET, XCB_SHAPE_SK_BOUNDING, windowId(), 0, 0,
                       XCB_PIXMAP_NONE);
        return;
    }
    const std::vector<xcb_rectangle_t> rectangles = physicalRectangles(m_cut);
    xcb_shape_rectangles(m_connection, XCB_SHAPE_SO_SET, XCB_SHAPE_SK_BOUNDING, XCB_CLIP_ORDERING_UNSORTED,
                         windowId(), 0, 0, static_cast<std::uint32_t>(rectangles.size()), rectangles.data());
}

std::vector<xcb_rectangle_t> X11WindowPlacement::physicalRectangles(const QRegion& region) const
{
    const double ratio = m_window.devicePixelRatioF();
    std::vector<xcb_rectangle_t> rectangles;
    rectangles.reserve(static_cast<std::size_t>(region.rectCount()));
    for (const QRect& rect : region) {
        const auto left = static_cast<std::int16_t>(std::floor(rect.left() * ratio));
        const auto top = static_cast<std::int16_t>(std::floor(rect.top() * ratio));
        const double right = std::ceil((rect.right() + 1) * ratio);
        const double bottom = std::ceil((rect.bottom() + 1) * ratio);
        rectangles.push_back(
            {left, top, static_cast<std::uint16_t>(right - left), static_cast<std::uint16_t>(bottom - top)});
    }
    return rectangles;
}

void X11WindowPlacement::sendToRoot(Atom type, const std::uint32_t (&data)[5])
{
    xcb_client_message_event_t event{};
    event.response_type = XCB_CLIENT_MESSAGE;
    event.format = 32;
    event.window = windowId();
    event.type = m_atoms[type];
    std::copy(std::begin(data), std::end(data), event.data.data32);
    xcb_send_event(m_connection, 0, m_root,
                   XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
                   reinterpret_cast<const char*>(&event));
}

void X11WindowPlacement::changeState(bool add, Atom first, std::optional<Atom> second)
{
    sendToRoot(netWmState, {add ? 1U : 0U, m_atoms[first], second ? m_atoms[*second] : 0U, sourcePager, 0});
}

bool X11WindowPlacement::ownsCompositorSelection() const
{
    const ReplyPointer<xcb_get_selection_owner_reply_t> reply(xcb_get_selection_owner_reply(
        m_connection, xcb_get_selection_owner(m_connection, m_atoms[compositorSelection]), nullptr));
    return reply && reply->owner != XCB_WINDOW_NONE;
}

bool X11WindowPlacement::nativeEventFilter(const QByteArray& type, void* message, qintptr*)
{
    if (type != "xcb_generic_event_t")
        return false;
    const auto* event = static_cast<const xcb_generic_event_t*>(message);
    const std::uint8_t kind = event->response_type & 0x7F;
    if (kind == XCB_REPARENT_NOTIFY) {
        const auto* reparented = reinterpret_cast<const xcb_reparent_notify_event_t*>(event);
        if (reparented->window != windowId() || reparented->event != reparented->window)
            return false;
        m_framed = reparented->parent != m_root;
        if (!m_framed)
            return false;
        // A frame takes over the shape only as it is set now. A manager that has just taken the place of
        // another one also has to be told the rest anew.
        applyInputRegion();
        applyCut();
        changeState(true, netWmStateSkipTaskbar, netWmStateSkipPager);
        changeState(true, netWmStateSticky, std::nullopt);
        changeState(m_above, netWmStateAbove, std::nullopt);
        if (m_position)
            moveTo(*m_position);
        xcb_flush(m_connection);
    } else if (m_selectionNotify != 0 && kind == m_selectionNotify) {
        const bool compositor = ownsCompositorSelection();
        if (compositor != m_compositor) {
            m_compositor = compositor;
            Q_EMIT blendingChanged();
        }
    }
    return false;
}

std::unique_ptr<WindowPlacement> makeWindowPlacement(QWidget& window)
{
    if (auto placement = X11WindowPlacement::make(window))
        return placement;
    return std::make_unique<NullWindowPlacement>(window);
}

} // namespace nibbo
