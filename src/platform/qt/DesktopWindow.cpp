#include "platform/qt/DesktopWindow.h"

#include "platform/qt/X11.h"

#include <QWindow>

#include <array>
#include <cstdint>

namespace korvex::platform::qt {

namespace {

constexpr std::uint32_t kEveryDesktop = 0xFFFFFFFF;

/// As window managers number what a window asks for.
constexpr std::uint32_t kResizeByKeys = 9;
constexpr std::uint32_t kMoveByKeys = 10;
constexpr std::uint32_t kFromApplication = 1; // not from a pager

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

void placeByKeys(QWindow& window, Placing what) {
    if (auto* const connection = x11()) {
        askWindowManager(
            connection, static_cast<xcb_window_t>(window.winId()), "_NET_WM_MOVERESIZE",
            {0, 0, what == Placing::move ? kMoveByKeys : kResizeByKeys, 0, kFromApplication});
    }
}

} // namespace korvex::platform::qt
