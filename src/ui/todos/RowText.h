#pragma once

#include "ui/kit/Theme.h"

#include <QTextLayout>

#include <memory>
#include <string_view>

namespace korvex::ui {

/// How a todo's text and its due label share the row: side by side while the text needs one line
/// only.
struct TextArrangement {
    bool isBeside = true;
    int textWidth = 0;
    int textHeight = 0;
};
/// An entry's text as lists show it: of one that is over the limit only the beginning.
QString previewOf(std::string_view content);
/// A text as a row shows it, in its own direction; still without lines.
std::unique_ptr<QTextLayout> makeTextLayout(QString text, const Theme& theme);
/// Lays the text out. `room` is what both have; `besideWidth` what stands beside the text takes of
/// it. Without a due label what stands beside stays there.
TextArrangement arrangeText(QTextLayout& text, int room, int besideWidth, bool hasDue);

} // namespace korvex::ui
