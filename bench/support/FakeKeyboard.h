#pragma once

#include "support/XKeys.h"

#include <chrono>
#include <initializer_list>
#include <map>
#include <string>

namespace korvex::bench {

/// A keyboard whose keys the X server takes for real ones (XTEST), and what can be seen of the
/// screen meanwhile.
class FakeKeyboard {
public:
    explicit FakeKeyboard(const std::string& display);

    /// Presses keys of those that XKeys.h names, and lets go of them, the last one first.
    void press(std::initializer_list<xcb_keysym_t> keys);
    /// What has happened on the screen until now does not count for `windowLeaves`.
    void forgetWhatHappened();
    /// Whether one does within that time.
    bool windowLeaves(std::chrono::milliseconds patience);

private:
    void send(std::uint8_t type, xcb_keysym_t key);

    XConnection m_connection;
    std::map<xcb_keysym_t, xcb_keycode_t> m_keys;
};

} // namespace korvex::bench
