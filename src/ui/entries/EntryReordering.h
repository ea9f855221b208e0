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

/// What is dragged over the list to stand there as entries: an entry that goes to another place, or
/// text that becomes new ones. Finds the place and shows it with a line. Main thread.
class EntryReordering final {
public:
    /// A place before or after the entry of a row.
    struct Place {
        int row;
        model::EntryPlacement placement;
    };
    struct Drop {
        /// Absent for text.
        std::optional<base::Uuid> entry;
        /// Absent for text on a board without entries.
        std::optional<Place> place;
    };

    EntryReordering(const EntryListModel& model, LazyListView& list, const Theme& theme)
        : m_model(model), m_list(list), m_theme(theme) {}

    /// Drags the entry of a row until it is let go. `picture` is what it looks like, at this place
    /// of the viewport.
    void drag(int row, const QPixmap& picture, const QPoint& place);
    /// Whether an entry or text is dragged, and not something else. Accepts it then.
    static bool take(QDropEvent& event);
    /// Marks the place under the pointer, and accepts the event where it can be let go.
    void follow(QDropEvent& event);
    void leave() { mark(std::nullopt); }
    /// What was let go, and where; absent when it cannot go there.
    std::optional<Drop> drop(QDropEvent& event);
    /// Draws the line over the rows, while there is a place to show.
    void paint() const;

private:
    /// What would be let go there.
    std::optional<Drop> at(const QDropEvent& event) const;
    std::optional<Place> placeAt(const QPoint& position) const;
    void mark(std::optional<Place> place);

    const EntryListModel& m_model;
    LazyListView& m_list;
    const Theme& m_theme;
    std::optional<Place> m_place;
};

} // namespace korvex::ui
