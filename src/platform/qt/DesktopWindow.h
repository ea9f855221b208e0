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

enum class Placing { move, resize };
/// The window manager lets the user do it by arrow keys. Only on X11; elsewhere it does nothing.
void placeByKeys(QWindow& window, Placing what);

} // namespace korvex::platform::qt
