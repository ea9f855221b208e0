#include "ui/kit/fields/TimeField.h"

#include "ui/kit/theme/Direction.h"
#include "ui/kit/words/Text.h"

namespace korvex::ui {

namespace {

constexpr int kHour = 60;
constexpr int kDay = 24 * kHour;
/// In minutes.
constexpr int kStep = 5;

} // namespace

TimeField::TimeField(std::shared_ptr<const base::DateFormats> formats, const Theme& theme,
                     QWidget* parent)
    : TypedField(theme, parent), m_formats(std::move(formats)) {
    showValue();
}

void TimeField::setTime(const QTime& time) {
    if (time != m_time) {
        m_time = time;
        followValue();
    }
}

void TimeField::setFormats(std::shared_ptr<const base::DateFormats> formats) {
    if (formats != m_formats && !isTyping()) {
        m_formats = std::move(formats);
        showValue();
        updateGeometry();
    }
}

bool TimeField::read(const QString& typed) {
    const auto read = m_formats->typed().time(typed.toStdU16String());
    if (read) {
        m_time = QTime(read->hour, read->minute);
    }
    return read.has_value();
}

/// As the field writes it, whatever spaces and letters that was typed with.
bool TimeField::isWhole(const QString& typed) const {
    const auto plain = [](const QString& text) { return text.simplified().toCaseFolded(); };
    const auto& times = m_formats->typed();
    const auto read = times.time(typed.toStdU16String());
    return read && plain(toQString(std::u16string_view(times.shown(*read).text))) == plain(typed);
}

base::ShownDate TimeField::shown() const {
    return m_formats->typed().shown(
        base::ClockTime{.hour = m_time.hour(), .minute = m_time.minute()});
}

QString TimeField::widest() const {
    return toQString(std::u16string_view(
        m_formats->typed().shown(base::ClockTime{.hour = 22, .minute = 58}).text));
}

QString TimeField::reason() const {
    return text().trimmed().isEmpty() ? tr("Enter a time.")
                                      : tr("“%1” is not a time.").arg(isolated(shortened(text())));
}

base::DatePart TimeField::partOf(Stride stride) const {
    return stride == Stride::line ? base::DatePart::minute : base::DatePart::hour;
}

void TimeField::stepPart(base::DatePart part, int steps) {
    auto minutes = m_time.hour() * kHour + m_time.minute();
    switch (part) {
    case base::DatePart::half:
        minutes += steps * kDay / 2;
        break;
    case base::DatePart::hour:
        minutes += steps * kHour;
        break;
    default:
        // To the next multiple: from 9:32 up to 9:35 and down to 9:30.
        minutes = ((steps > 0 ? minutes : minutes + kStep - 1) / kStep + steps) * kStep;
        break;
    }
    minutes = (minutes % kDay + kDay) % kDay;
    m_time = QTime(minutes / kHour, minutes % kHour);
}

} // namespace korvex::ui
