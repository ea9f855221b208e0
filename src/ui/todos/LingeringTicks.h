#pragma once

#include "base/RunLoop.h"
#include "model/Entry.h"

#include <functional>
#include <memory>
#include <unordered_map>

namespace korvex::ui {

/// The todos whose ticks were changed just now: each is to be seen for half a second before its row
/// may leave. Nothing is called any more once this is gone. Main thread.
class LingeringTicks {
public:
    /// The run loop outlives this.
    explicit LingeringTicks(base::RunLoop& runLoop);

    /// Calls `seen` when the time is over. For a todo that lingers already, it begins anew.
    void start(const model::Entry& entry, std::function<void()> seen);
    /// Its time does not matter any more: nothing is called for it.
    void release(const model::Entry& entry);
    /// Whether its time is not over yet.
    bool contains(const model::Entry& entry) const;

private:
    base::RunLoop& m_runLoop;
    std::unordered_map<const model::Entry*, std::unique_ptr<base::RunLoop::Timer>> m_timers;
};

} // namespace korvex::ui
