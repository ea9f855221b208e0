#pragma once

#include "base/Calendar.h"

#include <QDateTime>

class QDateTimeEdit;

namespace korvex::ui {

/// Fields for days and times: they show wall-clock time, the zone is the calendar's.
namespace DateFields {

/// The user's order of a day's parts, with all digits of the year.
QString dayFormat();
/// The user's time of day, without seconds.
QString timeFormat();
/// Sets the format and what can be chosen.
void setUp(QDateTimeEdit& field, const QString& format);

QDateTime dateTimeOf(base::Instant instant, const base::Calendar& calendar);
/// The moment of a wall-clock time; `otherwise` when the calendar has no such moment.
base::Instant instantOf(const QDate& day, const QTime& time, const base::Calendar& calendar,
                        base::Instant otherwise);

} // namespace DateFields

} // namespace korvex::ui
