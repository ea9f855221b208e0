#include "platform/qt/DesktopWindow.h"

#include "platform/qt/X11.h"

#include <QWindow>

#include <array>
#include <cstdint>

namespace korvex::platform::qt {

namespace {

constexpr std::uint32_t kEveryDesktop = 0xFFFFFFFF;

} // namespace

bool canStandOnDesktop() {
    return x11();
}

void standOnDesktop(QWindow& window) {
    auto* const connection = x11();
    if (!connection) {
        return;
    }
    const auto id = static_cast<xcb_window_t>(window.winId());
    const auto set = [&](const char* property, xcb_atom_t type, const auto& values) {
        xcb_change_property(connection, XCB_PROP_MODE_REPLACE, id, atom(connection, property), type,
                            32, static_cast<std::uint32_t>(values.size()), values.data());
    };
    set("_NET_WM_DESKTOP", XCB_ATOM_CARDINAL, std::array{kEveryDesktop});
    // Qt adds what it knows of when it shows the window.
    set("_NET_WM_STATE", XCB_ATOM_ATOM,
        std::array{atom(connection, "_NET_WM_STATE_SKIP_TASKBAR"),
                   atom(connection, "_NET_WM_STATE_SKIP_PAGER")});
}

} // namespace korvex::platform::qt
