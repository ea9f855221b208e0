#pragma once

#include "support/ChildProcess.h"

#include <memory>
#include <string>

namespace korvex::bench {

/// An X server in memory, for windows that are measured.
class VirtualScreen {
public:
    VirtualScreen();

    /// What a program needs in its environment to show its windows there.
    Environment environment() const;

private:
    std::unique_ptr<ChildProcess> m_server;
    std::string m_display;
};

} // namespace korvex::bench
