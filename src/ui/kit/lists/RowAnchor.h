#pragma once

#include <algorithm>

namespace korvex::ui {

/// A row of a list and where its top lies in the viewport: while others come and go, what is on the
/// screen stays where it is by it.
struct RowAnchor {
    int row = -1;
    int y = 0;

    bool isAmong(int first, int last) const { return row >= first && row <= last; }

    void rowsInserted(int first, int last) {
        if (row >= first) {
            row += last - first + 1;
        }
    }
    /// Where the row itself is gone, the one that takes its place is the anchor, not above the top.
    void rowsRemoved(int first, int last) {
        if (row > last) {
            row -= last - first + 1;
        } else if (row >= first) {
            row = first;
            y = std::max(y, 0);
        }
    }
    /// Other rows than this one went to stand before what was row `destination`.
    void rowsMoved(int first, int last, int destination) {
        const auto count = last - first + 1;
        if (row > last && row < destination) {
            row -= count;
        } else if (row < first && row >= destination) {
            row += count;
        }
    }
};

} // namespace korvex::ui
