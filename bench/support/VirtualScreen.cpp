#include "support/VirtualScreen.h"

namespace korvex::bench {

VirtualScreen::VirtualScreen() {
    m_server = std::make_unique<ChildProcess>(
        std::vector<std::string>{"Xvfb", "-displayfd", "1", "-screen", "0", "1600x1000x24",
                                 "-nolisten", "tcp", "-noreset"},
        Environment{}, ChildProcess::Output::watched);
    // The server says its number once it is ready; it may grumble before.
    while (m_display.empty() || m_display.find_first_not_of("0123456789") != std::string::npos) {
        m_display = m_server->waitForLine("");
    }
}

Environment VirtualScreen::environment() const {
    return {{"DISPLAY", ":" + m_display},
            {"QT_QPA_PLATFORM", "xcb"},
            {"WAYLAND_DISPLAY", ""},
            {"DBUS_SESSION_BUS_ADDRESS", "disabled:"}};
}

} // namespace korvex::bench
