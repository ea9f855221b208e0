#pragma once

#include "ui/kit/theme/Theme.h"

namespace korvex::ui {

/// The distances and sizes in pixels that all rows have in common, and the editors that take a
/// row's place.
struct RowFrame {
    static constexpr int kBoxMargin = 8;
    static constexpr int kPadding = 5;
    static constexpr int kGap = 10;

    int signSize;
    int textLeft;
    int textRight;
    int scheduleSize;

    static RowFrame of(const Theme& theme);
};

} // namespace korvex::ui
