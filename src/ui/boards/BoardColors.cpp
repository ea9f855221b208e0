#include "ui/boards/BoardColors.h"

#include "services/BoardService.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace korvex::ui {

namespace {

/// The colours in the order of the enumeration; on each ground they are made as strong as it takes.
constexpr std::array<QRgb, model::kBoardIconColorCount> kColors{
    0xff2f6fde, // blue
    0xff2e9e4f, // green
    0xffe07b1a, // orange
    0xffd83a3a, // red
    0xff8f4fd1, // purple
    0xffe0559a, // pink
    0xffd4a300, // yellow
    0xff1b9a94, // teal
    0xff7b7f87, // gray
    0xff94683f, // brown
    0xff35b58c, // mint
    0xff1ca3c9, // cyan
    0xff4d55c8, // indigo
    0xffec6a5c, // coral
    0xffa48ae0, // lavender
    0xffc9496f, // rose
    0xff7f8a2e, // olive
    0xff274b8f, // navy
    0xffbf9e68, // sand
};

/// So many boards stand near enough to a new one for their colours to be taken for its own.
constexpr int kNeighbours = 3;

/// How different two colours look, from 0: the weights of red and blue depend on how red they are.
double difference(const QColor& one, const QColor& other) {
    const auto red = (one.redF() + other.redF()) / 2;
    const auto square = [](double value) { return value * value; };
    return std::sqrt((2 + red) * square(one.redF() - other.redF()) +
                     4 * square(one.greenF() - other.greenF()) +
                     (3 - red) * square(one.blueF() - other.blueF()));
}

} // namespace

std::optional<model::BoardIconColor> ownColorOf(const model::Board& board) {
    return board.iconColor() ? model::boardIconColor(*board.iconColor()) : std::nullopt;
}

QColor colorOf(std::optional<model::BoardIconColor> color, const ThemeColors& theme) {
    if (!color) {
        return theme.accent;
    }
    const QColor base(kColors[static_cast<std::size_t>(*color)]);
    return theme.readableOnGrounds(base, theme.markContrast());
}

QColor iconColorOf(const model::Board& board, const ThemeColors& theme) {
    return colorOf(ownColorOf(board), theme);
}

model::BoardIconColor nextColor(const std::vector<model::Board*>& boards,
                                const ThemeColors& theme) {
    std::array<int, model::kBoardIconColorCount> uses{};
    for (const auto* const board : boards) {
        if (const auto color = ownColorOf(*board)) {
            ++uses[static_cast<std::size_t>(*color)];
        }
    }
    std::vector<QColor> beside{theme.accent, theme.danger};
    const auto most = std::ssize(beside) + kNeighbours;
    const auto listed = services::BoardService::activeBoards(boards);
    for (auto board = listed.rbegin(); board != listed.rend() && std::ssize(beside) < most;
         ++board) {
        beside.push_back(iconColorOf(**board, theme));
    }
    const auto apart = [&](model::BoardIconColor color) {
        const auto drawn = colorOf(color, theme);
        auto nearest = std::numeric_limits<double>::max();
        for (const auto& other : beside) {
            nearest = std::min(nearest, difference(drawn, other));
        }
        return nearest;
    };
    const auto fewest = *std::min_element(uses.begin(), uses.end());
    std::optional<model::BoardIconColor> best;
    for (const auto color : model::allBoardIconColors()) {
        const auto isCandidate = uses[static_cast<std::size_t>(color)] == fewest;
        if (isCandidate && (!best || apart(color) > apart(*best))) {
            best = color;
        }
    }
    return *best;
}

} // namespace korvex::ui
