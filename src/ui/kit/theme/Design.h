#pragma once

#include <chrono>
#include <cstdint>

namespace korvex::ui {

/// The measures that every window is drawn by. What a length, a size or a time is for says its
/// name; `Theme` says what it is now, with the user's font size and what the desktop asks for. A
/// number that stands in a drawing of its own is a fault: it belongs here or follows from these.

/// Distances between and around things, in pixels at the standard font size.
enum class Space : std::uint8_t {
    /// Between the lines of what belongs together.
    hair = 2,
    /// Between a sign and its words, in what is small.
    small = 4,
    /// Around the content of a control; between rows.
    medium = 8,
    /// Between controls, and around the content of a panel.
    large = 12,
    /// Between groups; from the edge of a page to its content.
    wide = 20,
    /// Between sections, and under the end of a list.
    vast = 32,
};

/// How round corners are, in pixels at the standard font size.
enum class Radius : std::uint8_t {
    /// Check boxes, chips, the bar of a selection in a text.
    small = 4,
    /// Controls, rows, code.
    medium = 6,
    /// Panels that lie over the content.
    large = 10,
};

/// The scale of type, as sizes at the standard one.
enum class TextSize : std::uint8_t {
    /// Labels beside a text, and what counts or explains.
    label = 12,
    body = 13,
    /// The name of a section in a list.
    section = 14,
    /// The name of a page.
    title = 22,
};

/// How large drawn things are, in pixels at the standard font size.
enum class Extent : std::uint8_t {
    /// An icon within words.
    smallIcon = 14,
    icon = 16,
    /// Check circles and the icons of the sidebar.
    sign = 18,
    /// Buttons, fields, choices: whatever stands in one line with others.
    control = 28,
    /// The circle or box of a choice.
    box = 16,
    /// The sign of a choice or a menu behind it.
    caret = 12,
    /// The bar that shows how far something has come.
    progress = 6,
    /// The handle of a scroll bar: at rest, and under the pointer.
    scrollHandle = 4,
    scrollHandleHeld = 8,
};

/// How thick a line is that parts, and the edge of a box, in pixels at every font size.
inline constexpr int kLine = 1;
/// How much of a control is seen while it is disabled.
inline constexpr double kDisabledOpacity = 0.45;

/// The widest that a column of text and todos is, in pixels at the standard font size: longer lines
/// are hard to follow, and what belongs to a todo is to stand near it.
inline constexpr int kMeasure = 760;
/// The widest that a question over the window is, and a panel of fields.
inline constexpr int kSheetMeasure = 380;
inline constexpr int kPanelMeasure = 320;

/// How high a line of a text is, and of a heading in it, as a part of the size of its letters.
inline constexpr double kLineHeight = 1.4;
inline constexpr double kHeadingLineHeight = 1.25;

/// How long what moves takes, in milliseconds where the desktop does not ask for stillness.
enum class Motion : std::uint8_t {
    /// A state of a control.
    quick = 100,
    /// Something that comes, goes or changes its place.
    calm = 180,
};

/// How long what ends by itself is seen before: a tick, so that one can take it back or go on to
/// the next; the handle of a scroll bar, so that one sees where one is, and reaches it; a notice,
/// so that one reads it and reaches its button.
inline constexpr std::chrono::milliseconds kTickShown{500};
inline constexpr std::chrono::milliseconds kScrollHandleShown{900};
inline constexpr std::chrono::milliseconds kNoticeShown{10'000};

} // namespace korvex::ui
