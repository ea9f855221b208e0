#pragma once

#include "base/Uuid.h"
#include "ui/entries/EntryItemDelegate.h"

#include <optional>

namespace korvex::ui {

class EntryListView;

/// The attachments under the texts of a list's rows: where they stand, and which of them are
/// marked. Main thread.
class EntryChips final {
public:
    EntryChips(const EntryListModel& model, EntryListView& list, EntryItemDelegate& delegate)
        : m_model(model), m_list(list), m_delegate(delegate) {}

    /// The attachments of a row, and where in the viewport they begin.
    struct OfRow {
        const AttachmentChips* chips;
        QPoint topLeft;
    };
    /// Absent for a row that has none, and for -1. Valid until the next call.
    std::optional<OfRow> of(int row) const;
    /// One of them, in the coordinates of the viewport; without an identifier where a list that
    /// cannot be read is told of.
    struct Chip {
        model::Entry* entry;
        std::optional<base::Uuid> id;
        QRect rect;
    };
    std::optional<Chip> at(const QPoint& position) const;
    /// The height that the attachments add to a row while that is edited.
    int extent(int row) const;
    void setMarks(const AttachmentMarks& marks);

private:
    /// Asked first: an edited text is drawn by its editor. Laying it out as a row too, each time
    /// that it was stored, took some 30 ms of a text of 10,000 characters with a table of 20 × 20.
    bool hasAny(int row) const;

    const EntryListModel& m_model;
    EntryListView& m_list;
    EntryItemDelegate& m_delegate;
};

} // namespace korvex::ui
