#pragma once

#include "app/AutostartFile.h"
#include "app/DesktopKind.h"
#include "app/GlobalHotkeyManager.h"

#include <string>

namespace korvex::app {

/// How Quick Entry is reached from anywhere, as far as the user sets that up. Main thread.
struct QuickEntrySetup {
    GlobalHotkeyManager& hotkey;
    /// Has the program ready from the login on.
    AutostartFile autostart;
    DesktopKind desktop = DesktopKind::other;
    /// What opens it wherever commands are run.
    std::string command;
};

} // namespace korvex::app
