#pragma once

#include "model/Entry.h"
#include "ui/todos/DueLabel.h"
#include "ui/todos/RowFrame.h"

#include <QTextLayout>

#include <memory>

namespace korvex::ui {

/// The text of an entry as rows show it: one over the limit is cut to its preview.
QString shownText(const model::Entry& entry);

/// A text as a row shows it. It has no lines yet.
std::unique_ptr<QTextLayout> makeTextLayout(const QString& text, Qt::LayoutDirection direction,
                                            const Theme& theme);

/// Where sign and text stand in a row, in which lines begin at the left, and where there is room
/// for what goes with the text.
struct TextArrangement {
    QRect sign;
    QRect text;
    RowLine firstLine;
    /// It stands at the end of the row, on the first line; else below the text.
    bool isBeside = true;
    /// Where sign and text end.
    int bottom = 0;
};
/// What becomes of what stands beside a text that needs more than one line.
enum class BesideText {
    /// It keeps its place, as a button does.
    stays,
    /// It goes below the text, as a label does.
    goesBelow,
};
/// Lays the text out in a row of this width, of which the other takes `besideWidth` while it stands
/// beside the text.
TextArrangement arrangeText(QTextLayout& text, int rowWidth, int besideWidth, BesideText beside,
                            const Theme& theme);

/// Where the parts of a todo stand in its row, in which lines begin at the left.
struct TodoArrangement {
    QRect sign;
    QRect text;
    /// The due label with its bell; of a todo without them the button that makes a schedule, where
    /// one is offered.
    QRect schedule;
    /// Where all of it ends.
    int bottom = 0;
};
enum class ScheduleButton { none, offered };
/// Lays the text out in a row of this width, or in the editor that takes its place.
TodoArrangement arrangeTodo(QTextLayout& text, int rowWidth, const DueLabel& due,
                            ScheduleButton button, const Theme& theme);

} // namespace korvex::ui
