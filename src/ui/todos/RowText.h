#pragma once

#include "model/Entry.h"
#include "ui/kit/theme/Theme.h"

#include <QTextLayout>

#include <memory>

namespace korvex::ui {

/// The text of an entry as rows show it: one over the limit is cut to its preview.
QString shownText(const model::Entry& entry);

/// How a todo's text and what stands at the end of its row share the row.
struct TextArrangement {
    bool isBeside = true;
    int textWidth = 0;
    int textHeight = 0;
    /// Of the first line.
    int ascent = 0;
};
/// What becomes of what stands beside a text that needs more than one line.
enum class BesideText {
    /// It keeps its place, as a button does.
    stays,
    /// It goes below the text, as a label does.
    goesBelow,
};

/// A text as a row shows it. It has no lines yet.
std::unique_ptr<QTextLayout> makeTextLayout(QString text, Qt::LayoutDirection direction,
                                            const Theme& theme);
/// Lays the text out. `room` is the width that both have; `besideWidth` is what the other takes of
/// it while it stands beside the text.
TextArrangement arrangeText(QTextLayout& text, int room, int besideWidth, BesideText beside);

} // namespace korvex::ui
