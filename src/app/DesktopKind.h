#pragma once

#include <string_view>

namespace korvex::app {

/// The desktops on which users find their shortcuts in different places.
enum class DesktopKind {
    gnome,
    kde,
    xfce,
    /// Window managers of the wlroots family, which have a file for it.
    wlroots,
    other,
};

/// By what `XDG_CURRENT_DESKTOP` says: names that are separated by colons, of which the first that
/// is known counts.
DesktopKind desktopKind(std::string_view currentDesktop);

} // namespace korvex::app
