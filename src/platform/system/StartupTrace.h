#pragma once

namespace korvex::platform::system {

/// With KORVEX_TRACE_STARTUP set, writes to standard error how many milliseconds have passed since
/// this process was started, as the kernel counts (in steps of 10 ms), and since `main` (exactly).
class StartupTrace {
public:
    StartupTrace();
    void report(const char* event) const;

private:
    double m_mainSeconds;
};

} // namespace korvex::platform::system
