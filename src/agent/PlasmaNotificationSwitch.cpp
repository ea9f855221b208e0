#include "agent/PlasmaNotificationSwitch.h"

#include "app/Launch.h"
#include "base/SmallFile.h"

#include <cstddef>
#include <optional>
#include <sstream>
#include <string>
#include <utility>

namespace korvex::agent {

namespace {

using platform::bus::NotificationSetting;
using platform::bus::QuietProperty;

constexpr const char* kFile = "plasmanotifyrc";
constexpr std::size_t kMostBytes = 256 * 1024;

/// What the file says of our program; where it says nothing, everything is shown.
NotificationSetting readSetting(const std::filesystem::path& file) {
    const auto contents = base::readSmallFile(file, kMostBytes);
    const auto group = std::string("[Applications][") + app::kDesktopName + "]";
    auto isOurs = false;
    auto hasPopups = true;
    auto isListed = true;
    std::istringstream lines(contents.value_or(""));
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with('[')) {
            isOurs = line == group;
        } else if (isOurs && line.starts_with("ShowPopups=")) {
            hasPopups = line != "ShowPopups=false";
        } else if (isOurs && line.starts_with("ShowInHistory=")) {
            isListed = line != "ShowInHistory=false";
        }
    }
    // What only is listed is found there later, as what comes while nobody is to be disturbed.
    return {.isOff = !hasPopups && !isListed, .isQuieted = !hasPopups && isListed};
}

} // namespace

PlasmaNotificationSwitch::PlasmaNotificationSwitch(platform::bus::Bus& bus, base::RunLoop& runLoop,
                                                   const std::filesystem::path& settings, Tell tell)
    : m_file(settings / kFile),
      m_quiet(bus, QuietProperty::ofPlasma(),
              [this, tell = std::move(tell)](const std::optional<NotificationSetting>& said) {
                  if (!said) {
                      tell(std::nullopt);
                      return;
                  }
                  auto setting = readSetting(m_file);
                  setting.isQuieted = setting.isQuieted || said->isQuieted;
                  tell(setting);
              }),
      m_watcher(runLoop, settings, {kFile}) {
    m_changes = m_watcher.changed().connect([this] { look(); });
}

} // namespace korvex::agent
