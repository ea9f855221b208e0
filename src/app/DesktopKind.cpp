#include "app/DesktopKind.h"

#include <algorithm>
#include <cctype>
#include <optional>
#include <string>

namespace korvex::app {

namespace {

struct Name {
    std::string_view name;
    DesktopKind kind;
};
/// In lower case: not everybody writes them alike.
constexpr Name kNames[] = {
    {"gnome", DesktopKind::gnome},      {"unity", DesktopKind::gnome},
    {"kde", DesktopKind::kde},          {"xfce", DesktopKind::xfce},
    {"wlroots", DesktopKind::wlroots},  {"sway", DesktopKind::wlroots},
    {"hyprland", DesktopKind::wlroots}, {"river", DesktopKind::wlroots},
    {"labwc", DesktopKind::wlroots},    {"wayfire", DesktopKind::wlroots},
};

std::optional<DesktopKind> kindOf(std::string_view name) {
    std::string lower(name);
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
    const auto* const found = std::find_if(std::begin(kNames), std::end(kNames),
                                           [&](const Name& each) { return each.name == lower; });
    return found == std::end(kNames) ? std::nullopt : std::optional(found->kind);
}

} // namespace

DesktopKind desktopKind(std::string_view currentDesktop) {
    while (!currentDesktop.empty()) {
        const auto end = std::min(currentDesktop.find(':'), currentDesktop.size());
        if (const auto kind = kindOf(currentDesktop.substr(0, end))) {
            return *kind;
        }
        currentDesktop.remove_prefix(std::min(end + 1, currentDesktop.size()));
    }
    return DesktopKind::other;
}

} // namespace korvex::app
