#include "ui/boards/BoardColors.h"

#include "model/BoardIcon.h"
#include "ui/WindowFixture.h"
#include "ui/boards/BoardIcons.h"
#include "ui/kit/theme/IconSet.h"

#include <algorithm>

namespace korvex::ui {
namespace {

class BoardColorsTest : public tests::WindowFixture {};

TEST(BoardIcons, EveryBoardIconDrawsSomethingOfItsOwn) {
    std::vector<QImage> drawn;
    for (const auto icon : model::allBoardIcons()) {
        const auto image =
            IconSet::pixmap(boardIconName(model::rawValue(icon)), Qt::red, 32, 1).toImage();
        QImage empty(image.size(), image.format());
        empty.fill(Qt::transparent);
        EXPECT_NE(image, empty) << model::title(icon);
        for (const auto& other : drawn) {
            EXPECT_NE(image, other) << model::title(icon);
        }
        drawn.push_back(image);
    }
    EXPECT_EQ(boardIconName("folder"), QStringLiteral("squares-four-fill")) << "no stored symbol";
}

TEST(BoardColors, DifferAndAreSeenOnEveryGroundWhateverTheSystemsAccent) {
    using Contrast = ThemeColors::Contrast;
    for (const auto accent : {QColor(0x30, 0x8c, 0xc6), QColor(Qt::black), QColor(Qt::white)}) {
        for (const auto& colors : {ThemeColors::light(accent, Contrast::usual),
                                   ThemeColors::dark(accent, Contrast::usual),
                                   ThemeColors::light(accent, Contrast::high),
                                   ThemeColors::dark(accent, Contrast::high)}) {
            std::vector<QRgb> seen;
            for (const auto color : model::allBoardIconColors()) {
                const auto drawn = colorOf(color, colors);
                seen.push_back(drawn.rgb());
                for (const auto& ground : {colors.sidebar, colors.raised, colors.selection}) {
                    EXPECT_GE(contrast(drawn, ground), colors.isHighContrast ? 4.5 : 3)
                        << model::rawValue(color) << " on " << ground.name().toStdString();
                }
            }
            std::sort(seen.begin(), seen.end());
            EXPECT_EQ(std::adjacent_find(seen.begin(), seen.end()), seen.end());
        }
    }
}

TEST_F(BoardColorsTest, ANewBoardIsOfferedAColourOfItsOwnThatIsToldFromItsNeighbours) {
    constexpr std::size_t kFirst = 5;
    constexpr int kApart = 64; // of 255, in one channel at least
    const auto areApart = [](const QColor& one, const QColor& two) {
        return std::max({std::abs(one.red() - two.red()), std::abs(one.green() - two.green()),
                         std::abs(one.blue() - two.blue())}) >= kApart;
    };
    for (const auto accent : {QColor(0x2f, 0x6f, 0xde), QColor(0xe0, 0x7b, 0x1a)}) {
        const auto colors = ThemeColors::light(accent, ThemeColors::Contrast::usual);
        std::vector<model::BoardIconColor> offered;
        for (std::size_t i = 0; i < model::kBoardIconColorCount; ++i) {
            const auto next = nextColor(own.boards.boards(), colors);
            const auto drawn = colorOf(next, colors);
            EXPECT_TRUE(i >= kFirst || areApart(drawn, colors.accent)) << i;
            for (auto before = i < 2 ? 0 : i - 2; before < i && i < kFirst; ++before) {
                EXPECT_TRUE(areApart(drawn, colorOf(offered[before], colors))) << i;
            }
            offered.push_back(next);
            own.boards.createBoard("Work", kNow, {.color = model::rawValue(next)});
        }
        std::sort(offered.begin(), offered.end());
        EXPECT_EQ(std::adjacent_find(offered.begin(), offered.end()), offered.end())
            << "each once before one comes again";
        for (auto* const board : own.boards.boards()) {
            if (board != inbox) {
                own.boards.deleteBoard(*board);
            }
        }
    }
}

} // namespace
} // namespace korvex::ui
