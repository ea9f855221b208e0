#pragma once

#include "base/FileDescriptor.h"
#include "base/Instant.h"
#include "base/RunLoop.h"

#include <functional>
#include <memory>
#include <optional>

namespace korvex::platform::system {

/// Calls its work when the machine's clock shows a moment, however it gets there: by itself, by
/// being set, or because the machine has slept meanwhile. Main thread.
class WallClockTimer final {
public:
    /// Throws std::system_error where the system has no more descriptors.
    WallClockTimer(base::RunLoop& runLoop, std::function<void()> work);

    /// In the place of what was set before; absent for never. A moment that has passed is now.
    void set(std::optional<base::Instant> moment);

private:
    base::FileDescriptor m_timer;
    std::unique_ptr<base::RunLoop::Watch> m_watch;
    std::optional<base::Instant> m_moment;
};

} // namespace korvex::platform::system
