#pragma once

#include "ui/entries/RowRefusal.h"

namespace korvex::tests {

/// Why the text of an edited row was refused, as the page says it; empty where it says nothing.
inline QString shownRefusal(const QWidget& page) {
    for (const auto* const panel : page.findChildren<ui::RowRefusal*>()) {
        if (panel->isVisibleTo(&page)) {
            return panel->message();
        }
    }
    return {};
}

} // namespace korvex::tests
