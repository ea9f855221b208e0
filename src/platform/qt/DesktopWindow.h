#pragma once

class QWindow;

namespace korvex::platform::qt {

/// Whether a window can stand below all others, and on every desktop of the user's. Only X11 has
/// words for it.
bool canStandOnDesktop();
/// Makes it one of the desktop's: on every one of these, in no list of windows. To be called before
/// the window is shown, each time, since a window that is hidden is asked anew. Does nothing where
/// that cannot be. That it stands below others is a flag of Qt's.
void standOnDesktop(QWindow& window);

} // namespace korvex::platform::qt
