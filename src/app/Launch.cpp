#include "app/Launch.h"

#include "base/EnvironmentVariable.h"

#include <utility>

namespace korvex::app {

namespace {

/// Each field is one letter and its text, and ends with a byte that no argument of a program has.
constexpr char kEnd = '\0';
constexpr char kLink = 'l';
constexpr char kAction = 'a';
constexpr char kParameter = 'p';
constexpr char kToken = 't';

void append(std::string& message, char kind, const std::string& text) {
    message += kind;
    message += text.substr(0, text.find(kEnd));
    message += kEnd;
}

} // namespace

std::string Launch::encoded() const {
    std::string message;
    for (const auto& link : links) {
        append(message, kLink, link);
    }
    append(message, kAction, action);
    for (const auto& parameter : parameters) {
        append(message, kParameter, parameter);
    }
    append(message, kToken, token);
    return message;
}

std::optional<Launch> Launch::decode(std::string_view message) {
    Launch launch;
    while (!message.empty()) {
        const auto end = message.find(kEnd);
        if (end == std::string_view::npos || end == 0) {
            return std::nullopt;
        }
        const auto text = std::string(message.substr(1, end - 1));
        switch (message.front()) {
        case kLink:
            launch.links.push_back(text);
            break;
        case kAction:
            launch.action = text;
            break;
        case kParameter:
            launch.parameters.push_back(text);
            break;
        case kToken:
            launch.token = text.size() <= kLongestToken ? text : std::string();
            break;
        default: // of a later version
            break;
        }
        message.remove_prefix(end + 1);
    }
    return launch;
}

std::string launchToken() {
    // The first is Wayland's, the second X11's; a desktop sets what it understands.
    for (const auto* name : {"XDG_ACTIVATION_TOKEN", "DESKTOP_STARTUP_ID"}) {
        if (auto value = base::environmentVariable(name); value && value->size() <= kLongestToken) {
            return *std::move(value);
        }
    }
    return {};
}

} // namespace korvex::app
