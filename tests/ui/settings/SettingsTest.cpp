#include "ui/settings/SettingsFixture.h"

#include "ui/kit/fields/TimeField.h"
#include "ui/settings/SettingsGroup.h"

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

    void typeTime(const char* text) {
        auto& field = control<TimeField>("Default reminder time");
        field.setFocus();
        field.selectAll();
        QTest::keyClicks(&field, QString::fromUtf8(text));
    }

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
    add({"one", "two"});
    int distance = 0;
    const auto rowDistance = [this] {
        return list().visualRect(list().model()->index(1, 0)).top() -
               list().visualRect(list().model()->index(0, 0)).top();
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
        {"no default board", general, [] {}, [&] { return !theirs.defaultBoardID(); }, [] {},
         [&] { return shownIn("Default board") == QStringLiteral("Inbox (fallback)"); }},
        {"default board", general, [&] { choose("Default board", "Work"); },
         [&] { return theirs.defaultBoardID() == work->id(); },
         [&] { theirs.setDefaultBoardID(base::Uuid::random()); },
         [&] { return shownIn("Default board") == QStringLiteral("Inbox (fallback)"); }},
        {"reminder time", general,
         [&] {
             typeTime("7:30");
             QTest::keyClick(settings->focusWidget(), Qt::Key_Return);
         },
         [&] { return theirs.defaultReminderMinutes() == 450; },
         [&] { theirs.setDefaultReminderMinutes(600); },
         [&] { return control<TimeField>("Default reminder time").time() == QTime(10, 0); }},
        {"spacing", general, [&] { control<QRadioButton>("Comfortable").click(); },
         [&] {
             distance = rowDistance();
             return theirs.boardSpacing() == AppPreferences::BoardSpacing::comfortable;
         },
         [&] { theirs.setBoardSpacing(AppPreferences::BoardSpacing::compact); },
         [&] { return control<QRadioButton>("Compact").isChecked() && rowDistance() < distance; }},
        {"theme", appearance, [&] { control<QRadioButton>("Dark").click(); },
         [&] {
             return theirs.appearance() == AppPreferences::Appearance::dark &&
                    theme.colors().isDark;
         },
         [&] { theirs.setAppearance(AppPreferences::Appearance::light); },
         [&] {
             return control<QRadioButton>("Light").isChecked() && !theme.colors().isDark &&
                    list().palette().color(QPalette::Text).lightnessF() < 0.5;
         }},
        {"font size", appearance, [&] { choose("Font size", "24"); },
         [&] {
             distance = rowDistance();
             return theirs.fontSize() == 24;
         },
         [&] { theirs.setFontSize(10); },
         [&] {
             return shownIn("Font size") == QStringLiteral("10") &&
                    3 * rowDistance() < 2 * distance;
         }},
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
        QApplication::processEvents();
        theirs.reload();
        EXPECT_TRUE(each.holds()) << each.what;
        each.chooseElsewhere();
        preferences.reload();
        QApplication::processEvents();
        EXPECT_TRUE(each.isShown()) << each.what;
        theirs.reload();
        EXPECT_TRUE(each.isShown()) << each.what << ": what they have chosen was not overwritten";
    }
}

