#include "base/Clock.h"

#include <chrono>

namespace korvex::base {

Instant SystemClock::now() const {
    const std::chrono::duration<double> sinceUnixEpoch =
        std::chrono::system_clock::now().time_since_epoch();
    return Instant::fromUnixSeconds(sinceUnixEpoch.count());
}

} // namespace korvex::base
