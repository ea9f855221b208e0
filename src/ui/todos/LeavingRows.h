#pragma once

#include "model/Entry.h"
#include "ui/kit/LazyListView.h"

#include <functional>
#include <unordered_map>

namespace korvex::ui {

/// The todos whose rows are leaving a list: each row shrinks for a moment and is gone then. As fast
/// as the list's style lets things move. Main thread.
class LeavingRows final : public QObject {
public:
    /// The number of a todo's row, or -1.
    using RowOf = std::function<int(const model::Entry&)>;

    LeavingRows(LazyListView& list, RowOf rowOf);

    /// Calls `done` at the end.
    void start(const model::Entry& entry, std::function<void()> done);
    /// What is left now of a row's height. The entry is null for a row that shows none.
    int height(const model::Entry* entry, int fullHeight) const;

private:
    void measure(const model::Entry& entry);

    LazyListView& m_list;
    RowOf m_rowOf;
    /// How much of each is left, from 1 to 0.
    std::unordered_map<const model::Entry*, double> m_parts;
};

} // namespace korvex::ui
