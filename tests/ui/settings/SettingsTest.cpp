#include "ui/settings/SettingsFixture.h"

#include "ui/kit/fields/TimeField.h"
#include "ui/settings/SettingsGroup.h"
#include "ui/settings/UnkeptLine.h"

#include <QAccessible>
#include <QCheckBox>
#include <QRadioButton>
#include <QSignalSpy>
#include <QWheelEvent>

#include <gmock/gmock.h>

#include <set>

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
        QTest::keyClick(&field, Qt::Key_Delete);
        QTest::keyClicks(&field, QString::fromUtf8(text));
    }

    /// A control that stands under its name begins with it, and nearer to it than to another row.
    void expectTogether(const SettingsRow& row) {
        const auto parts = row.findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly);
        const auto* const name = qobject_cast<QLabel*>(parts.front());
        for (const auto* const each : parts) {
            if (each->isVisible() && name && !qobject_cast<const QLabel*>(each) &&
                each->y() > name->geometry().bottom()) {
                EXPECT_LT(each->y() - name->geometry().bottom(), theme.space(Space::medium));
                const auto isMirrored = row.layoutDirection() == Qt::RightToLeft;
                EXPECT_EQ(isMirrored ? each->geometry().right() : each->x(),
                          isMirrored ? name->geometry().right() : name->x())
                    << toUtf8(name->text());
            }
        }
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
        std::function<bool()> theirsHold;
    };
    add({"one", "two"});
    const auto gone = base::Uuid::random();
    int distance = 0;
    const auto rowDistance = [this] {
        return list().visualRect(list().model()->index(1, 0)).top() -
               list().visualRect(list().model()->index(0, 0)).top();
    };
    const std::vector<Case> cases{
        {"launch destination", general, [&] { choose("Open with", "Upcoming"); },
         [&] { return theirs.launchDestination() == Destination::upcoming; },
         [&] { theirs.setLaunchDestination(Destination::board); },
         [&] { return shownIn("Open with") == QStringLiteral("Chosen board"); },
         [&] { return theirs.launchDestination() == Destination::board; }},
        {"launch board", general, [&] { choose("Board", "Work"); },
         [&] { return theirs.launchBoardID() == work->id(); },
         [&] { theirs.setLaunchBoardID(inbox->id()); },
         [&] { return shownIn("Board") == QStringLiteral("Inbox"); },
         [&] { return theirs.launchBoardID() == inbox->id(); }},
        {"no default board", general, [] {}, [&] { return !theirs.defaultBoardID(); }, [] {},
         [&] { return shownIn("Default board") == QStringLiteral("Inbox (fallback)"); },
         [&] { return !theirs.defaultBoardID(); }},
        {"default board", general, [&] { choose("Default board", "Work"); },
         [&] { return theirs.defaultBoardID() == work->id(); },
         [&] { theirs.setDefaultBoardID(gone); },
         [&] { return shownIn("Default board") == QStringLiteral("Inbox (fallback)"); },
         [&] { return theirs.defaultBoardID() == gone; }},
        {"reminder time", general,
         [&] {
             typeTime("7:30");
             QTest::keyClick(settings->focusWidget(), Qt::Key_Return);
         },
         [&] { return theirs.defaultReminderMinutes() == 450; },
         [&] { theirs.setDefaultReminderMinutes(600); },
         [&] { return control<TimeField>("Default reminder time").time() == QTime(10, 0); },
         [&] { return theirs.defaultReminderMinutes() == 600; }},
        {"spacing", general, [&] { control<QRadioButton>("Comfortable").click(); },
         [&] {
             distance = rowDistance();
             return theirs.boardSpacing() == AppPreferences::BoardSpacing::comfortable;
         },
         [&] { theirs.setBoardSpacing(AppPreferences::BoardSpacing::compact); },
         [&] { return control<QRadioButton>("Compact").isChecked() && rowDistance() < distance; },
         [&] { return theirs.boardSpacing() == AppPreferences::BoardSpacing::compact; }},
        {"theme", appearance, [&] { control<QRadioButton>("Dark").click(); },
         [&] {
             return theirs.appearance() == AppPreferences::Appearance::dark &&
                    theme.colors().isDark;
         },
         [&] { theirs.setAppearance(AppPreferences::Appearance::light); },
         [&] {
             return control<QRadioButton>("Light").isChecked() && !theme.colors().isDark &&
                    list().palette().color(QPalette::Text).lightnessF() < 0.5;
         },
         [&] { return theirs.appearance() == AppPreferences::Appearance::light; }},
        {"font size", appearance, [&] { choose("Font size", "24"); },
         [&] {
             distance = rowDistance();
             return theirs.fontSize() == 24;
         },
         [&] { theirs.setFontSize(10); },
         [&] {
             return shownIn("Font size") == QStringLiteral("10") &&
                    3 * rowDistance() < 2 * distance;
         },
         [&] { return theirs.fontSize() == 10; }},
        {"retention", backups, [&] { control<QRadioButton>("30").click(); },
         [&] { return theirs.automaticBackupRetention() == 30; },
         [&] { theirs.setAutomaticBackupRetention(14); },
         [&] { return control<QRadioButton>("14").isChecked(); },
         [&] { return theirs.automaticBackupRetention() == 14; }},
        {"daily backups", backups, [] {}, [] { return true; },
         [&] { theirs.setAutomaticBackupEnabled(true); },
         [&] { return control<QCheckBox>("Back up every day").isChecked(); },
         [&] { return theirs.automaticBackupEnabled(); }},
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
        EXPECT_TRUE(each.theirsHold()) << each.what << " was overwritten";
    }
}

