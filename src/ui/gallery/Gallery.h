#pragma once

#include <QStringList>

namespace korvex::ui {

/// Shows the gallery until its window is closed, with settings of its own that are not kept.
/// `look` says how it begins, in any order: "light" or "dark", "contrast", "still", "rtl", and a
/// size of the font that is on offer. The status of the program.
int runGallery(const QStringList& look);

} // namespace korvex::ui
