#pragma once

#include <xcb/xcb.h>

#include <string_view>

namespace korvex::platform::qt {

/// Qt's own connection to the X server; null where the windows are no X11 windows.
xcb_connection_t* x11();
/// Asks the server, and waits for it.
xcb_atom_t atom(xcb_connection_t* connection, std::string_view name);

} // namespace korvex::platform::qt