TEST_F(SettingsTest, TheWheelTurnsNoChoice) {
    preferences.setLaunchDestination(Destination::board);
    preferences.setLaunchBoardID(work->id());
    preferences.setFontSize(16);
    std::set<std::string> tried;
    for (const auto pane : {general, appearance, quick, backups}) {
        openSettings(pane);
        settings->resize(360, 320);
        QApplication::processEvents();
        for (auto* const choice : settings->findChildren<QComboBox*>()) {
            if (!choice->isVisible()) {
                continue;
            }
            EXPECT_EQ(choice->focusPolicy(), Qt::StrongFocus) << "and the keyboard stays";
            const auto chosen = choice->currentIndex();
            for (const auto turn : {-120, 120}) {
                const QPointF middle = choice->rect().center();
                QWheelEvent event(middle, choice->mapToGlobal(middle), {}, {0, turn}, Qt::NoButton,
                                  Qt::NoModifier, Qt::NoScrollPhase, false);
                QApplication::sendEvent(choice, &event);
                EXPECT_EQ(choice->currentIndex(), chosen) << toUtf8(choice->currentText());
                EXPECT_FALSE(event.isAccepted()) << "it is for what scrolls under the choice";
            }
            tried.insert(toUtf8(choice->accessibleName()));
        }
    }
    EXPECT_THAT(tried, ::testing::ElementsAre("Board", "Default board", "Destination", "Font size",
                                              "Open with", "Settings"));
}

TEST_F(SettingsTest, ThePaneSaysWhatTheChosenStartMeans) {
    openSettings(general);
    for (const auto destination :
         {Destination::board, Destination::lastBoard, Destination::upcoming}) {
        preferences.setLaunchDestination(destination);
        QApplication::processEvents();
        EXPECT_EQ(words().find("\nOpens with the last selected board. If it was deleted, Inbox is "
                               "used.\n") != std::string::npos,
                  destination == Destination::lastBoard);
        EXPECT_EQ(words().find("\nBoard\n") != std::string::npos,
                  destination == Destination::board);
    }
}

TEST_F(SettingsTest, TheWindowOfAnotherStoreChoosesNoneOfTheUsersBoards) {
    auto another = workspace;
    another.isUsersOwn = false;
    preferences.setLaunchDestination(Destination::board);
    preferences.setLaunchBoardID(base::Uuid::random());
    preferences.setDefaultBoardID(work->id());
    window = std::make_unique<MainWindow>(another, theme);
    window->show();
    openSettings(general);
    for (const auto* const name : {"Board", "Default board"}) {
        const auto& choice = control<QComboBox>(name);
        EXPECT_FALSE(choice.isEnabled());
        EXPECT_EQ(choice.currentText(), QStringLiteral("Inbox"));
        EXPECT_THAT(toUtf8(choice.accessibleDescription()),
                    ::testing::HasSubstr("in the window of that store"));
    }
    preferences.setLaunchDestination(Destination::lastBoard);
    EXPECT_THAT(words(), ::testing::Not(::testing::HasSubstr("Opens with the last")));
}

