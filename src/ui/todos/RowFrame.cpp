#include "ui/todos/RowFrame.h"

namespace korvex::ui {

RowFrame RowFrame::of(const Theme& theme) {
    const auto sign = theme.scaled(18);
    const auto schedule = theme.scaled(16);
    return {
        .signSize = sign,
        .textLeft = kBoxMargin + kGap + sign + kGap,
        .textRight = kBoxMargin + kGap,
        .scheduleSize = schedule,
    };
}

} // namespace korvex::ui
