#pragma once

#include "ui/kit/theme/Theme.h"

#include <algorithm>

namespace korvex::ui {

/// The column in which all of a page stands, its header, its bars and its rows, one under the
/// other: in the middle of the page, and no wider than a text is to be with the margins around it.
/// Pixels, from the left edge of the page.
struct Column {
    int left = 0;
    int width = 0;

    int end() const { return left + width; }

    static Column of(int pageWidth, const Theme& theme) {
        const auto width = std::min(pageWidth, theme.measure() + 2 * theme.space(Space::wide));
        return {.left = (pageWidth - width) / 2, .width = width};
    }
};

} // namespace korvex::ui
