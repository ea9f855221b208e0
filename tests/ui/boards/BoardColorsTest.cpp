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

TEST_F(BoardColorsTest, BoardColorsDifferInBothAppearances) {
    using Appearance = app::AppPreferences::Appearance;
    for (const auto appearance : {Appearance::light, Appearance::dark}) {
        preferences.setAppearance(appearance);
        std::vector<QRgb> seen;
        for (const auto color : model::allBoardIconColors()) {
            seen.push_back(colorOf(color, theme.colors()).rgb());
        }
        std::sort(seen.begin(), seen.end());
        EXPECT_EQ(std::adjacent_find(seen.begin(), seen.end()), seen.end());
    }
}

} // namespace
} // namespace korvex::ui
