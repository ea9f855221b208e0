#pragma once

#include "base/FileDescriptor.h"
#include "base/RunLoop.h"
#include "base/Signal.h"

#include <filesystem>
#include <memory>
#include <string>

namespace korvex::platform::system {

/// Notices that the machine's clock was set, that it woke from sleep, or that its time zone is
/// another. Main thread.
class SystemTimeWatcher final {
public:
    static constexpr const char* kZoneLink = "/etc/localtime";

    explicit SystemTimeWatcher(base::RunLoop& runLoop, std::filesystem::path zoneLink = kZoneLink);

    base::Signal<>& changed() { return m_changed; }

private:
    void armTimer();
    void clockWasSet();
    void zoneMayBeAnother();
    std::string zoneState() const;

    std::filesystem::path m_zoneLink;
    /// Which zone the link names, and since when.
    std::string m_zone;
    base::FileDescriptor m_timer;
    base::FileDescriptor m_folder;
    std::unique_ptr<base::RunLoop::Watch> m_timerWatch;
    std::unique_ptr<base::RunLoop::Watch> m_folderWatch;
    base::Signal<> m_changed;
};

} // namespace korvex::platform::system
