#include "platform/qt/WindowActivation.h"

#include "platform/qt/X11.h"

#include <QWindow>

#include <xcb/xcb.h>

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>

namespace korvex::platform::qt {

namespace {

constexpr const char* kWaylandToken = "XDG_ACTIVATION_TOKEN";

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

/// Who asks for a window, as window managers know it: the second says that the user does.
enum class Asker : std::uint32_t { application = 1, user = 2 };

void askForKeyboard(xcb_connection_t* connection, xcb_window_t window, Asker asker,
                    std::uint32_t time) {
    askWindowManager(connection, window, "_NET_ACTIVE_WINDOW",
                     {static_cast<std::uint32_t>(asker), time});
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
        sendToRoot(connection, event, XCB_EVENT_MASK_PROPERTY_CHANGE);
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
        askForKeyboard(connection, id, Asker::application, *time);
    }
    tellStarted(connection, id, token);
    xcb_flush(connection);
}

void activateCalledWindow(QWindow& window, std::uint32_t time) {
    if (auto* const connection = x11()) {
        askForKeyboard(connection, static_cast<xcb_window_t>(window.winId()), Asker::user, time);
    }
}

} // namespace korvex::platform::qt
