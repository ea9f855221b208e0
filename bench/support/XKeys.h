#pragma once

#include "platform/x11/Xcb.h"

#include <cstdint>
#include <stdexcept>

namespace korvex::bench {

/// To an X server, of one's own.
using XConnection = platform::x11::Connection;
template <typename T>
using XAnswer = platform::x11::Answer<T>;

/// What is pressed from anywhere: few window managers have it.
inline constexpr xcb_keysym_t kControlKey = 0xFFE3;
inline constexpr xcb_keysym_t kAltKey = 0xFFE9;
inline constexpr xcb_keysym_t kLetterKey = 'n';
inline constexpr xcb_keysym_t kEscapeKey = 0xFF1B;
inline constexpr std::uint16_t kShortcutModifiers = XCB_MOD_MASK_CONTROL | XCB_MOD_MASK_1;

/// The key that types this without modifiers. Throws std::runtime_error where there is none.
inline xcb_keycode_t keyOf(xcb_connection_t* connection, xcb_keysym_t wanted) {
    const auto* const setup = xcb_get_setup(connection);
    const auto count = static_cast<std::uint8_t>(setup->max_keycode - setup->min_keycode + 1);
    const XAnswer<xcb_get_keyboard_mapping_reply_t> reply(xcb_get_keyboard_mapping_reply(
        connection, xcb_get_keyboard_mapping(connection, setup->min_keycode, count), nullptr));
    for (int i = 0; reply && i < count; ++i) {
        if (xcb_get_keyboard_mapping_keysyms(reply.get())[i * reply->keysyms_per_keycode] ==
            wanted) {
            return static_cast<xcb_keycode_t>(setup->min_keycode + i);
        }
    }
    throw std::runtime_error("the X server has no such key");
}

inline xcb_window_t rootOf(xcb_connection_t* connection) {
    return xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root;
}

} // namespace korvex::bench
