#include "ui/kit/DateFields.h"

#include <QDateTimeEdit>
#include <QLocale>

namespace korvex::ui {

QString DateFields::dayFormat() {
    const auto format = QLocale().dateFormat(QLocale::ShortFormat);
    return format.contains(QLatin1String("yyyy")) ? format : QStringLiteral("yyyy-MM-dd");
}

QString DateFields::timeFormat() {
    auto format = QLocale().timeFormat(QLocale::ShortFormat);
    return format.remove(QStringLiteral(":ss")); // some locales' short times have seconds
}

void DateFields::setUp(QDateTimeEdit& field, const QString& format) {
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
