#pragma once

#include "ui/entries/EntryHits.h"

#include <optional>

class QWheelEvent;

namespace korvex::ui {

/// Moves what is seen of tables that are wider than the rows in which they stand. Main thread.
class WideTables final {
public:
    WideTables(const EntryHits& hits, LazyListView& list, const EntryItemDelegate& delegate)
        : m_hits(hits), m_list(list), m_delegate(delegate) {}

    /// Moves all tables of a row a step to the right, or to the left where `direction` is -1.
    void step(int row, int direction);
    /// What goes sideways, or is turned sideways by Shift, moves the table under the pointer. False
    /// where there is none to move.
    bool follow(const QWheelEvent& event);

private:
    bool scroll(int row, int by, std::optional<QPoint> under = std::nullopt);

    const EntryHits& m_hits;
    LazyListView& m_list;
    const EntryItemDelegate& m_delegate;
};

} // namespace korvex::ui
