#include "ui/widget/WidgetFixture.h"

#include <QSignalSpy>

#include <gmock/gmock.h>

namespace korvex::ui {
namespace {

class WidgetPlaceTest : public WidgetFixture {};

TEST_F(WidgetPlaceTest, SeveralAreAddedRemovedAndComeBackWhereTheyStood) {
    auto& work = app->boards.createBoard("Work", kNow);
    auto& first = show();
    auto& second = show(work.id());
    EXPECT_FALSE(first.geometry().intersects(second.geometry()));
    EXPECT_EQ(desktop.withKeyboard, second.windowHandle());
    // The same board is not shown twice: its widget gets the keyboard, where the user has put it.
    second.setGeometry(40, 50, 260, 300);
    widgets().open(inbox->id());
    EXPECT_EQ(desktop.withKeyboard, first.windowHandle());
    widgets().open(work.id());
    EXPECT_EQ(desktop.withKeyboard, second.windowHandle());
    EXPECT_EQ(set->windows().size(), 2U);
    EXPECT_EQ(second.geometry(), QRect(40, 50, 260, 300));
    EXPECT_EQ(desktop.prepared, 2) << "the desktop's hints are replaced while it is shown";
    // Without a board those come back that are closed, or put away.
    first.close();
    second.showMinimized();
    widgets().open(std::nullopt);
    EXPECT_TRUE(first.isVisible());
    EXPECT_FALSE(second.isMinimized());
    EXPECT_EQ(desktop.withKeyboard, first.windowHandle());
    EXPECT_EQ(set->windows().size(), 2U);
    choose(first, "Add Widget");
    EXPECT_EQ(set->windows().size(), 3U);
    choose(first, "Remove Widget");
    QTest::qWait(10);
    EXPECT_EQ(set->windows().size(), 2U);
    // It was moved just now when the session ends.
    second.setGeometry(60, 50, 260, 300);
    QTest::qWait(50);
    set->save();

    set.reset();
    desktop.withKeyboard = nullptr;
    ASSERT_TRUE(widgets().showRemembered());
    EXPECT_EQ(desktop.withKeyboard, nullptr) << "nobody has asked for them";
    EXPECT_EQ(set->windows()[0]->geometry(), QRect(60, 50, 260, 300));
    {
        // Closed, they are remembered all the same.
        QSignalSpy emptied(set.get(), &WidgetSet::emptied);
        choose(*set->windows()[1], "Close All Widgets");
        QTest::qWait(10);
        EXPECT_GE(emptied.count(), 1);
    }
    widgets().open(std::nullopt);
    ASSERT_EQ(set->windows().size(), 2U);
    QSignalSpy emptied(set.get(), &WidgetSet::emptied);
    for (auto* const window : set->windows()) {
        choose(*window, "Remove Widget");
    }
    QTest::qWait(10);
    EXPECT_EQ(emptied.count(), 1);
    set.reset();
    EXPECT_FALSE(widgets().showRemembered());
}

TEST_F(WidgetPlaceTest, OneThatWasCalledStandsOverOthersUntilTheKeyboardIsGoneForGood) {
    auto& window = show();
    const auto isBelow = [&] {
        return window.windowHandle()->flags().testFlag(Qt::WindowStaysOnBottomHint);
    };
    QWidget other;
    other.show();
    const auto activate = [](QWidget& which) {
        which.activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&which));
    };
    activate(window);
    EXPECT_FALSE(isBelow());
    // As a key does that the desktop has for itself.
    activate(other);
    activate(window);
    runLoop.advance(10);
    EXPECT_FALSE(isBelow());
    activate(other);
    runLoop.advance(10);
    EXPECT_TRUE(isBelow());
    activate(window);
    EXPECT_TRUE(isBelow()) << "nobody has called it this time";

    // By arrow keys, which go to the window manager, or to where the user has gone on to.
    const auto place = [&] {
        activate(window);
        choose(window, "Move by Arrow Keys");
        QApplication::processEvents();
        EXPECT_FALSE(isBelow());
        activate(other);
    };
    place();
    EXPECT_EQ(desktop.placings, 1);
    runLoop.advance(20);
    window.move(window.pos() + QPoint(10, 0));
    QApplication::processEvents();
    runLoop.advance(20);
    EXPECT_FALSE(isBelow()) << "it is still being moved";
    runLoop.advance(20);
    EXPECT_TRUE(isBelow()) << "nobody else says that it has ended";

    place();
    activate(window);
    choose(window, "Keep Below Other Windows");
    choose(window, "Keep Below Other Windows");
    EXPECT_FALSE(isBelow()) << "it has the keyboard";
    activate(other);
    runLoop.advance(10);
    EXPECT_TRUE(isBelow());
}

TEST_F(WidgetPlaceTest, TheMenuOffersWhatTheDesktopKnows) {
    auto& window = show();
    EXPECT_EQ(desktop.prepared, 1);
    EXPECT_TRUE(window.windowFlags().testFlag(Qt::WindowStaysOnBottomHint));
    choose(window, "Keep Below Other Windows");
    EXPECT_FALSE(window.windowFlags().testFlag(Qt::WindowStaysOnBottomHint));
    EXPECT_TRUE(window.isVisible());
    choose(window, "Show Widgets When You Log In");
    EXPECT_EQ(desktop.atLogin, true);
    choose(window, "Show Widgets When You Log In");
    EXPECT_EQ(desktop.atLogin, false);

    set.reset();
    desktop.isX11 = false;
    desktop.atLogin.reset();
    ASSERT_TRUE(widgets().showRemembered());
    auto& plain = *set->windows().front();
    EXPECT_FALSE(plain.windowFlags().testFlag(Qt::FramelessWindowHint));
    const auto items = menuOf(plain);
    EXPECT_FALSE(items.at("Keep Below Other Windows")->isEnabled());
    EXPECT_TRUE(items.contains("This desktop lets no window do that."));
    EXPECT_FALSE(items.at("Show Widgets When You Log In")->isEnabled());
}

} // namespace
} // namespace korvex::ui
