#pragma once

#include "base/Calendar.h"
#include "base/Clock.h"
#include "base/Log.h"
#include "base/RunLoop.h"
#include "base/Signal.h"
#include "store/ModelContainer.h"
#include "store/ModelContext.h"

#include <functional>
#include <memory>
#include <optional>

namespace korvex::schedule {

/// Publishes `now` to every view that groups or labels todos by time, and moves it exactly when
/// something can change: at midnight, when a todo falls due, when a reminder passes. One a program;
/// main thread.
class ScheduleClock {
public:
    /// `zone` is asked at each refresh, since the machine may change its zone while running.
    ScheduleClock(const base::Clock& clock, base::RunLoop& runLoop,
                  std::function<base::TimeZone()> zone, base::LogSink& log);
    ~ScheduleClock();
    ScheduleClock(const ScheduleClock&) = delete;
    ScheduleClock& operator=(const ScheduleClock&) = delete;

    /// Keeps the container, observes its saves, and refreshes. Whoever learns of the application
    /// becoming active, the zone or system clock changing, or a change from outside calls
    /// `scheduleRefresh`.
    void start(store::ModelContainer& container);

    base::Instant now() const { return m_now; }
    /// Emitted after `now` has moved.
    base::Signal<base::Instant>& didTick() { return m_didTick; }

    /// Takes the current time and sets the timer to the next transition.
    void refresh();
    /// Requests one `refresh` on the main thread, however often it is called before that. Any
    /// thread; a request that is still open when the clock ends does nothing.
    void scheduleRefresh();

    /// The earliest of: the next local midnight, the earliest due time, the earliest reminder of an
    /// open todo after `now`. Throws what the store throws.
    static base::Instant nextTransition(store::ModelContext& context, base::Instant now,
                                        const base::Calendar& calendar);

private:
    struct Request;

    base::Instant transition() const;

    const base::Clock& m_clock;
    base::RunLoop& m_runLoop;
    std::function<base::TimeZone()> m_zone;
    base::Logger m_log;
    std::shared_ptr<Request> m_request;
    store::ModelContainer* m_container = nullptr;
    base::Subscription m_saves;
    std::unique_ptr<base::RunLoop::Timer> m_timer;
    base::Instant m_now;
    base::Signal<base::Instant> m_didTick;
};

} // namespace korvex::schedule
