#include "platform/qt/X11.h"

#include <QGuiApplication>

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

} // namespace korvex::platform::qt
