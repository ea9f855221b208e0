#include "ui/kit/controls/DateFields.h"

#include "ui/kit/words/Text.h"

#include <QDateTimeEdit>
#include <QRegularExpression>

namespace korvex::ui {

namespace {

/// Both write the parts with the same letters, but for the year and the half of the day.
QString toQtFormat(const std::string& pattern) {
    auto format = toQString(pattern);
    static const QRegularExpression kYear(QStringLiteral("y+"));
    static const QRegularExpression kHalf(QStringLiteral("[aBb]+"));
    format.replace(kYear, QStringLiteral("yyyy"));
    format.replace(kHalf, QStringLiteral("AP"));
    return format.replace(QLatin1Char('K'), QLatin1Char('h'))
        .replace(QLatin1Char('k'), QLatin1Char('H'));
}

} // namespace

QString DateFields::dayFormat(const base::DateFormats& formats) {
    return toQtFormat(formats.dayPattern());
}

QString DateFields::timeFormat(const base::DateFormats& formats) {
    return toQtFormat(formats.timePattern());
}

void DateFields::setUp(QDateTimeEdit& field, const QString& format) {
    field.setLayoutDirection(Qt::LeftToRight); // Qt would turn the parts of a date around
    field.setTimeSpec(Qt::UTC);
    field.setDisplayFormat(format);
    // The window's own calendar reckons by the proleptic calendar: no day before it matters here.
    field.setMinimumDate(QDate(1600, 1, 1));
    field.setMaximumDate(QDate(4000, 12, 31));
}

QDateTime DateFields::dateTimeOf(base::Instant instant, const base::Calendar& calendar) {
    const auto fields = calendar.components(instant).value_or(base::DateComponents{});
    return {QDate(fields.year, fields.month, fields.day), QTime(fields.hour, fields.minute),
            Qt::UTC};
}

base::Instant DateFields::instantOf(const QDate& day, const QTime& time,
                                    const base::Calendar& calendar, base::Instant otherwise) {
    return calendar.instant({day.year(), day.month(), day.day(), time.hour(), time.minute(), 0})
        .value_or(otherwise);
}

} // namespace korvex::ui
