#include "platform/qt/WindowActivation.h"

#include <QGuiApplication>
#include <QWindow>

#include <xcb/xcb.h>

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace korvex::platform::qt {

namespace {

constexpr const char* kWaylandToken = "XDG_ACTIVATION_TOKEN";

xcb_connection_t* x11() {
    const auto* const native = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    return native ? native->connection() : nullptr;
}

/// An X11 startup identifier ends with the moment of the user's press.
std::optional<std::uint32_t> timeOf(std::string_view token) {
    constexpr std::string_view kTime = "_TIME";
    const auto start = token.rfind(kTime);
    if (start == std::string_view::npos) {
        return std::nullopt;
    }
    const auto digits = token.substr(start + kTime.size());
    std::uint32_t time = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), time);
    return error == std::errc() && end == digits.data() + digits.size() && time != 0
               ? std::optional<std::uint32_t>(time)
               : std::nullopt;
}

struct Free {
    void operator()(void* memory) const { std::free(memory); }
};

xcb_atom_t atom(xcb_connection_t* connection, std::string_view name) {
    const auto asked =
        xcb_intern_atom(connection, 0, static_cast<std::uint16_t>(name.size()), name.data());
    const std::unique_ptr<xcb_intern_atom_reply_t, Free> reply(
        xcb_intern_atom_reply(connection, asked, nullptr));
    return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
}

void send(xcb_connection_t* connection, const xcb_client_message_event_t& event,
          std::uint32_t mask) {
    const auto root = xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root;
    xcb_send_event(connection, 0, root, mask, reinterpret_cast<const char*>(&event));
}

void askForKeyboard(xcb_connection_t* connection, xcb_window_t window, std::uint32_t time) {
    constexpr std::uint32_t kFromApplication = 1;
    xcb_client_message_event_t event{};
    event.response_type = XCB_CLIENT_MESSAGE;
    event.format = 32;
    event.window = window;
    event.type = atom(connection, "_NET_ACTIVE_WINDOW");
    event.data.data32[0] = kFromApplication;
    event.data.data32[1] = time;
    send(connection, event,
         XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT);
}

/// As the startup protocol has a value in which there are blanks: one would end it.
std::string quoted(const std::string& value) {
    if (value.find_first_of(" \"\\") == std::string::npos) {
        return value;
    }
    std::string text = "\"";
    for (const auto each : value) {
        if (each == '"' || each == '\\') {
            text += '\\';
        }
        text += each;
    }
    return text + '"';
}

/// Ends what the launcher shows until the program is there: it sees no new window.
void tellStarted(xcb_connection_t* connection, xcb_window_t window, const std::string& token) {
    const auto text = "remove: ID=" + quoted(token);
    xcb_client_message_event_t event{};
    event.response_type = XCB_CLIENT_MESSAGE;
    event.format = 8;
    event.window = window;
    event.type = atom(connection, "_NET_STARTUP_INFO_BEGIN");
    const auto next = atom(connection, "_NET_STARTUP_INFO");
    // In pieces of twenty bytes, with the zero at its end.
    for (std::size_t start = 0; start <= text.size(); start += sizeof event.data.data8) {
        std::memset(event.data.data8, 0, sizeof event.data.data8);
        std::memcpy(event.data.data8, text.data() + start,
                    std::min(text.size() - start, sizeof event.data.data8));
        send(connection, event, XCB_EVENT_MASK_PROPERTY_CHANGE);
        event.type = next;
    }
}

} // namespace

void prepareActivation(const std::string& token) {
    if (!token.empty() && !x11()) {
        qputenv(kWaylandToken, QByteArray::fromStdString(token)); // Qt takes it from there
    }
}

void finishActivation(QWindow& window, const std::string& token) {
    auto* const connection = x11();
    if (token.empty() || !connection) {
        return;
    }
    const auto id = static_cast<xcb_window_t>(window.winId());
    if (const auto time = timeOf(token)) {
        askForKeyboard(connection, id, *time);
    }
    tellStarted(connection, id, token);
    xcb_flush(connection);
}

} // namespace korvex::platform::qt
