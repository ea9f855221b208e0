#pragma once

#include "support/Program.h"

#include <fcntl.h>

#include <stdexcept>
#include <string>
#include <vector>

namespace korvex::tests {

/// An X server of its own, without a screen, a window manager or anybody else's clients.
class XServer {
public:
    XServer() { start({}); }
    ~XServer() { stop(); }
    XServer(const XServer&) = delete;
    XServer& operator=(const XServer&) = delete;

    const std::string& display() const { return m_display; }

    /// Another one, with the same display, where this one was stopped.
    void startAgain() { start({m_display}); }
    void stop() {
        if (m_process > 0) {
            ::kill(m_process, SIGTERM);
            ::waitpid(m_process, nullptr, 0);
            m_process = -1;
        }
    }

private:
    void start(std::vector<std::string> display) {
        int ready[2];
        if (::pipe(ready) != 0) {
            throw std::runtime_error("no pipe");
        }
        ::fcntl(ready[0], F_SETFD, FD_CLOEXEC);
        // It keeps its keyboard's layout when its last client goes.
        display.insert(display.begin(), "Xvfb");
        display.insert(display.end(), {"-displayfd", std::to_string(ready[1]), "-noreset",
                                       "-nolisten", "tcp", "-screen", "0", "640x480x24"});
        m_process = tests::start(display);
        ::close(ready[1]);
        std::string number;
        for (char each = 0; ::read(ready[0], &each, 1) == 1 && each != '\n';) {
            number += each;
        }
        ::close(ready[0]);
        if (number.empty()) {
            stop();
            throw std::runtime_error("Xvfb does not start");
        }
        m_display = ":" + number;
    }

    pid_t m_process = -1;
    std::string m_display;
};

} // namespace korvex::tests
