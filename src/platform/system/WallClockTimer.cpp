#include "platform/system/WallClockTimer.h"

#include <sys/timerfd.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdint>
#include <system_error>
#include <utility>

namespace korvex::platform::system {

namespace {

constexpr double kNanoseconds = 1e9;

itimerspec timerAt(std::optional<base::Instant> moment) {
    itimerspec timer{};
    if (moment) {
        // Never before the moment; and no time at all would stop the timer.
        const auto seconds = std::max(moment->unixSeconds(), 1.0);
        const auto whole = std::floor(seconds);
        timer.it_value.tv_sec = static_cast<std::time_t>(whole);
        timer.it_value.tv_nsec =
            std::min(static_cast<long>(std::ceil((seconds - whole) * kNanoseconds)),
                     static_cast<long>(kNanoseconds) - 1);
    }
    return timer;
}

} // namespace

WallClockTimer::WallClockTimer(base::RunLoop& runLoop, std::function<void()> work)
    : m_timer(::timerfd_create(CLOCK_REALTIME, TFD_NONBLOCK | TFD_CLOEXEC)) {
    if (!m_timer.isOpen()) {
        throw std::system_error(errno, std::generic_category(), "timerfd");
    }
    m_watch = runLoop.watch(m_timer.get(), base::RunLoop::Interest::reading,
                            [this, work = std::move(work)] {
                                std::uint64_t expirations = 0;
                                [[maybe_unused]] const auto size =
                                    ::read(m_timer.get(), &expirations, sizeof expirations);
                                m_moment.reset();
                                work();
                            });
}

void WallClockTimer::set(std::optional<base::Instant> moment) {
    if (moment != m_moment) {
        m_moment = moment;
        const auto timer = timerAt(moment);
        ::timerfd_settime(m_timer.get(), TFD_TIMER_ABSTIME, &timer, nullptr);
    }
}

} // namespace korvex::platform::system
