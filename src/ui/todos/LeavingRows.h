#pragma once

#include "model/Entry.h"
#include "ui/kit/lists/LazyListView.h"

#include <functional>
#include <unordered_map>

namespace korvex::ui {

/// The rows that are leaving a list: each fades away, and then its place closes, so that nothing is
/// ever seen cut. For the list to ask when it measures and draws them. Main thread.
class LeavingRows {
public:
    /// The number of a todo's row, or -1.
    using RowOf = std::function<int(const model::Entry&)>;

    LeavingRows(LazyListView& list, RowOf rowOf) : m_list(list), m_rowOf(std::move(rowOf)) {}

    /// The row has gone this part of its way, of 0 to 1.
    void leave(const model::Entry& entry, double part);
    /// The row is as it was.
    void forget(const model::Entry& entry);
    /// What is left now of a row's height. The entry is null for a row that shows none.
    int height(const model::Entry* entry, int fullHeight) const;
    /// How much of it is seen, of 0 to 1.
    double opacity(const model::Entry* entry) const;

private:
    void measure(const model::Entry& entry);

    LazyListView& m_list;
    RowOf m_rowOf;
    std::unordered_map<const model::Entry*, double> m_parts;
};

} // namespace korvex::ui
