#pragma once

#include "ui/entries/EntryItemDelegate.h"
#include "ui/entries/EntryListModel.h"
#include "ui/kit/lists/LazyListView.h"

namespace korvex::ui {

/// What stands where in the rows of a board's page. Points and places are those of the viewport.
/// Main thread.
class EntryHits final {
public:
    EntryHits(const EntryListModel& model, const LazyListView& list,
              const EntryItemDelegate& delegate)
        : m_model(model), m_list(list), m_delegate(delegate) {}

    /// Whether the row is a text entry.
    bool isText(int row) const;
    /// The circle of a todo, or the sign in its place.
    QRect signOf(int row) const;
    /// The due label of a todo, or where it would stand.
    QRect scheduleOf(int row) const;
    /// The place in the row's text that is nearest to the point, in UTF-16 units.
    int caretAt(int row, const QPoint& position) const;
    /// The link of a text entry under the point, if it may be opened; else empty.
    QString linkAt(const QPoint& position) const;

private:
    QRect placeOf(int row) const { return m_list.visualRect(m_model.index(row, 0)); }

    const EntryListModel& m_model;
    const LazyListView& m_list;
    const EntryItemDelegate& m_delegate;
};

} // namespace korvex::ui
