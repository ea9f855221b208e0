#pragma once

#include <string>
#include <vector>

namespace korvex::cli {

/// Replaces this program by the desktop app, found beside it or else in PATH. Returns only when
/// that cannot be, with the reason as a sentence.
std::string becomeDesktopApp(const std::vector<std::string>& arguments);
/// The same with the program of the widgets.
std::string becomeWidgets(const std::vector<std::string>& arguments);

} // namespace korvex::cli
