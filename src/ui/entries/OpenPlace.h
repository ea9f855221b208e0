#pragma once

#include "ui/entries/EntryListModel.h"
#include "ui/entries/EntryReordering.h"

#include <optional>

namespace korvex::ui {

/// A place among the open entries of a board, as they are stored: directly after one, or before
/// one; with neither, at the end.
struct OpenPlace {
    std::optional<base::Uuid> after;
    std::optional<base::Uuid> before;
};

/// Directly after an entry, at the very front for null.
OpenPlace placeAfter(const model::Entry* entry, const model::Board& board);
/// The place beside a row. A todo that was just ticked still has one, and is no open entry any
/// more.
OpenPlace openPlace(const EntryListModel& model, const EntryReordering::Place& place);

} // namespace korvex::ui
