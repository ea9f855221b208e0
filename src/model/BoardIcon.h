#pragma once

#include <array>
#include <optional>
#include <string_view>

namespace korvex::model {

/// The icons a board can have, in the order of the picker.
enum class BoardIcon {
    board,
    folder,
    work,
    home,
    star,
    heart,
    idea,
    book,
    code,
    travel,
    goal,
    music,
    tasks,
    notes,
    calendar,
    document,
    person,
    team,
    chat,
    mail,
    shopping,
    money,
    gift,
    coffee,
    food,
    fitness,
    nature,
    globe,
    photo,
    camera,
    tools,
    chart,
};
inline constexpr std::size_t kBoardIconCount = 32;

/// Every icon, in the order of the picker.
const std::array<BoardIcon, kBoardIconCount>& allBoardIcons();
/// The symbol's name, as stored: "folder.fill".
std::string_view rawValue(BoardIcon icon);
/// The label in the picker: "Folder".
std::string_view title(BoardIcon icon);
/// The icon with exactly this raw value; a case's own name ("folder") is none.
std::optional<BoardIcon> boardIcon(std::string_view rawValue);

/// The colours of a board's icon; absent means the accent colour. The views choose the values.
enum class BoardIconColor {
    blue,
    green,
    orange,
    red,
    purple,
    pink,
    yellow,
    teal,
    gray,
    brown,
    mint,
    cyan,
    indigo,
    coral,
    lavender,
    rose,
    olive,
    navy,
    sand,
};
inline constexpr std::size_t kBoardIconColorCount = 19;

const std::array<BoardIconColor, kBoardIconColorCount>& allBoardIconColors();
/// The name as stored: "blue".
std::string_view rawValue(BoardIconColor color);
/// The label in the picker: "Blue".
std::string_view title(BoardIconColor color);
std::optional<BoardIconColor> boardIconColor(std::string_view rawValue);

} // namespace korvex::model
