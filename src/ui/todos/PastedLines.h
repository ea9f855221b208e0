#pragma once

#include <QStringList>

namespace korvex::ui {

/// Every break between lines or paragraphs that a text can have, as a line feed.
QString withLineFeeds(QString text);
/// The lines of a text, each without blanks around it, those that are not empty: one todo each.
QStringList pastedLines(const QString& text);

} // namespace korvex::ui
