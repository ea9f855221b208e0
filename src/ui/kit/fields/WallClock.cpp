#include "ui/kit/fields/WallClock.h"

namespace korvex::ui {

QDate WallClock::earliestDay() {
    return {1600, 1, 1};
}

QDate WallClock::latestDay() {
    return {4000, 12, 31};
}

base::CivilDay WallClock::civilDay(const QDate& day) {
    return {.year = day.year(), .month = day.month(), .day = day.day()};
}

QDate WallClock::toQDate(const base::CivilDay& day) {
    return {day.year, day.month, day.day};
}

QDateTime WallClock::dateTimeOf(base::Instant instant, const base::Calendar& calendar) {
    const auto fields = calendar.components(instant).value_or(base::DateComponents{});
    return {QDate(fields.year, fields.month, fields.day), QTime(fields.hour, fields.minute),
            Qt::UTC};
}

base::Instant WallClock::instantOf(const QDate& day, const QTime& time,
                                   const base::Calendar& calendar, base::Instant otherwise) {
    return calendar.instant({day.year(), day.month(), day.day(), time.hour(), time.minute(), 0})
        .value_or(otherwise);
}

} // namespace korvex::ui
