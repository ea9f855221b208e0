#pragma once

#include <cstdint>
#include <string>

class QWindow;

namespace korvex::platform::qt {

// A desktop lets a window take the keyboard only for who was asked by the user, which is what the
// token of a launch says. An empty one says nothing.

/// Before the window is brought forward.
void prepareActivation(const std::string& token);
/// After that: what only can be said of a window that is there.
void finishActivation(QWindow& window, const std::string& token);

/// After that too, of a window that the user has called by a key that works anywhere, at this
/// moment as the X server counts; 0 where nobody knows. It takes the keyboard whatever else has it.
void activateCalledWindow(QWindow& window, std::uint32_t time);

} // namespace korvex::platform::qt
