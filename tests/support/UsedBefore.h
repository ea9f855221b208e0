#pragma once

#include "app/UserDefaults.h"
#include "base/Instant.h"

namespace korvex::tests {

/// Settings of somebody who has used the windows before: reminders that came due since then and
/// were not shown are listed, as none is at a first start.
struct UsedBefore {
    UsedBefore(app::UserDefaults& defaults, base::Instant until) {
        defaults.setReal("remindersSeenUntil", until.seconds);
    }
};

} // namespace korvex::tests
