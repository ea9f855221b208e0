#include "ui/widget/WidgetScreens.h"

#include <QGuiApplication>
#include <QScreen>

#include <gtest/gtest.h>

namespace korvex::ui {
namespace {

TEST(WidgetScreens, AWidgetStandsWhollyOnAScreen) {
    const auto room = QGuiApplication::primaryScreen()->availableGeometry();
    const QSize least(100, 100);
    const QRect inside(room.topLeft() + QPoint(10, 10), QSize(200, 150));
    EXPECT_EQ(WidgetScreens::fitted(inside, least), inside);
    for (const auto& far : {inside.translated(100'000, 0), inside.translated(0, -100'000),
                            QRect(room.topLeft() - QPoint(50, 50), room.size() * 3)}) {
        EXPECT_TRUE(room.contains(WidgetScreens::fitted(far, least)));
    }
}

} // namespace
} // namespace korvex::ui
