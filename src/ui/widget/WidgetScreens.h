#pragma once

#include <QRect>
#include <QSize>

namespace korvex::ui {

/// Where widgets can stand on the screens that there are. Main thread.
namespace WidgetScreens {

/// The nearest place to the wanted one that is all on one screen, beside its panels. A widget that
/// is larger than the screen becomes smaller, but no smaller than `least`.
QRect fitted(const QRect& wanted, const QSize& least);
/// For a widget of this size that has no place yet, beside so many others: at the end of the first
/// screen, from the top, one column after another.
QRect next(const QSize& size, int others, int gap);

} // namespace WidgetScreens

} // namespace korvex::ui
