#pragma once

#include "ui/entries/EntryHits.h"

#include <optional>
#include <unordered_map>

class QWheelEvent;

namespace korvex::ui {

/// Tables that are wider than the texts in which they stand: their rows reach beyond the column, as
/// far as there is room, and what is seen of a table can be moved. Main thread.
class WideTables final {
public:
    WideTables(const EntryHits& hits, LazyListView& list, const EntryItemDelegate& delegate,
               const Theme& theme)
        : m_hits(hits), m_list(list), m_delegate(delegate), m_theme(theme) {}

    /// The row of this entry was laid out; null for a row that shows none.
    void measured(const model::Entry* entry, const EntryRowLayout& laidOut);
    /// How wide the row of an entry would have to be for all of it to be seen, as far as it was
    /// laid out; 0 where it is as wide as others.
    int wholeWidth(const model::Entry* entry) const;
    void forget() { m_wholeWidths.clear(); }

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
    const Theme& m_theme;
    std::unordered_map<const model::Entry*, int> m_wholeWidths;
};

} // namespace korvex::ui
