#pragma once

#include <QStringList>

namespace korvex::ui {

/// The lines of a text, each without blanks around it, those that are not empty: one todo each.
QStringList pastedLines(const QString& text);

} // namespace korvex::ui
