#include "ui/kit/words/Language.h"

#include <QApplication>

#include <gtest/gtest.h>

int main(int argc, char* argv[]) {
    ::testing::InitGoogleTest(&argc, argv);
    // One look everywhere: no screen, no desktop's theme, one locale and zone.
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("QT_QPA_PLATFORMTHEME", "none");
    qputenv("LC_ALL", "en_US.UTF-8");
    qputenv("TZ", "UTC");
#ifdef KORVEX_SCREEN_SCALE
    qputenv("QT_SCALE_FACTOR", KORVEX_SCREEN_SCALE);
#endif
    qunsetenv("DBUS_SESSION_BUS_ADDRESS");
    QApplication application(argc, argv);
    korvex::ui::setUpLanguage(application);
    return RUN_ALL_TESTS();
}
