#include "app/AgentStart.h"

#include "app/AutostartFile.h"
#include "app/Launch.h"
#include "app/UserFolders.h"
#include "base/EnvironmentVariable.h"

#include <algorithm>
#include <filesystem>
#include <sstream>
#include <string>
#include <system_error>
#include <vector>

namespace korvex::app {

namespace {

using Folders = std::vector<std::filesystem::path>;

constexpr const char* kAgentID = "dev.korvex.Agent";
/// Made when the unit is enabled, for everybody or by the user.
constexpr const char* kUnitLink = "graphical-session.target.wants/korvex-agent.service";

bool isThere(const std::filesystem::path& file) {
    std::error_code failed;
    return std::filesystem::exists(file, failed);
}

/// The user's own folder, then those of the variable, in their order.
Folders withSystems(const std::filesystem::path& own, const char* variable, const char* otherwise) {
    Folders folders{own};
    std::istringstream others(base::environmentVariable(variable).value_or(otherwise));
    for (std::string each; std::getline(others, each, ':');) {
        folders.emplace_back(each);
    }
    return folders;
}

/// Of files with the same name the first one counts, which may switch the others off.
bool isAutostarted(const Folders& settings, const char* id) {
    for (const auto& each : settings) {
        const auto folder = each / "autostart";
        if (isThere(folder / (std::string(id) + ".desktop"))) {
            return AutostartFile(folder, {.id = id}).isOn();
        }
    }
    return false;
}

} // namespace

bool startsAtLogin() {
    const auto settings =
        withSystems(userFolder("XDG_CONFIG_HOME", ".config"), "XDG_CONFIG_DIRS", "/etc/xdg");
    const auto data = withSystems(userFolder("XDG_DATA_HOME", ".local/share"), "XDG_DATA_DIRS",
                                  "/usr/local/share:/usr/share");
    Folders units{"/etc/systemd/user", "/usr/local/lib/systemd/user", "/usr/lib/systemd/user",
                  settings.front() / "systemd" / "user"};
    for (const auto& each : data) {
        units.push_back(each / "systemd" / "user");
    }
    return std::any_of(units.begin(), units.end(),
                       [](const auto& each) { return isThere(each / kUnitLink); }) ||
           isAutostarted(settings, kAgentID) || isAutostarted(settings, kDesktopName);
}

} // namespace korvex::app
