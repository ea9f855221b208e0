#pragma once

#include "platform/bus/QuietProperty.h"
#include "platform/system/FolderWatcher.h"

#include <filesystem>

namespace korvex::agent {

/// KDE's daemon says whether its user is not to be disturbed; which programs may show something
/// stands in a file. Main thread; all that it is given must outlive it.
class PlasmaNotificationSwitch final : public platform::bus::NotificationSwitch {
public:
    /// `settings` is the user's folder for settings.
    PlasmaNotificationSwitch(platform::bus::Bus& bus, base::RunLoop& runLoop,
                             const std::filesystem::path& settings, Tell tell);

    void look() override { m_quiet.look(); }

private:
    std::filesystem::path m_file;
    platform::bus::QuietProperty m_quiet;
    platform::system::FolderWatcher m_watcher;
    base::Subscription m_changes;
};

} // namespace korvex::agent
