#pragma once

#include "base/Calendar.h"
#include "base/DayArithmetic.h"

#include <QDateTime>

namespace korvex::ui {

/// Days and times as fields have them: what a clock on the wall shows, whose zone is the
/// calendar's.
namespace WallClock {

/// The days that a field can have. Before the first, Qt's calendar is another than the store's.
QDate earliestDay();
QDate latestDay();

base::CivilDay civilDay(const QDate& day);
QDate toQDate(const base::CivilDay& day);

QDateTime dateTimeOf(base::Instant instant, const base::Calendar& calendar);
/// The moment of a wall-clock time; `otherwise` when the calendar has no such moment.
base::Instant instantOf(const QDate& day, const QTime& time, const base::Calendar& calendar,
                        base::Instant otherwise);

} // namespace WallClock

} // namespace korvex::ui