TEST_F(SettingsTest, WhatIsTypedIsTakenHoweverTheWindowIsLeft) {
    using Leave = std::function<void()>;
    const Leave byEscape = [&] { QTest::keyClick(settings, Qt::Key_Escape); };
    const std::vector<std::pair<const char*, Leave>> ways{
        {"7:10", byEscape},
        {"7:15", [&] { QTest::keyClick(settings, Qt::Key_W, Qt::ControlModifier); }},
        {"7:20", [&] { settings->close(); }},
        {"7:25", [&] { window->storeAll(); }},
        {"7:30", [&] { window->close(); }},
        {"7:35", [&] {
             QTest::keyClick(settings, Qt::Key_Q, Qt::ControlModifier);
             QApplication::processEvents();
             EXPECT_FALSE(window->isVisible());
         }}};
    for (const auto& [typed, leave] : ways) {
        window.reset();
        openSettings(general);
        typeTime(typed);
        leave();
        EXPECT_EQ(preferences.defaultReminderMinutes(),
                  QTime::fromString(QString::fromUtf8(typed), QStringLiteral("h:mm"))
                          .msecsSinceStartOfDay() /
                      60'000);
    }
    for (const auto& close : {byEscape, Leave([&] { window->close(); })}) {
        window.reset();
        openSettings(general);
        typeTime("noon or so");
        settings->showPane(appearance);
        close();
        EXPECT_TRUE(settings->isVisible());
        EXPECT_THAT(words(), ::testing::HasSubstr("is not a time."));
        close();
        EXPECT_TRUE(!window->isVisible() || !settings->isVisible());
        EXPECT_EQ(preferences.defaultReminderMinutes(), 455);
    }
}

TEST_F(SettingsTest, ATimeThatIsNoneIsRefusedBesideItsField) {
    openSettings(general);
    auto& field = control<TimeField>("Default reminder time");
    const auto note = field.accessibleDescription();
    typeTime("noon or so");
    const auto before = words();
    QTest::keyClick(&field, Qt::Key_Return);
    EXPECT_NE(words(), before);
    EXPECT_EQ(preferences.defaultReminderMinutes(), 540);
    EXPECT_THAT(toUtf8(field.accessibleDescription()),
                ::testing::EndsWith("is not a time.\n" + toUtf8(note)));
    typeTime("8:00");
    EXPECT_EQ(field.accessibleDescription(), note) << "it is still known of it";
}

TEST_F(SettingsTest, AnOpenListOfBoardsIsNotTakenAway) {
    openSettings(general);
    auto& choice = control<QComboBox>("Default board");
    QSignalSpy filled(choice.model(), &QAbstractItemModel::rowsInserted);
    theirs.setBoardSpacing(AppPreferences::BoardSpacing::comfortable);
    preferences.reload();
    QApplication::processEvents();
    EXPECT_EQ(filled.count(), 0) << "no board is another";
    choice.showPopup();
    own.boards.createBoard("Later", kNow);
    QApplication::processEvents();
    EXPECT_EQ(filled.count(), 0);
    choice.hidePopup();
    QApplication::processEvents();
    EXPECT_GE(choice.findText(QStringLiteral("Later")), 0);
    settings->close();
    filled.clear();
    own.boards.createBoard("Latest", kNow);
    QApplication::processEvents();
    EXPECT_EQ(filled.count(), 0) << "nobody sees it";
    openSettings(general);
    EXPECT_GE(choice.findText(QStringLiteral("Latest")), 0);
}

TEST_F(SettingsTest, SaysWhileSettingsCannotBeKept) {
    std::filesystem::remove(folder / "settings.json");
    std::filesystem::create_directory(folder / "settings.json");
    openSettings(appearance);
    auto& line = *settings->findChild<NoticeLine*>();
    EXPECT_FALSE(line.isVisible());
    control<QRadioButton>("Dark").click();
    EXPECT_TRUE(theme.colors().isDark);
    EXPECT_TRUE(line.isVisible());
    std::filesystem::remove(folder / "settings.json");
    preferences.reload();
    EXPECT_FALSE(line.isVisible());
}

TEST_F(SettingsTest, OnlyTheUsersOwnStoreIsRemembered) {
    preferences.setMainBoardSelectedBoardID(inbox->id());
    auto another = workspace;
    another.isUsersOwn = false;
    for (const auto* const each : std::initializer_list<const Workspace*>{&another, &workspace}) {
        window = std::make_unique<MainWindow>(*each, theme);
        navigation().openBoard(*work);
        EXPECT_EQ(preferences.mainBoardSelectedBoardID(),
                  each == &workspace ? work->id() : inbox->id());
    }
    const auto gone = base::Uuid::random();
    preferences.setMainBoardSelectedBoardID(gone);
    open();
    EXPECT_EQ(page().board(), inbox);
    EXPECT_EQ(preferences.mainBoardSelectedBoardID(), gone) << "the Inbox only stands in for it";
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
    for (const auto& [fontSize, direction] :
         {std::pair(13, Qt::LeftToRight), {24, Qt::LeftToRight}, {24, Qt::RightToLeft}}) {
        preferences.setFontSize(fontSize);
        QApplication::setLayoutDirection(direction);
        settings->resize(360, 700);
        QApplication::processEvents();
        for (const auto* const pane : {"Backups", "Appearance", "General"}) {
            choose("Settings", pane);
            QApplication::processEvents();
            EXPECT_THAT(words(), ::testing::StartsWith(pane));
            for (const auto* const each : settings->findChildren<QWidget*>()) {
                if (each->isVisible() && (each->focusPolicy() != Qt::NoFocus ||
                                          qobject_cast<const SettingsGroup*>(each))) {
                    const auto left = each->mapTo(settings, QPoint(0, 0)).x();
                    EXPECT_GE(left, 0) << pane << toUtf8(each->accessibleName());
                    EXPECT_LE(left + each->width(), settings->width())
                        << pane << each->metaObject()->className();
                }
                if (const auto* const group = qobject_cast<const SettingsGroup*>(each);
                    group && group->isVisible()) {
                    EXPECT_LE(group->height(), group->heightForWidth(group->width())) << pane;
                }
                if (const auto* const segment = qobject_cast<const QRadioButton*>(each);
                    segment && segment->isVisible()) {
                    EXPECT_GE(segment->width() + 1, segment->sizeHint().width())
                        << toUtf8(segment->text()) << " is not cut";
                    EXPECT_GE(segment->height(), segment->sizeHint().height()) << pane;
                }
            }
        }
    }
    QApplication::setLayoutDirection(Qt::LeftToRight);
}

} // namespace
} // namespace korvex::ui
