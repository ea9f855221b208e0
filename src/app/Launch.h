#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace korvex::app {

/// What somebody asks the desktop app for: to come forward at least.
struct Launch {
    /// Links and files to be opened.
    std::vector<std::string> links = {};
    /// An action of the desktop file, such as a menu of launchers has; empty for none.
    std::string action = {};
    /// What the action is done with.
    std::vector<std::string> parameters = {};
    /// The desktop's leave to take the keyboard, as it gives one to whom the user has asked; empty
    /// for none.
    std::string token = {};

    bool operator==(const Launch&) const = default;

    /// As one message between our own programs.
    std::string encoded() const;
    /// Absent for what is none.
    static std::optional<Launch> decode(std::string_view message);
};

/// A token that is longer is none: desktops make them a tenth as long.
inline constexpr std::size_t kLongestToken = 1024;

/// The leave that this program was started with.
std::string launchToken();

/// How the desktop app is known to desktops: its name on the bus, the object there, and the name of
/// its desktop file.
inline constexpr const char* kDesktopName = "dev.korvex.Korvex";
inline constexpr const char* kDesktopPath = "/dev/korvex/Korvex";

} // namespace korvex::app
