#include "ui/todos/DueLabel.h"

#include "ui/kit/words/Text.h"

#include <QCoreApplication>
#include <QFontMetrics>
#include <QRect>

namespace korvex::ui {

int DueLabel::width(const Theme& theme) const {
    return QFontMetrics(theme.smallFont()).horizontalAdvance(text) + bellWidth(theme);
}

int DueLabel::height(int room, const Theme& theme) const {
    const QFontMetrics metrics(theme.smallFont());
    if (width(theme) <= room) {
        return metrics.height();
    }
    constexpr int kHighest = 1000;
    return metrics
        .boundingRect(QRect(0, 0, room - bellWidth(theme), kHighest), Qt::TextWordWrap, text)
        .height();
}

namespace {

/// Both say it where the user looks for it: at the bell, and of a button that has one.
QString reminderText(base::Instant reminder, base::Instant now, const base::DateFormats& formats) {
    const auto& calendar = formats.calendar();
    const auto isPast = reminder <= now;
    const auto time = toQString(formats.shortTime(reminder));
    const auto say = [](const char* text) {
        return QCoreApplication::translate("korvex::ui::DueLabel", text);
    };
    const auto day = calendar.day(reminder);
    const auto isOn = [&](int days) {
        const auto other = calendar.adding(now, base::CalendarUnit::day, days);
        return day && other && day == calendar.day(*other);
    };
    if (isOn(0)) {
        return (isPast ? say("Reminder was today at %1") : say("Reminder today at %1")).arg(time);
    }
    if (isOn(isPast ? -1 : 1)) {
        return (isPast ? say("Reminder was yesterday at %1") : say("Reminder tomorrow at %1"))
            .arg(time);
    }
    return (isPast ? say("Reminder was on %1 at %2") : say("Reminder on %1 at %2"))
        .arg(toQString(formats.dayWithWeekday(reminder)), time);
}

} // namespace

DueLabel dueLabelOf(const model::Entry& entry, base::Instant now, const DateTexts& dates,
                    OverdueWord word) {
    const auto schedule = entry.schedule();
    if (schedule.isEmpty()) {
        return {};
    }
    const auto& formats = dates.formats();
    DueLabel result;
    if (const auto label = schedule.dueLabel(now, formats)) {
        result.text = toQString(*label);
    }
    result.isOverdue = schedule.isOverdue(now, formats.calendar());
    if (result.isOverdue && word == OverdueWord::yes) {
        result.text =
            QCoreApplication::translate("korvex::ui::DueLabel", "Overdue · %1").arg(result.text);
    }
    // That of a completed todo does not come.
    result.hasReminder = schedule.reminderDate.has_value() && !entry.isCompleted();
    if (const auto reminder = schedule.reminderDate; result.hasReminder && reminder->isValid()) {
        result.isReminderPast = *reminder <= now;
        result.reminder = reminderText(*reminder, now, formats);
    }
    return result;
}

} // namespace korvex::ui
