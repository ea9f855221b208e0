#pragma once

#include <QRect>
#include <QSize>

#include <vector>

namespace korvex::ui {

/// Where widgets can stand on the screens that there are. Main thread.
namespace WidgetScreens {

/// The nearest place to the wanted one that is all on one screen, beside its panels. A widget that
/// is larger than the screen becomes smaller, but no smaller than `least`.
QRect fitted(const QRect& wanted, const QSize& least);
/// For a widget of this size that has no place yet: at the end of the first screen, from the top,
/// one column after another, where none of the others stands, as long as there is such a place.
QRect next(const QSize& size, const std::vector<QRect>& others, int gap);

} // namespace WidgetScreens

} // namespace korvex::ui