TEST_F(SettingsTest, WhatIsTypedIsTakenHoweverTheWindowIsLeft) {
    using Leave = std::function<void()>;
    const Leave byKeys = [&] { QTest::keyClick(settings, Qt::Key_W, Qt::ControlModifier); };
    const std::vector<std::pair<const char*, Leave>> ways{{"7:15", byKeys},
                                                          {"7:20", [&] { settings->close(); }},
                                                          {"7:25", [&] { window->storeAll(); }},
                                                          {"7:30", [&] { window->close(); }},
                                                          {"7:35", [&] {
                                                               QTest::keyClick(settings, Qt::Key_Q,
                                                                               Qt::ControlModifier);
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
    for (const auto& close : {byKeys, Leave([&] { window->close(); })}) {
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

TEST_F(SettingsTest, EscapeTakesBackWhatIsTypedAndOnlyThenCloses) {
    openSettings(general);
    auto& field = control<TimeField>("Default reminder time");
    for (const auto* const typed : {"7:3", "noon", "", "7:30 PM"}) {
        typeTime(typed);
        QTest::keyClick(&field, Qt::Key_Escape);
        EXPECT_TRUE(settings->isVisible()) << typed;
        EXPECT_EQ(preferences.defaultReminderMinutes(), 540) << typed;
        EXPECT_EQ(plain(field.text()), "9:00 AM");
    }
    typeTime("7:3");
    theirs.setDefaultReminderMinutes(600);
    preferences.reload();
    QApplication::processEvents();
    EXPECT_EQ(field.text(), QStringLiteral("7:3")) << "another program does not type here";
    QTest::keyClick(&field, Qt::Key_Escape);
    EXPECT_EQ(plain(field.text()), "10:00 AM");
    QTest::keyClick(&field, Qt::Key_Escape);
    EXPECT_FALSE(settings->isVisible());
}

TEST_F(SettingsTest, TheKeyboardComesToTheListOnceAndArrowsLeadThroughIt) {
    openSettings(general);
    const auto holder = [this] { return toUtf8(settings->focusWidget()->accessibleName()); };
    const auto press = [this](Qt::Key key, Qt::KeyboardModifiers modifiers = {}) {
        QTest::keyClick(settings->focusWidget(), key, modifiers);
    };
    EXPECT_EQ(holder(), "General");
    press(Qt::Key_Tab);
    EXPECT_EQ(holder(), "Open with");
    press(Qt::Key_Backtab, Qt::ShiftModifier);
    for (const auto& [there, last, back] :
         {std::tuple(Qt::Key_End, "Backups", Qt::Key_Home),
          std::tuple(Qt::Key_PageDown, "Backups", Qt::Key_PageUp)}) {
        press(there);
        EXPECT_EQ(holder(), last);
        press(back);
        EXPECT_EQ(holder(), "General");
    }
    press(Qt::Key_Down);
    EXPECT_EQ(holder(), "Appearance");
    press(Qt::Key_Tab);
    EXPECT_TRUE(qobject_cast<QRadioButton*>(settings->focusWidget()));
    press(Qt::Key_Backtab, Qt::ShiftModifier);
    EXPECT_EQ(holder(), "Appearance");
    control<QComboBox>("Font size").setFocus();
    for (const auto isRestarted : {false, true}) {
        settings->close();
        if (isRestarted) {
            window->close();
            open();
        }
        window->activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(window.get()));
        QTest::keyClick(window.get(), Qt::Key_Comma, Qt::ControlModifier);
        ASSERT_TRUE(QTest::qWaitFor([this] {
            settings = qobject_cast<SettingsWindow*>(QApplication::activeWindow());
            return settings != nullptr;
        }));
        EXPECT_EQ(holder(), "Appearance") << isRestarted;
        EXPECT_THAT(words(), ::testing::StartsWith("Appearance"));
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
    typeTime("");
    QTest::keyClick(&field, Qt::Key_Return);
    EXPECT_THAT(words(), ::testing::HasSubstr("Enter a time."));
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

TEST_F(SettingsTest, BothWindowsSayWhileSettingsCannotBeKept) {
    std::filesystem::remove(folder / "settings.json");
    std::filesystem::create_directory(folder / "settings.json");
    openSettings(appearance);
    const auto countSaid = [&] {
        int said = 0;
        for (QWidget* const each : std::initializer_list<QWidget*>{window.get(), settings}) {
            auto& line = *each->findChild<UnkeptLine*>();
            auto& spoken = *QAccessible::queryAccessibleInterface(&line);
            EXPECT_EQ(spoken.role(), QAccessible::AlertMessage);
            said += line.isVisible() && spoken.text(QAccessible::Name)
                                            .startsWith(QStringLiteral("Settings cannot be saved"))
                        ? 1
                        : 0;
        }
        return said;
    };
    EXPECT_EQ(countSaid(), 0);
    control<QRadioButton>("Dark").click();
    EXPECT_TRUE(theme.colors().isDark);
    EXPECT_EQ(countSaid(), 2);
    QApplication::processEvents();
    const auto* const text = settings->findChild<UnkeptLine*>()->findChildren<QLabel*>().back();
    EXPECT_GE(text->mapTo(settings, QPoint()).y(), theme.space(Space::medium));
    std::filesystem::remove(folder / "settings.json");
    preferences.reload();
    EXPECT_EQ(countSaid(), 0);
}

TEST_F(SettingsTest, WhatBeginsWhileNobodyIsThereIsReadOutOnTheWayBack) {
    std::filesystem::remove(folder / "settings.json");
    std::filesystem::create_directory(folder / "settings.json");
    openSettings(appearance);
    const auto come = [](QWidget& to) {
        to.activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&to));
    };
    // What is read out names its line anew.
    const auto isSaid = [](QWidget& in) {
        auto& line = *in.findChild<UnkeptLine*>();
        const auto wasSaid = line.isVisible() && !line.accessibleName().isEmpty();
        line.setAccessibleName({});
        return wasSaid;
    };
    for (auto* const each : std::initializer_list<QWidget*>{window.get(), settings}) {
        isSaid(*each);
    }
    QWidget elsewhere;
    elsewhere.show();
    come(elsewhere);
    preferences.setFontSize(24);
    EXPECT_TRUE(settings->findChild<UnkeptLine*>()->isVisible());
    EXPECT_FALSE(isSaid(*settings) || isSaid(*window));
    come(*settings);
    EXPECT_TRUE(isSaid(*settings));
    EXPECT_FALSE(isSaid(*window));
    come(*window);
    EXPECT_TRUE(isSaid(*window));
    come(*settings);
    EXPECT_FALSE(isSaid(*settings)) << "once";
}

TEST_F(SettingsTest, StepsAreSetOnceWhenTheyPauseOrTheFieldIsLeft) {
    openSettings(general);
    auto& field = control<TimeField>("Default reminder time");
    int sets = 0;
    const auto counting = preferences.didChange().connect([&](AppPreferences::Property which) {
        sets += which == AppPreferences::Property::defaultReminderMinutes ? 1 : 0;
    });
    auto expected = preferences.defaultReminderMinutes();
    for (const auto& end : std::initializer_list<std::function<void()>>{
             [&] { EXPECT_TRUE(QTest::qWaitFor([&] { return sets > 0; })); },
             [&] { control<QComboBox>("Open with").setFocus(); },
             [&] { settings->close(); },
         }) {
        field.setFocus();
        sets = 0;
        for (int i = 0; i < 3; ++i) {
            QTest::keyClick(&field, Qt::Key_Up);
            expected += 5;
        }
        theirs.setFontSize(theirs.fontSize() == 24 ? 10 : 24);
        preferences.reload();
        QApplication::processEvents();
        EXPECT_EQ(sets, 0);
        end();
        EXPECT_EQ(sets, 1);
        EXPECT_EQ(preferences.defaultReminderMinutes(), expected);
        EXPECT_EQ(field.time().msecsSinceStartOfDay(), expected * 60'000);
    }
}

TEST_F(SettingsTest, OnlyTheUsersOwnStoreIsRemembered) {
    preferences.setLaunchDestination(Destination::board);
    preferences.setLaunchBoardID(work->id());
    preferences.setMainBoardSelectedBoardID(inbox->id());
    auto another = workspace;
    another.isUsersOwn = false;
    for (const auto* const each : std::initializer_list<const Workspace*>{&another, &workspace}) {
        window = std::make_unique<MainWindow>(*each, theme);
        EXPECT_EQ(page().board(), each == &workspace ? work : inbox) << "the board to begin with";
        navigation().openBoard(*work);
        EXPECT_EQ(preferences.mainBoardSelectedBoardID(),
                  each == &workspace ? work->id() : inbox->id());
    }
    const auto gone = base::Uuid::random();
    preferences.setLaunchDestination(Destination::lastBoard);
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
                if (const auto* const row = qobject_cast<const SettingsRow*>(each);
                    row && row->isVisible()) {
                    expectTogether(*row);
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
