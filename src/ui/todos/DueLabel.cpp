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
    result.hasReminder = schedule.reminderDate.has_value();
    return result;
}

} // namespace korvex::ui
