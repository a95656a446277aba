#include "platform/OldTray.h"

#include <QGuiApplication>

#include <xcb/xcb.h>

#include <cstdlib>
#include <cstring>
#include <memory>

namespace nibbo {

bool oldTrayExists()
{
    const auto* const x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    if (x11 == nullptr)
        return false;
    xcb_connection_t* const connection = x11->connection();
    constexpr char selection[] = "_NET_SYSTEM_TRAY_S0";
    const std::unique_ptr<xcb_intern_atom_reply_t, decltype(&std::free)> atom(
        xcb_intern_atom_reply(connection, xcb_intern_atom(connection, 1, std::strlen(selection), selection),
                              nullptr),
        &std::free);
    if (!atom || atom->atom == XCB_ATOM_NONE)
        return false;
    const std::unique_ptr<xcb_get_selection_owner_reply_t, decltype(&std::free)> owner(
        xcb_get_selection_owner_reply(connection, xcb_get_selection_owner(connection, atom->atom), nullptr),
        &std::free);
    return owner && owner->owner != XCB_WINDOW_NONE;
}

} // namespace nibbo
