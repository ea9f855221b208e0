#include "schedule/UpcomingSections.h"

#include "model/Board.h"

#include <limits>

namespace korvex::schedule {

namespace {

constexpr base::Instant kNever{std::numeric_limits<double>::infinity()};
/// How many days away the sections after the next 3 days begin.
constexpr std::array kDistances{4, 8, 15};

} // namespace

UpcomingSections::UpcomingSections(base::Instant now, const base::TimeZone& zone)
    : m_calendar(zone), m_days(m_calendar), m_now(now) {
    m_starts.fill(kNever);
    const auto number = m_calendar.day(now);
    const auto today = m_calendar.interval(base::CalendarPeriod::day, now);
    if (!number || !today) {
        return;
    }
    m_todayNumber = *number;
    m_today = *today;
    // From noon, which hardly any day lacks: a start may fall into an hour that another day skips.
    const auto noon = m_calendar.noon(*number).value_or(today->start);
    for (std::size_t i = 0; i < kDistances.size(); ++i) {
        const auto later = m_calendar.adding(noon, base::CalendarUnit::day, kDistances[i]);
        m_starts[i] = later ? m_calendar.startOfDay(*later).value_or(kNever) : kNever;
    }
}

bool UpcomingSections::moveTo(base::Instant now) {
    if (!m_today.contains(now)) {
        return false;
    }
    m_now = now;
    return true;
}

std::optional<EntryKey> UpcomingSections::keyOf(const model::Entry& entry) {
    const auto* board = entry.board();
    if (!entry.isTodo() || !board || board->isArchived()) {
        return std::nullopt;
    }
    const auto date = effectiveDate(entry);
    if (!date) {
        return std::nullopt;
    }
    auto key = keyOnBoards(entry);
    key.group = static_cast<std::uint64_t>(section(entry, *date));
    key.moment = orderedBits(*date);
    return key;
}

std::optional<base::Instant> UpcomingSections::effectiveDate(const model::Entry& entry) {
    const auto day = entry.dueDay();
    return day ? m_days.effectiveDate(*day) : entry.schedule().effectiveDate(m_calendar);
}

UpcomingSection UpcomingSections::section(const model::Entry& entry,
                                          base::Instant effectiveDate) const {
    const auto dueDay = entry.dueDay();
    const auto dueDate = entry.dueDate();
    if (dueDay ? *dueDay < m_todayNumber : dueDate && *dueDate <= m_now) {
        return UpcomingSection::overdue;
    }
    if (!dueDay && !dueDate && effectiveDate < m_now) {
        return UpcomingSection::reminderOnly;
    }
    if (dueDay ? *dueDay == m_todayNumber : m_today.contains(effectiveDate)) {
        return UpcomingSection::today;
    }
    if (effectiveDate < m_starts[0]) {
        return UpcomingSection::next3Days;
    }
    if (effectiveDate < m_starts[1]) {
        return UpcomingSection::next7Days;
    }
    return effectiveDate < m_starts[2] ? UpcomingSection::next2Weeks : UpcomingSection::later;
}

UpcomingGroup emptySectionGroup(std::uint64_t key) {
    return {.section = static_cast<UpcomingSection>(key), .entries = {}};
}

} // namespace korvex::schedule
