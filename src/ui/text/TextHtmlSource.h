#pragma once

#include <QString>
#include <QTextListFormat>

#include <cstdint>

namespace korvex::ui {

/// The source of an HTML page before Qt reads it.

/// Whether elements stand in each other deeper than in any page made to be read: Qt's time grows
/// with the square of the depth.
bool isTooDeep(QStringView html);

/// The page with what Qt does not know said otherwise. The start of a list stands before its
/// numbers, where `takeListStart` finds it.
QString sourceForQt(QString html);
/// The number of a list's first item, which is taken out of the format.
std::int32_t takeListStart(QTextListFormat& format);

} // namespace korvex::ui
