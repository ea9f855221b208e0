#include "ui/boards/BoardIcons.h"

#include "model/BoardIcon.h"

#include <array>

namespace korvex::ui {

namespace {

/// The names in the order of `model::BoardIcon`.
constexpr std::array<std::string_view, model::kBoardIconCount> kBoardIcons{
    "squares-four-fill",  "folder-fill",
    "briefcase-fill",     "house-fill",
    "star-fill",          "heart-fill",
    "lightbulb-fill",     "book-fill",
    "code-fill",          "airplane-fill",
    "flag-fill",          "music-note-fill",
    "check-circle-fill",  "note-fill",
    "calendar-fill",      "file-text-fill",
    "user-fill",          "users-fill",
    "chats-fill",         "envelope-fill",
    "shopping-cart-fill", "money-fill",
    "gift-fill",          "coffee-fill",
    "fork-knife-fill",    "person-simple-run-fill",
    "leaf-fill",          "globe-fill",
    "image-fill",         "camera-fill",
    "wrench-fill",        "chart-bar-fill",
};

} // namespace

QString boardIconName(std::string_view symbol) {
    const auto icon = model::boardIcon(symbol).value_or(model::BoardIcon::board);
    const auto name = kBoardIcons[static_cast<std::size_t>(icon)];
    return QString::fromLatin1(name.data(), static_cast<qsizetype>(name.size()));
}

} // namespace korvex::ui
