#include "support/FakeKeyboard.h"

#include <poll.h>

#include <xcb/xtest.h>

#include <iterator>

namespace korvex::bench {

FakeKeyboard::FakeKeyboard(const std::string& display)
    : m_connection(xcb_connect(display.c_str(), nullptr)) {
    const XAnswer<xcb_test_get_version_reply_t> reply(xcb_test_get_version_reply(
        m_connection.get(), xcb_test_get_version(m_connection.get(), 2, 2), nullptr));
    if (!reply) {
        throw std::runtime_error("the X server takes no keys from programs");
    }
    for (const auto key : {kControlKey, kAltKey, kLetterKey, kEscapeKey}) {
        m_keys[key] = keyOf(m_connection.get(), key);
    }
    constexpr std::uint32_t kEvents = XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
    xcb_change_window_attributes(m_connection.get(), rootOf(m_connection.get()), XCB_CW_EVENT_MASK,
                                 &kEvents);
    xcb_flush(m_connection.get());
}

void FakeKeyboard::press(std::initializer_list<xcb_keysym_t> keys) {
    for (const auto key : keys) {
        send(XCB_KEY_PRESS, key);
    }
    for (auto key = std::rbegin(keys); key != std::rend(keys); ++key) {
        send(XCB_KEY_RELEASE, *key);
    }
    xcb_flush(m_connection.get());
}

void FakeKeyboard::send(std::uint8_t type, xcb_keysym_t key) {
    xcb_test_fake_input(m_connection.get(), type, m_keys.at(key), XCB_CURRENT_TIME, XCB_NONE, 0, 0,
                        0);
}

void FakeKeyboard::forgetWhatHappened() {
    // An answer comes after all that happened before the question.
    const XAnswer<xcb_get_input_focus_reply_t> answer(xcb_get_input_focus_reply(
        m_connection.get(), xcb_get_input_focus(m_connection.get()), nullptr));
    while (const XAnswer<xcb_generic_event_t> event{xcb_poll_for_event(m_connection.get())}) {
    }
}

bool FakeKeyboard::windowLeaves(std::chrono::milliseconds patience) {
    constexpr std::uint8_t kEventTypes = 0x7F; // the highest bit: another program has sent it
    const auto end = std::chrono::steady_clock::now() + patience;
    for (;;) {
        while (const XAnswer<xcb_generic_event_t> event{xcb_poll_for_event(m_connection.get())}) {
            if ((event->response_type & kEventTypes) == XCB_UNMAP_NOTIFY) {
                return true;
            }
        }
        const auto left =
            std::chrono::ceil<std::chrono::milliseconds>(end - std::chrono::steady_clock::now());
        if (left.count() <= 0) {
            return false;
        }
        pollfd reading{
            .fd = xcb_get_file_descriptor(m_connection.get()), .events = POLLIN, .revents = 0};
        ::poll(&reading, 1, static_cast<int>(left.count()));
    }
}

} // namespace korvex::bench
