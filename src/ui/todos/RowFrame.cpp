#include "ui/todos/RowFrame.h"

namespace korvex::ui {

RowFrame RowFrame::of(const Theme& theme) {
    const int sign = theme.scaled(18);
    const int schedule = theme.scaled(16);
    return {
        .signSize = sign,
        .textLeft = boxMargin + gap + sign + gap,
        .textRight = boxMargin + gap,
        .scheduleSize = schedule,
    };
}

} // namespace korvex::ui
