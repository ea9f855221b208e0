#pragma once

#include "base/Instant.h"
#include "model/Entry.h"
#include "ui/kit/theme/Theme.h"
#include "ui/workspace/DateTexts.h"

#include <QString>

namespace korvex::ui {

/// The texts of a todo's schedule, as a row shows them.
struct DueLabel {
    QString text;
    bool isOverdue = false;
    bool hasReminder = false;
    /// Its reminder has come: the bell promises nothing any more.
    bool isReminderPast = false;
    /// When the bell rings, or rang: "Reminder today at 9:00 AM". Empty without one.
    QString reminder = {};

    bool isEmpty() const { return text.isEmpty() && !hasReminder; }
    /// The width in pixels, with the bell.
    int width(const Theme& theme) const;
    /// The height in as many lines as it takes in this room.
    int height(int room, const Theme& theme) const;
    /// The width of the bell, with its distance from the text.
    int bellWidth(const Theme& theme) const {
        return hasReminder ? theme.extent(Extent::smallIcon) + theme.space(Space::small) : 0;
    }
};
/// Whether the label says "Overdue", or something above it has said so.
enum class OverdueWord { no, yes };
DueLabel dueLabelOf(const model::Entry& entry, base::Instant now, const DateTexts& dates,
                    OverdueWord word = OverdueWord::yes);

} // namespace korvex::ui
