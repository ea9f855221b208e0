#pragma once

#include <xcb/xcb.h>

#include <array>
#include <cstdint>
#include <string_view>

namespace korvex::platform::qt {

/// Qt's own connection to the X server; null where the windows are no X11 windows.
xcb_connection_t* x11();
/// Asks the server, and waits for it.
xcb_atom_t atom(xcb_connection_t* connection, std::string_view name);
/// Sends the window manager a message of this name and content about the window.
void askWindowManager(xcb_connection_t* connection, xcb_window_t window, std::string_view name,
                      const std::array<std::uint32_t, 5>& content);
/// To those who select for this of the screen's root.
void sendToRoot(xcb_connection_t* connection, const xcb_client_message_event_t& event,
                std::uint32_t mask);

} // namespace korvex::platform::qt
