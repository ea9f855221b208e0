#pragma once

namespace korvex::app {

/// Whether something starts the agent when the user logs in: its unit or its autostart file, where
/// it is installed, or the desktop app that the user has started then. Looks at the file system.
bool startsAtLogin();

} // namespace korvex::app
