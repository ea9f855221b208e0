#pragma once

#include "base/Uuid.h"
#include "model/EntryPlacement.h"
#include "model/EntryType.h"
#include "ui/entries/EntryListModel.h"
#include "ui/kit/lists/LazyListView.h"
#include "ui/kit/theme/Theme.h"

#include <optional>

class QDropEvent;
class QPixmap;

namespace korvex::ui {

/// The reordering of a board's entries by dragging: finds the place that a dragged entry would go
/// to and shows it with a line. Main thread.
class EntryReordering final {
public:
    /// A place before or after the entry of a row.
    struct Place {
        int row;
        model::EntryPlacement placement;
    };
    struct Drop {
        base::Uuid entry;
        Place place;
    };

    EntryReordering(const EntryListModel& model, LazyListView& list, const Theme& theme)
        : m_model(model), m_list(list), m_theme(theme) {}

    /// Drags the entry of a row until it is let go. `picture` is what the row looks like.
    void drag(int row, const QPixmap& picture);
    /// Whether an entry is dragged, and not something else.
    static bool isWanted(const QDropEvent& event);
    /// Marks the place under the pointer. False when there is none.
    bool follow(const QDropEvent& event);
    void leave() { mark(std::nullopt); }
    /// What was let go, and where; absent when it cannot go there.
    std::optional<Drop> drop(const QDropEvent& event);
    /// Draws the line over the rows, while there is a place to show.
    void paint() const;

private:
    std::optional<Place> placeAt(const QPoint& position) const;
    void mark(std::optional<Place> place);

    const EntryListModel& m_model;
    LazyListView& m_list;
    const Theme& m_theme;
    std::optional<Place> m_place;
};

} // namespace korvex::ui
