#pragma once

#include <string>

class QWindow;

namespace korvex::platform::qt {

// A desktop lets a window take the keyboard only for who was asked by the user, which is what the
// token of a launch says. An empty one says nothing.

/// Before the window is brought forward.
void prepareActivation(const std::string& token);
/// After that: what only can be said of a window that is there.
void finishActivation(QWindow& window, const std::string& token);

} // namespace korvex::platform::qt
