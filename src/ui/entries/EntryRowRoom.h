#pragma once

namespace korvex::ui {

/// The width that rows are laid out for, and the one up to which what cannot be made narrower may
/// reach beyond that: a wide table.
struct EntryRowRoom {
    int width = 0;
    int most = 0;

    bool operator==(const EntryRowRoom&) const = default;
};

} // namespace korvex::ui
