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

TEST_F(BoardColorsTest, ANewBoardIsOfferedTheFirstColourThatTheFewestHave) {
    std::vector<const char*> all;
    for (const auto color : model::allBoardIconColors()) {
        all.push_back(model::rawValue(color).data());
    }
    auto twice = all;
    twice.insert(twice.end(), all.begin(), all.end() - 1);
    const std::pair<std::vector<const char*>, const char*> cases[] = {
        {{}, "blue"},
        {{nullptr, "a color of tomorrow"}, "blue"},
        {{"orange", "blue"}, "green"},
        {all, "blue"},
        {twice, "sand"},
    };
    for (const auto& [colors, offered] : cases) {
        for (auto* const board : own.boards.boards()) {
            if (board != inbox) {
                own.boards.deleteBoard(*board);
            }
        }
        for (const auto* const color : colors) {
            auto& board = own.boards.createBoard("Work", kNow);
            board.setIconColor(color ? std::optional<std::string>(color) : std::nullopt);
            own.context.save();
        }
        EXPECT_EQ(model::rawValue(nextColor(own.boards.boards())), offered) << colors.size();
    }
}

} // namespace
} // namespace korvex::ui
