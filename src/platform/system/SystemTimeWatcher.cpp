#include "platform/system/SystemTimeWatcher.h"

#include <sys/inotify.h>
#include <sys/stat.h>
#include <sys/timerfd.h>
#include <unistd.h>

#include <array>
#include <cstdint>
#include <ctime>
#include <limits>
#include <system_error>
#include <utility>

namespace korvex::platform::system {

namespace {

using Interest = base::RunLoop::Interest;

/// The zone is a link that is replaced, or a file that is written anew.
constexpr std::uint32_t kChanges =
    IN_CREATE | IN_MOVED_TO | IN_MOVED_FROM | IN_DELETE | IN_CLOSE_WRITE;

} // namespace

SystemTimeWatcher::SystemTimeWatcher(base::RunLoop& runLoop, std::filesystem::path zoneLink)
    : m_zoneLink(std::move(zoneLink)),
      m_zone(zoneState()),
      m_timer(::timerfd_create(CLOCK_REALTIME, TFD_NONBLOCK | TFD_CLOEXEC)),
      m_folder(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC)) {
    if (m_timer.isOpen()) {
        m_timerWatch = runLoop.watch(m_timer.get(), Interest::reading, [this] { clockWasSet(); });
        armTimer();
    }
    // Only the folder tells of a link that is replaced.
    if (m_folder.isOpen() &&
        ::inotify_add_watch(m_folder.get(), m_zoneLink.parent_path().c_str(), kChanges) >= 0) {
        m_folderWatch =
            runLoop.watch(m_folder.get(), Interest::reading, [this] { zoneMayBeAnother(); });
    }
}

void SystemTimeWatcher::armTimer() {
    // It never fires by itself: a change of the clock, or waking from sleep, cancels it, and that
    // wakes the watch.
    itimerspec never{};
    never.it_value.tv_sec = std::numeric_limits<std::time_t>::max();
    ::timerfd_settime(m_timer.get(), TFD_TIMER_ABSTIME | TFD_TIMER_CANCEL_ON_SET, &never, nullptr);
}

void SystemTimeWatcher::clockWasSet() {
    std::uint64_t expirations = 0;
    // Fails with ECANCELED, which is what it is read for.
    [[maybe_unused]] const auto size = ::read(m_timer.get(), &expirations, sizeof expirations);
    armTimer();
    m_changed.emit();
}

void SystemTimeWatcher::zoneMayBeAnother() {
    std::array<char, 4096> events{};
    while (::read(m_folder.get(), events.data(), events.size()) > 0) {
    }
    if (auto zone = zoneState(); zone != m_zone) {
        m_zone = std::move(zone);
        m_changed.emit();
    }
}

std::string SystemTimeWatcher::zoneState() const {
    std::error_code ignored;
    const auto target = std::filesystem::read_symlink(m_zoneLink, ignored);
    struct stat status {};
    ::lstat(m_zoneLink.c_str(), &status);
    return target.string() + " " + std::to_string(status.st_ino) + " " +
           std::to_string(status.st_mtim.tv_sec) + "." + std::to_string(status.st_mtim.tv_nsec);
}

} // namespace korvex::platform::system
