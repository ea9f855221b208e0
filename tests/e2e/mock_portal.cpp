// mock_portal: a desktop's portal for global shortcuts on the session bus, until its input ends.
// Each line that it reads is a press of the keys that the desktop has; it says "ready", and "bound"
// once a program has asked for the shortcut.
#include "platform/bus/MockPortal.h"
#include "platform/systemd/SdEventRunLoop.h"
#include "support/SilentLog.h"

#include <unistd.h>

#include <cstdio>

using namespace korvex;

namespace {

void say(const char* word) {
    std::puts(word);
    std::fflush(stdout);
}

} // namespace

int main() {
    tests::SilentLog log;
    platform::systemd::SdEventRunLoop runLoop;
    platform::bus::Bus bus(platform::bus::WhichBus::session, runLoop, log);
    tests::MockPortal portal(bus);
    bus.start();
    if (!runLoop.runUntil([&] { return portal.isThere(); }, std::chrono::seconds(10))) {
        return 1;
    }
    say("ready");
    const auto watch = runLoop.watch(STDIN_FILENO, base::RunLoop::Interest::reading, [&] {
        char read[64];
        const auto count = ::read(STDIN_FILENO, read, sizeof read);
        if (count <= 0) {
            runLoop.quit();
        } else {
            portal.press("token");
        }
    });
    if (runLoop.runUntil([&] { return portal.bindings > 0; }, std::chrono::seconds(60))) {
        say("bound");
        runLoop.run();
    }
    return 0;
}
