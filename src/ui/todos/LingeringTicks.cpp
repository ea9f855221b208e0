#include "ui/todos/LingeringTicks.h"

#include <chrono>

namespace korvex::ui {

namespace {

constexpr std::chrono::milliseconds kTickShown{500};

} // namespace

LingeringTicks::LingeringTicks(base::RunLoop& runLoop) : m_runLoop(runLoop) {}

void LingeringTicks::start(const model::Entry& entry, std::function<void()> seen) {
    m_timers[&entry] = m_runLoop.callAfter(kTickShown, [this, &entry, seen = std::move(seen)] {
        m_timers.erase(&entry);
        seen();
    });
}

void LingeringTicks::release(const model::Entry& entry) {
    m_timers.erase(&entry);
}

bool LingeringTicks::contains(const model::Entry& entry) const {
    return m_timers.contains(&entry);
}

} // namespace korvex::ui
