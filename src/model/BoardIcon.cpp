#include "model/BoardIcon.h"

#include "model/Names.h"

#include <cstddef>

namespace korvex::model {

namespace {

// One row a case, in the order of the enumeration.
constexpr std::array<CaseName<BoardIcon>, kBoardIconCount> kIcons{{
    {BoardIcon::board, "square.grid.2x2.fill", "Board"},
    {BoardIcon::folder, "folder.fill", "Folder"},
    {BoardIcon::work, "briefcase.fill", "Work"},
    {BoardIcon::home, "house.fill", "Home"},
    {BoardIcon::star, "star.fill", "Star"},
    {BoardIcon::heart, "heart.fill", "Heart"},
    {BoardIcon::idea, "lightbulb.fill", "Idea"},
    {BoardIcon::book, "book.fill", "Book"},
    {BoardIcon::code, "chevron.left.forwardslash.chevron.right", "Code"},
    {BoardIcon::travel, "airplane", "Travel"},
    {BoardIcon::goal, "flag.fill", "Goal"},
    {BoardIcon::music, "music.note", "Music"},
    {BoardIcon::tasks, "checkmark.circle.fill", "Tasks"},
    {BoardIcon::notes, "note.text", "Notes"},
    {BoardIcon::calendar, "calendar", "Calendar"},
    {BoardIcon::document, "doc.text.fill", "Document"},
    {BoardIcon::person, "person.fill", "Person"},
    {BoardIcon::team, "person.2.fill", "Team"},
    {BoardIcon::chat, "bubble.left.and.bubble.right.fill", "Chat"},
    {BoardIcon::mail, "envelope.fill", "Mail"},
    {BoardIcon::shopping, "cart.fill", "Shopping"},
    {BoardIcon::money, "banknote.fill", "Money"},
    {BoardIcon::gift, "gift.fill", "Gift"},
    {BoardIcon::coffee, "cup.and.saucer.fill", "Coffee"},
    {BoardIcon::food, "fork.knife", "Food"},
    {BoardIcon::fitness, "figure.run", "Fitness"},
    {BoardIcon::nature, "leaf.fill", "Nature"},
    {BoardIcon::globe, "globe", "Globe"},
    {BoardIcon::photo, "photo.fill", "Photo"},
    {BoardIcon::camera, "camera.fill", "Camera"},
    {BoardIcon::tools, "wrench.and.screwdriver.fill", "Tools"},
    {BoardIcon::chart, "chart.bar.fill", "Chart"},
}};

constexpr std::array<CaseName<BoardIconColor>, kBoardIconColorCount> kColors{{
    {BoardIconColor::blue, "blue", "Blue"},
    {BoardIconColor::green, "green", "Green"},
    {BoardIconColor::orange, "orange", "Orange"},
    {BoardIconColor::red, "red", "Red"},
    {BoardIconColor::purple, "purple", "Purple"},
    {BoardIconColor::pink, "pink", "Pink"},
    {BoardIconColor::yellow, "yellow", "Yellow"},
    {BoardIconColor::teal, "teal", "Teal"},
    {BoardIconColor::gray, "gray", "Gray"},
    {BoardIconColor::brown, "brown", "Brown"},
    {BoardIconColor::mint, "mint", "Mint"},
    {BoardIconColor::cyan, "cyan", "Cyan"},
    {BoardIconColor::indigo, "indigo", "Indigo"},
    {BoardIconColor::coral, "coral", "Coral"},
    {BoardIconColor::lavender, "lavender", "Lavender"},
    {BoardIconColor::rose, "rose", "Rose"},
    {BoardIconColor::olive, "olive", "Olive"},
    {BoardIconColor::navy, "navy", "Navy"},
    {BoardIconColor::sand, "sand", "Sand"},
}};

/// Whether a case's number is its row's index.
template <typename Table>
constexpr bool isInOrder(const Table& table) {
    for (std::size_t row = 0; row < table.size(); ++row) {
        if (static_cast<std::size_t>(table[row].which) != row) {
            return false;
        }
    }
    return true;
}
static_assert(isInOrder(kIcons) && isInOrder(kColors));

template <typename Case, std::size_t count>
constexpr std::array<Case, count> cases(const std::array<CaseName<Case>, count>& table) {
    std::array<Case, count> result{};
    for (std::size_t row = 0; row < count; ++row) {
        result[row] = table[row].which;
    }
    return result;
}

constexpr auto kAllIcons = cases(kIcons);
constexpr auto kAllColors = cases(kColors);

} // namespace

const std::array<BoardIcon, kBoardIconCount>& allBoardIcons() {
    return kAllIcons;
}

std::string_view rawValue(BoardIcon icon) {
    return kIcons[static_cast<std::size_t>(icon)].rawValue;
}

std::string_view title(BoardIcon icon) {
    return kIcons[static_cast<std::size_t>(icon)].title;
}

std::optional<BoardIcon> boardIcon(std::string_view rawValue) {
    return caseWithRawValue<BoardIcon>(kIcons, rawValue);
}

const std::array<BoardIconColor, kBoardIconColorCount>& allBoardIconColors() {
    return kAllColors;
}

std::string_view rawValue(BoardIconColor color) {
    return kColors[static_cast<std::size_t>(color)].rawValue;
}

std::string_view title(BoardIconColor color) {
    return kColors[static_cast<std::size_t>(color)].title;
}

std::optional<BoardIconColor> boardIconColor(std::string_view rawValue) {
    return caseWithRawValue<BoardIconColor>(kColors, rawValue);
}

} // namespace korvex::model
