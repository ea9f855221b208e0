#include "ui/settings/SettingsFixture.h"

#include "ui/kit/fields/TimeField.h"

#include <QCheckBox>
#include <QRadioButton>
#include <QSignalSpy>

#include <gmock/gmock.h>

namespace korvex::ui {
namespace {

using app::AppPreferences;
using Destination = AppPreferences::LaunchDestination;

class SettingsTest : public tests::SettingsFixture {
protected:
    QString shownIn(const char* choice) { return control<QComboBox>(choice).currentText(); }

    /// Another program's view of the same settings.
    app::FileUserDefaults theirDefaults{folder / "settings.json"};
    AppPreferences theirs{theirDefaults, log};
};

TEST_F(SettingsTest, WhatIsChosenHoldsAtOnceAndWhatOthersChooseIsShown) {
    struct Case {
        const char* what;
        Pane pane;
        std::function<void()> choose;
        std::function<bool()> holds;
        std::function<void()> chooseElsewhere;
        std::function<bool()> isShown;
    };
    const std::vector<Case> cases{
        {"launch destination", general, [&] { choose("Open with", "Upcoming"); },
         [&] { return theirs.launchDestination() == Destination::upcoming; },
         [&] { theirs.setLaunchDestination(Destination::board); },
         [&] { return shownIn("Open with") == QStringLiteral("Chosen board"); }},
        {"launch board", general, [&] { choose("Board", "Work"); },
         [&] { return theirs.launchBoardID() == work->id(); },
         [&] { theirs.setLaunchBoardID(inbox->id()); },
         [&] { return shownIn("Board") == QStringLiteral("Inbox"); }},
        {"default board", general, [&] { choose("Default board", "Work"); },
         [&] { return theirs.defaultBoardID() == work->id(); },
         [&] { theirs.setDefaultBoardID(base::Uuid::random()); },
         [&] { return shownIn("Default board") == QStringLiteral("Inbox (fallback)"); }},
        {"reminder time", general,
         [&] {
             auto& field = control<TimeField>("Default reminder time");
             field.setFocus();
             field.selectAll();
             QTest::keyClicks(&field, QStringLiteral("7:30"));
             QTest::keyClick(&field, Qt::Key_Return);
         },
         [&] { return theirs.defaultReminderMinutes() == 450; },
         [&] { theirs.setDefaultReminderMinutes(600); },
         [&] { return control<TimeField>("Default reminder time").time() == QTime(10, 0); }},
        {"spacing", general, [&] { control<QRadioButton>("Comfortable").click(); },
         [&] { return theirs.boardSpacing() == AppPreferences::BoardSpacing::comfortable; },
         [&] { theirs.setBoardSpacing(AppPreferences::BoardSpacing::compact); },
         [&] { return control<QRadioButton>("Compact").isChecked(); }},
        {"theme", appearance, [&] { control<QRadioButton>("Dark").click(); },
         [&] {
             return theirs.appearance() == AppPreferences::Appearance::dark &&
                    theme.colors().isDark;
         },
         [&] { theirs.setAppearance(AppPreferences::Appearance::light); },
         [&] { return control<QRadioButton>("Light").isChecked() && !theme.colors().isDark; }},
        {"font size", appearance, [&] { choose("Font size", "24"); },
         [&] { return theirs.fontSize() == 24; }, [&] { theirs.setFontSize(10); },
         [&] { return shownIn("Font size") == QStringLiteral("10"); }},
        {"retention", backups, [&] { control<QRadioButton>("30").click(); },
         [&] { return theirs.automaticBackupRetention() == 30; },
         [&] { theirs.setAutomaticBackupRetention(14); },
         [&] { return control<QRadioButton>("14").isChecked(); }},
        {"daily backups", backups, [] {}, [] { return true; },
         [&] { theirs.setAutomaticBackupEnabled(true); },
         [&] { return control<QCheckBox>("Back up every day").isChecked(); }},
    };
    for (const auto& each : cases) {
        openSettings(each.pane);
        each.choose();
        theirs.reload();
        EXPECT_TRUE(each.holds()) << each.what;
        each.chooseElsewhere();
        preferences.reload();
        EXPECT_TRUE(each.isShown()) << each.what;
        theirs.reload();
        EXPECT_TRUE(each.isShown()) << each.what << ": what they have chosen was not overwritten";
    }
}

TEST_F(SettingsTest, ATimeThatIsNoneIsRefusedBesideItsField) {
    openSettings(general);
    auto& field = control<TimeField>("Default reminder time");
    field.setFocus();
    field.selectAll();
    QTest::keyClicks(&field, QStringLiteral("noon or so"));
    const auto before = words();
    QTest::keyClick(&field, Qt::Key_Return);
    EXPECT_NE(words(), before);
    EXPECT_EQ(preferences.defaultReminderMinutes(), 540);
}

TEST_F(SettingsTest, ThePreferencesSayWhatTheWindowBeginsWith) {
    struct Case {
        Destination destination;
        AppPreferences::BoardID chosen;
        PageKind page;
        model::Board* board;
    };
    auto& old = own.boards.createBoard("Old", kNow);
    own.boards.setArchived(true, old, kNow);
    for (const auto& each : {Case{Destination::lastBoard, inbox->id(), PageKind::board, work},
                             Case{Destination::board, inbox->id(), PageKind::board, inbox},
                             Case{Destination::board, old.id(), PageKind::board, inbox},
                             Case{Destination::board, {}, PageKind::board, inbox},
                             Case{Destination::upcoming, {}, PageKind::upcoming, work}}) {
        preferences.setMainBoardSelectedBoardID(work->id());
        preferences.setLaunchDestination(each.destination);
        preferences.setLaunchBoardID(each.chosen);
        window = std::make_unique<MainWindow>(workspace, theme);
        QSignalSpy painted(window.get(), &MainWindow::firstPainted);
        window->show();
        EXPECT_TRUE(painted.count() > 0 || painted.wait()) << "what waits for the first picture";
        EXPECT_EQ(navigation().currentPage(), each.page);
        EXPECT_EQ(page().board(), each.board);
        EXPECT_TRUE(navigation().page().isAncestorOf(window->focusWidget()));
    }
}

TEST_F(SettingsTest, ThereIsOneWindowWhichKeysCloseAndWhichRemembersItsPlace) {
    openSettings(general);
    auto* const first = settings;
    settings->resize(700, 444);
    QTest::keyClick(settings, Qt::Key_Escape);
    EXPECT_FALSE(settings->isVisible());
    openSettings(appearance);
    EXPECT_EQ(settings, first);
    QTest::keyClick(settings, Qt::Key_W, Qt::ControlModifier);
    EXPECT_FALSE(settings->isVisible());
    window->close();
    window.reset();
    openSettings(general);
    EXPECT_EQ(settings->size(), QSize(700, 444));
}

TEST_F(SettingsTest, ANarrowWindowHasAChoiceInPlaceOfTheList) {
    openSettings(general);
    for (const auto fontSize : {13, 24}) {
        preferences.setFontSize(fontSize);
        settings->resize(360, 500);
        QApplication::processEvents();
        for (const auto* const pane : {"Backups", "Appearance", "General"}) {
            choose("Settings", pane);
            QApplication::processEvents();
            EXPECT_THAT(words(), ::testing::StartsWith(pane));
            for (const auto* const each : settings->findChildren<QWidget*>()) {
                if (each->isVisible() && each->focusPolicy() != Qt::NoFocus) {
                    const auto left = each->mapTo(settings, QPoint(0, 0)).x();
                    EXPECT_GE(left, 0) << pane << toUtf8(each->accessibleName());
                    EXPECT_LE(left + each->width(), settings->width())
                        << pane << each->metaObject()->className();
                }
            }
        }
    }
}

} // namespace
} // namespace korvex::ui
