#include "ui/kit/theme/IconSet.h"

#include "ui/kit/theme/ThemeColors.h"

#include <QIcon>
#include <QImage>

#include <gtest/gtest.h>

namespace korvex::ui {
namespace {

/// Its tile is told from a light and from a dark panel, and its sign from the tile, from 16 pixels
/// on.
TEST(IconSet, TheProgramsIconIsToldFromItsGroundInEverySize) {
    for (const int size : {16, 24, 48, 512}) {
        SCOPED_TRACE(size);
        const auto image = IconSet::program().pixmap(size, size).toImage();
        ASSERT_EQ(image.size(), QSize(size, size));
        EXPECT_EQ(image.pixelColor(0, 0).alpha(), 0) << "the corners are round";
        const auto tile = image.pixelColor(size / 2, size * 13 / 16);
        EXPECT_EQ(tile.alpha(), 255);
        EXPECT_GT(contrast(tile, Qt::white), 3);
        EXPECT_GT(contrast(tile, QColor(0x1b, 0x1b, 0x1e)), 2);
        double strongest = 1;
        for (int x = 0; x < size; ++x) {
            strongest = std::max(strongest, contrast(tile, image.pixelColor(x, size * 5 / 8)));
        }
        EXPECT_GT(strongest, 3);
    }
}

} // namespace
} // namespace korvex::ui
