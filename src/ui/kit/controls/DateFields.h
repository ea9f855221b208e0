#pragma once

#include "base/DateFormats.h"

#include <QDateTime>

class QDateTimeEdit;

namespace korvex::ui {

/// Fields for days and times: they show wall-clock time, the zone is the calendar's.
namespace DateFields {

/// What the labels of these formats show, as a field takes it: a day in the same order, with all
/// digits of the year, and a time by the same clock.
QString dayFormat(const base::DateFormats& formats);
QString timeFormat(const base::DateFormats& formats);
/// Sets the format and what can be chosen.
void setUp(QDateTimeEdit& field, const QString& format);

QDateTime dateTimeOf(base::Instant instant, const base::Calendar& calendar);
/// The moment of a wall-clock time; `otherwise` when the calendar has no such moment.
base::Instant instantOf(const QDate& day, const QTime& time, const base::Calendar& calendar,
                        base::Instant otherwise);

} // namespace DateFields

} // namespace korvex::ui
