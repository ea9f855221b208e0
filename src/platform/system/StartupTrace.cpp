#include "platform/system/StartupTrace.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <string>

namespace korvex::platform::system {

namespace {

double secondsSinceBoot() {
    timespec now{};
    ::clock_gettime(CLOCK_BOOTTIME, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

/// Field 22 of /proc/self/stat, counted from behind the program's name, which may hold spaces.
double processStart() {
    std::ifstream file("/proc/self/stat");
    std::string text;
    std::getline(file, text);
    text.erase(0, text.rfind(')') + 1);
    const auto* rest = text.c_str();
    char* end = nullptr;
    double ticks = 0;
    for (int field = 3; field <= 22; ++field) {
        rest += field == 3 ? 2 : 0; // the state is a letter
        ticks = field == 3 ? 0 : std::strtod(rest, &end);
        rest = field == 3 ? rest : end;
    }
    return ticks / static_cast<double>(::sysconf(_SC_CLK_TCK));
}

} // namespace

StartupTrace::StartupTrace() : m_mainSeconds(secondsSinceBoot()) {}

void StartupTrace::report(const char* event) const {
    if (std::getenv("KORVEX_TRACE_STARTUP")) {
        const auto now = secondsSinceBoot();
        std::fprintf(stderr, "%s: %.0f ms since exec, %.1f ms since main\n", event,
                     (now - processStart()) * 1000, (now - m_mainSeconds) * 1000);
    }
}

} // namespace korvex::platform::system
