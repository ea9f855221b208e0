#include "schedule/ScheduleClock.h"

#include "model/Entry.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <exception>
#include <utility>

namespace korvex::schedule {

namespace {

constexpr double kSecondsPerDay = 86'400;
/// The timer fires so long after the transition, so that a clock that runs a little fast does not
/// wake before it.
constexpr double kAfterTransition = 0.05;

using model::Entry;

std::optional<base::Instant> earliestOpen(store::ModelContext& context, Entry::Field field,
                                          std::optional<base::Instant> (Entry::*value)() const,
                                          base::Instant now) {
    const auto found = context.fetch<Entry>({
        .condition = Entry::openTodos() && store::FieldReference{field} > store::Value{now.seconds},
        .order = {{.field = field}},
        .limit = 1,
    });
    return found.empty() ? std::nullopt : (found.front()->*value)();
}

/// Clocks that were set back over midnight show the end of a day again after it has ended. Where it
/// ends once more is found by halving; midnight is a whole second.
base::Instant endOfRepeatedHour(base::Instant now, const base::Calendar& calendar) {
    const auto today = calendar.day(now);
    auto before = now;
    auto after = now + kSecondsPerDay;
    while (after - before > 0.001) {
        const auto middle = before + (after - before) / 2;
        (calendar.day(middle) == today ? before : after) = middle;
    }
    return {std::floor(after.seconds)};
}

} // namespace

/// What a requested refresh holds on to, since it may run after the clock has ended.
struct ScheduleClock::Request {
    std::atomic<bool> isPending = false;
    /// Null once the clock has ended; main thread.
    ScheduleClock* clock;
};

ScheduleClock::ScheduleClock(const base::Clock& clock, base::RunLoop& runLoop,
                             std::function<base::TimeZone()> zone, base::LogSink& log)
    : m_clock(clock),
      m_runLoop(runLoop),
      m_zone(std::move(zone)),
      m_log(log, "schedule"),
      m_request(std::make_shared<Request>()),
      m_now(clock.now()) {
    m_request->clock = this;
}

ScheduleClock::~ScheduleClock() {
    m_request->clock = nullptr;
}

void ScheduleClock::start(store::ModelContainer& container) {
    m_container = &container;
    m_saves = container.didSave().connect([this](const store::ChangeSet&) { scheduleRefresh(); });
    refresh();
}

void ScheduleClock::refresh() {
    m_timer.reset();
    const auto previous = std::exchange(m_now, m_clock.now());
    if (m_container) {
        const auto delay = transition() - m_now + kAfterTransition;
        // Through a request, since a timer must not be replaced while it fires.
        m_timer = m_runLoop.callAfter(std::chrono::duration<double>(delay),
                                      [this] { scheduleRefresh(); });
    }
    if (m_now != previous) {
        m_didTick.emit(m_now);
    }
}

base::Instant ScheduleClock::transition() const {
    try {
        store::ModelContext context(*m_container);
        return nextTransition(context, m_now, base::Calendar(m_zone()));
    } catch (const std::exception&) {
        m_log.error("Could not read due transitions");
        return m_now + kSecondsPerDay;
    }
}

void ScheduleClock::scheduleRefresh() {
    if (m_request->isPending.exchange(true)) {
        return;
    }
    m_runLoop.post([request = m_request] {
        request->isPending = false;
        if (request->clock) {
            request->clock->refresh();
        }
    });
}

base::Instant ScheduleClock::nextTransition(store::ModelContext& context, base::Instant now,
                                            const base::Calendar& calendar) {
    auto earliest = now + kSecondsPerDay;
    if (const auto today = calendar.interval(base::CalendarPeriod::day, now)) {
        // Not always where today starts plus a day: after a day that began at one o'clock, midnight
        // is an hour earlier.
        earliest = today->end > now ? today->end : endOfRepeatedHour(now, calendar);
    }
    for (const auto& candidate :
         {earliestOpen(context, Entry::dueDateField, &Entry::dueDate, now),
          earliestOpen(context, Entry::reminderDateField, &Entry::reminderDate, now)}) {
        earliest = std::min(earliest, candidate.value_or(earliest));
    }
    return earliest;
}

} // namespace korvex::schedule
