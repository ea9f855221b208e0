#pragma once

#include "model/Entry.h"
#include "ui/kit/lists/LazyListView.h"

#include <functional>
#include <unordered_map>

namespace korvex::ui {

/// How much is left of the rows that are leaving a list, for the list to ask when it measures them.
/// Main thread.
class LeavingRows {
public:
    /// The number of a todo's row, or -1.
    using RowOf = std::function<int(const model::Entry&)>;

    LeavingRows(LazyListView& list, RowOf rowOf) : m_list(list), m_rowOf(std::move(rowOf)) {}

    /// `part` is left of the row: from 1, all of it, to 0.
    void shrink(const model::Entry& entry, double part);
    /// The row is as high as it is.
    void forget(const model::Entry& entry);
    /// What is left now of a row's height. The entry is null for a row that shows none.
    int height(const model::Entry* entry, int fullHeight) const;

private:
    void measure(const model::Entry& entry);

    LazyListView& m_list;
    RowOf m_rowOf;
    std::unordered_map<const model::Entry*, double> m_parts;
};

} // namespace korvex::ui
