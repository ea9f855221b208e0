#include "platform/qt/X11.h"

#include <QGuiApplication>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <memory>

namespace korvex::platform::qt {

namespace {

struct Free {
    void operator()(void* memory) const { std::free(memory); }
};

} // namespace

xcb_connection_t* x11() {
    const auto* const native = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    return native ? native->connection() : nullptr;
}

xcb_atom_t atom(xcb_connection_t* connection, std::string_view name) {
    const auto asked =
        xcb_intern_atom(connection, 0, static_cast<std::uint16_t>(name.size()), name.data());
    const std::unique_ptr<xcb_intern_atom_reply_t, Free> reply(
        xcb_intern_atom_reply(connection, asked, nullptr));
    return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
}

void askWindowManager(xcb_connection_t* connection, xcb_window_t window, std::string_view name,
                      const std::array<std::uint32_t, 5>& content) {
    xcb_client_message_event_t event{};
    event.response_type = XCB_CLIENT_MESSAGE;
    event.format = 32;
    event.window = window;
    event.type = atom(connection, name);
    std::copy(content.begin(), content.end(), event.data.data32);
    sendToRoot(connection, event,
               XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT);
    xcb_flush(connection);
}

void sendToRoot(xcb_connection_t* connection, const xcb_client_message_event_t& event,
                std::uint32_t mask) {
    const auto root = xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root;
    xcb_send_event(connection, 0, root, mask, reinterpret_cast<const char*>(&event));
}

} // namespace korvex::platform::qt
