#include "desktop/Hotkey.h"

#include "app/Launch.h"
#include "app/UserFolders.h"
#include "base/EnvironmentVariable.h"
#include "desktop/Arguments.h"
#include "desktop/HotkeyChoice.h"
#include "platform/system/ProgramFile.h"

#include <algorithm>
#include <filesystem>
#include <string>
#include <system_error>
#include <utility>

namespace korvex::desktop {

namespace {

/// Whether a shell that is given the name finds this file.
bool isFoundAs(const std::string& name, const std::filesystem::path& file) {
    auto folders = base::environmentVariable("PATH").value_or("");
    while (!folders.empty()) {
        const auto end = std::min(folders.find(':'), folders.size());
        const auto found = std::filesystem::path(folders.substr(0, end)) / name;
        std::error_code failed;
        if (std::filesystem::exists(found, failed)) {
            return std::filesystem::equivalent(found, file, failed);
        }
        folders.erase(0, std::min(end + 1, folders.size()));
    }
    return false;
}

std::string shellWord(const std::string& text) {
    constexpr const char* kPlain =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789/._-+";
    if (text.find_first_not_of(kPlain) == std::string::npos) {
        return text;
    }
    std::string quoted = "'";
    for (const auto each : text) {
        quoted += each == '\'' ? std::string("'\\''") : std::string(1, each);
    }
    return quoted + "'";
}

/// The command line's program stands beside this one; with its path where that alone leads to it.
std::string command() {
    const std::string name = "korvex";
    const auto file = platform::system::ownProgram().parent_path() / name;
    return (isFoundAs(name, file) ? name : shellWord(file.native())) + " quick-entry";
}

app::AutostartFile autostart() {
    return app::AutostartFile(
        app::userFolder("XDG_CONFIG_HOME", ".config") / "autostart",
        {.id = app::kDesktopName,
         .name = "Korvex",
         .command = {platform::system::ownProgram().native(), kBackgroundOption}});
}

} // namespace

Hotkey::Hotkey(app::AppPreferences& preferences, base::RunLoop& runLoop, base::LogSink& log)
    : m_preferences(preferences),
      m_backend(makeHotkeyBackend(hotkeyWay(), runLoop, log)),
      m_manager(*m_backend, log),
      m_setup{.hotkey = m_manager,
              .autostart = autostart(),
              .desktop =
                  app::desktopKind(base::environmentVariable("XDG_CURRENT_DESKTOP").value_or("")),
              .command = command()} {}

void Hotkey::start(std::function<void(const app::HotkeyPress&)> onPress) {
    if (!std::exchange(m_isStarted, true)) {
        m_manager.setOnPress(std::move(onPress));
        m_manager.follow(m_preferences);
    }
}

} // namespace korvex::desktop
