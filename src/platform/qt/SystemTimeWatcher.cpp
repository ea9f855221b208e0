#include "platform/qt/SystemTimeWatcher.h"

#include <QFile>
#include <QSocketNotifier>

#include <sys/timerfd.h>
#include <unistd.h>

#include <array>
#include <cstdint>
#include <limits>

namespace korvex::platform::qt {

namespace {

/// The zone is a link that is replaced, which only its folder tells; a copy is changed in place.
const std::array<const char*, 2> kZoneFiles{"/etc/localtime", "/etc/timezone"};

} // namespace

SystemTimeWatcher::SystemTimeWatcher() {
    m_timer = ::timerfd_create(CLOCK_REALTIME, TFD_NONBLOCK | TFD_CLOEXEC);
    if (m_timer >= 0) {
        m_notifier = std::make_unique<QSocketNotifier>(m_timer, QSocketNotifier::Read);
        connect(m_notifier.get(), &QSocketNotifier::activated, this, [this] {
            std::uint64_t expirations = 0;
            // Fails with ECANCELED, which is what it is read for.
            [[maybe_unused]] const auto size = ::read(m_timer, &expirations, sizeof expirations);
            armTimer();
            m_changed.emit();
        });
        armTimer();
    }
    connect(&m_files, &QFileSystemWatcher::fileChanged, this, [this] {
        watchZone();
        m_changed.emit();
    });
    watchZone();
}

SystemTimeWatcher::~SystemTimeWatcher() {
    m_notifier.reset();
    if (m_timer >= 0) {
        ::close(m_timer);
    }
}

void SystemTimeWatcher::armTimer() {
    // It never fires by itself: a change of the clock cancels it, and that wakes the notifier.
    itimerspec never{};
    never.it_value.tv_sec = std::numeric_limits<std::int32_t>::max();
    ::timerfd_settime(m_timer, TFD_TIMER_ABSTIME | TFD_TIMER_CANCEL_ON_SET, &never, nullptr);
}

void SystemTimeWatcher::watchZone() {
    for (const char* const file : kZoneFiles) {
        const auto path = QString::fromLatin1(file);
        if (QFile::exists(path) && !m_files.files().contains(path)) {
            m_files.addPath(path);
        }
    }
}

} // namespace korvex::platform::qt
