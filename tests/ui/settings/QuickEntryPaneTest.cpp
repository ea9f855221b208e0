#include "ui/settings/SettingsFixture.h"

#include "ui/settings/ShortcutRecorder.h"
#include "ui/settings/ShortcutWords.h"

#include <QCheckBox>
#include <QClipboard>
#include <QKeyEvent>
#include <QRadioButton>
#include <QSignalSpy>
#include <QTextLayout>

#include <gmock/gmock.h>

#include <fstream>

namespace korvex::ui {
namespace {

using app::QuickEntryShortcut;
using ::testing::HasSubstr;
using ::testing::Not;
using State = app::HotkeyStatus::State;
using WhenClosed = app::AppPreferences::WhenClosed;

/// As an X server numbers them.
constexpr quint32 kEscapeKey = 9;
constexpr quint32 kNKey = 57;
constexpr quint32 kSpaceKey = 65;
constexpr quint32 kKeyOfNoShortcut = 200;

class QuickEntryPaneTest : public tests::SettingsFixture {
protected:
    void SetUp() override {
        quickEntry.hotkey.follow(preferences);
        open();
        openSettings(quick);
    }

    ShortcutRecorder& recorder() { return *settings->findChild<ShortcutRecorder*>(); }
    std::string shown() { return toUtf8(recorder().text()); }
    /// As the window system tells of a key: first whether it is a command of the window.
    void press(Qt::Key key, Qt::KeyboardModifiers held, quint32 scanCode) {
        for (const auto type : {QEvent::ShortcutOverride, QEvent::KeyPress, QEvent::KeyRelease}) {
            auto* const target = settings->focusWidget();
            QKeyEvent event(type, key, held, scanCode, 0, 0);
            QApplication::sendEvent(target ? target : settings, &event);
        }
        QApplication::processEvents();
    }
    void pressButton(const char* name) {
        SettingsFixture::press(name);
        QApplication::processEvents();
    }
    /// Those in sight.
    std::vector<std::string> offers() {
        std::vector<std::string> names;
        for (const auto* const button : settings->findChildren<QPushButton*>()) {
            const auto name = toUtf8(button->accessibleName());
            if (button->isVisible() && name.starts_with("Use ")) {
                names.push_back(name);
            }
        }
        return names;
    }
    void say(const app::HotkeyStatus& status, std::vector<QuickEntryShortcut> taken = {}) {
        quickEntry.system.say(status, std::move(taken));
        QApplication::processEvents();
    }
};

TEST_F(QuickEntryPaneTest, KeysAreRecordedAndRegistered) {
    EXPECT_EQ(shown(), "⌥ Space");
    EXPECT_EQ(recorder().accessibleName(), QStringLiteral("Shortcut: Alt+Space"));
    EXPECT_THAT(words(), HasSubstr("Press to record a shortcut. Include Command, Option or "
                                   "Control. Escape cancels."));
    EXPECT_THAT(words(), HasSubstr("Alt+Space opens Quick Entry."));
    EXPECT_THAT(words(), HasSubstr("⌘ Command is Ctrl, ⌥ Option is Alt, ⌃ Control is Super"));
    recorder().click();
    EXPECT_EQ(quickEntry.system.wanted, std::nullopt) << "it must not open anything now";
    press(Qt::Key_Control, Qt::ControlModifier, 37);
    press(Qt::Key_N, Qt::ControlModifier | Qt::AltModifier, kNKey);
    EXPECT_FALSE(recorder().isRecording());
    EXPECT_EQ(shown(), "⌥⌘N");
    const QuickEntryShortcut recorded{45,
                                      QuickEntryShortcut::kCommand | QuickEntryShortcut::kOption};
    EXPECT_EQ(preferences.quickEntryShortcut(), recorded);
    EXPECT_EQ(quickEntry.hotkey.activeShortcut(), recorded);
    EXPECT_EQ(quickEntry.system.wanted, recorded);

    quickEntry.system.keys.letterOf45 = "т";
    quickEntry.system.keys.didChange().emit();
    EXPECT_EQ(shown(), "⌥⌘Т") << "the layout is another";
    pressButton("Reset");
    EXPECT_EQ(shown(), "⌥ Space");
    EXPECT_EQ(quickEntry.hotkey.activeShortcut(), QuickEntryShortcut());
}

TEST_F(QuickEntryPaneTest, WhatIsNoShortcutIsRefusedAndEscapeCancels) {
    recorder().click();
    press(Qt::Key_N, Qt::ShiftModifier, kNKey);
    EXPECT_THAT(words(), HasSubstr("Include Command, Option or Control with a key."));
    recorder().click();
    recorder().click();
    EXPECT_THAT(words(), Not(HasSubstr("with a key.")));
    press(Qt::Key_LaunchA, Qt::ControlModifier, kKeyOfNoShortcut);
    EXPECT_THAT(words(), HasSubstr("Include Command, Option or Control with a key."));
    EXPECT_TRUE(recorder().isRecording());
    press(Qt::Key_Escape, {}, kEscapeKey);
    EXPECT_FALSE(recorder().isRecording());
    EXPECT_TRUE(settings->isVisible()) << "that Escape was for the recorder";
    EXPECT_EQ(settings->focusWidget(), &recorder());
    EXPECT_THAT(words(), Not(HasSubstr("with a key.")));
    EXPECT_EQ(quickEntry.hotkey.activeShortcut(), QuickEntryShortcut());

    recorder().click();
    press(Qt::Key_N, Qt::ControlModifier, kNKey); // a new todo, elsewhere
    EXPECT_THAT(words(), HasSubstr("⌘N (Ctrl+N) is a command in the windows of Korvex."));
    EXPECT_EQ(preferences.quickEntryShortcut(), QuickEntryShortcut());
    recorder().click();
    control<QComboBox>("Destination").setFocus();
    EXPECT_FALSE(recorder().isRecording()) << "the keyboard has gone on";
    EXPECT_EQ(quickEntry.system.wanted, QuickEntryShortcut());
    recorder().click();
    settings->close();
    EXPECT_EQ(quickEntry.system.wanted, QuickEntryShortcut());
}

TEST_F(QuickEntryPaneTest, OneThatIsTakenHasFreeOnesBesideIt) {
    const auto& alternatives = QuickEntryShortcut::alternatives();
    say({State::registered}, {{}, alternatives[0]});
    EXPECT_THAT(words(), HasSubstr("⌥ Space (Alt+Space) is taken, as a rule by the window "
                                   "manager for the menu of windows."));
    EXPECT_EQ(offers(), (std::vector<std::string>{"Use Ctrl+Alt+N", "Use Super+Shift+Space",
                                                  "Use Ctrl+Shift+Space"}));
    pressButton("Use Ctrl+Alt+N");
    EXPECT_EQ(quickEntry.hotkey.activeShortcut(), alternatives[1]);
    EXPECT_EQ(shown(), "⌥⌘N");
    EXPECT_TRUE(offers().empty());
    EXPECT_THAT(words(), Not(HasSubstr("taken")));
    EXPECT_EQ(settings->focusWidget(), &recorder());

    // It is taken by another program, which nobody tells to give it up; nor that it does.
    say({State::registered}, {alternatives[1]});
    EXPECT_THAT(words(), HasSubstr("taken by the desktop or by another program"));
    quickEntry.system.taken.clear();
    settings->showPane(general);
    settings->showPane(quick);
    QApplication::processEvents();
    EXPECT_EQ(quickEntry.hotkey.activeShortcut(), alternatives[1]);
    EXPECT_TRUE(offers().empty());
}

TEST_F(QuickEntryPaneTest, OneThatWorksStaysUntilAnotherDoes) {
    const auto& taken = QuickEntryShortcut::alternatives()[1];
    quickEntry.system.taken = {taken};
    recorder().click();
    press(Qt::Key_N, Qt::ControlModifier | Qt::AltModifier, kNKey);
    EXPECT_THAT(words(), HasSubstr("⌥⌘N (Ctrl+Alt+N) is taken by the desktop or by another "
                                   "program; the system does not say which. Alt+Space stays."));
    EXPECT_EQ(preferences.quickEntryShortcut(), QuickEntryShortcut());
    EXPECT_EQ(quickEntry.hotkey.activeShortcut(), QuickEntryShortcut());
    EXPECT_EQ(quickEntry.system.wanted, QuickEntryShortcut());
    EXPECT_TRUE(offers().empty()) << "nothing is lost";
    quickEntry.system.taken = {QuickEntryShortcut()};
    recorder().click();
    press(Qt::Key_N, Qt::ControlModifier | Qt::AltModifier, kNKey);
    EXPECT_EQ(quickEntry.hotkey.activeShortcut(), taken);
    EXPECT_THAT(words(), Not(HasSubstr("stays.")));
    pressButton("Reset");
    EXPECT_EQ(quickEntry.hotkey.activeShortcut(), taken);
    EXPECT_THAT(words(), HasSubstr("for the menu of windows. Ctrl+Alt+N stays."));

    say({State::registered}, {QuickEntryShortcut(), taken});
    EXPECT_THAT(words(), Not(HasSubstr("stays."))) << "somebody else has it now";
    pressButton("Reset");
    EXPECT_EQ(preferences.quickEntryShortcut(), QuickEntryShortcut())
        << "none works, and this one is waited for";
}

TEST_F(QuickEntryPaneTest, KeysAreCalledAsOnThisKeyboardAndNeverTorn) {
    constexpr auto kCommand = QuickEntryShortcut::kCommand;
    constexpr auto kOption = QuickEntryShortcut::kOption;
    const auto& layout = quickEntry.system.keys;
    const auto names = [&](const QuickEntryShortcut& shortcut) {
        return toUtf8(keyNames(shortcut, layout));
    };
    EXPECT_EQ(names({48, kOption}), "Alt+Tab");
    EXPECT_EQ(names({117, kCommand | kOption}), "Ctrl+Alt+Delete");
    EXPECT_EQ(names({115, kCommand}), "Ctrl+Home");
    EXPECT_EQ(names({116, kCommand}), "Ctrl+Page Up");
    EXPECT_EQ(names({45, kCommand}), "Ctrl+N");
    EXPECT_EQ(plain(shortcutWords({48, kOption}, layout)), "⌥⇥ (Alt+Tab)");
    for (const auto& each : QuickEntryShortcut::alternatives()) {
        const auto label = shortcutWords({116, each.modifiers}, layout);
        QTextLayout layOut(breakable(label));
        layOut.beginLayout();
        for (auto line = layOut.createLine(); line.isValid(); line = layOut.createLine()) {
            line.setLineWidth(1);
            const auto text =
                plain(layOut.text().mid(line.textStart(), line.textLength()).trimmed());
            EXPECT_THAT(text,
                        ::testing::AnyOf(::testing::StartsWith("⌘"), ::testing::StartsWith("⌥"),
                                         ::testing::StartsWith("⌃"), ::testing::StartsWith("⇧"),
                                         ::testing::EndsWith("+"), ::testing::EndsWith(")")))
                << toUtf8(label);
        }
        layOut.endLayout();
    }
}

TEST_F(QuickEntryPaneTest, WhereTheDesktopHasTheKeysTheyAreOnlyTold) {
    say({.state = State::boundByDesktop, .trigger = "Meta+Space"});
    EXPECT_FALSE(recorder().isVisible());
    EXPECT_THAT(words(), HasSubstr("Meta+Space"));
    pressButton("Change…");
    EXPECT_EQ(quickEntry.system.settingsOpened, 1);
    say({State::asked});
    EXPECT_THAT(words(), HasSubstr("Your desktop has been asked"));
    say({State::declined, 1});
    EXPECT_THAT(words(), HasSubstr("the answer was no."));
    settings->showPane(general);
    settings->showPane(quick);
    QApplication::processEvents();
    EXPECT_TRUE(quickEntry.hotkey.issue()) << "nobody is asked again for a look";
    quickEntry.system.status = {.state = State::boundByDesktop, .trigger = "Meta+N"};
    pressButton("Ask Again");
    EXPECT_THAT(words(), HasSubstr("Meta+N"));

    quickEntry.setup.desktop = app::DesktopKind::xfce;
    say({State::managedByDesktop});
    EXPECT_THAT(words(), HasSubstr("korvex quick-entry\n"));
    EXPECT_THAT(words(), HasSubstr("Open Settings, Keyboard, Application Shortcuts"));
    pressButton("Copy");
    EXPECT_EQ(QApplication::clipboard()->text(), QStringLiteral("korvex quick-entry"));
    EXPECT_FALSE(recorder().isVisible());
}

TEST_F(QuickEntryPaneTest, CapturesGoWhereTheUserWants) {
    EXPECT_THAT(words(), HasSubstr("Last Used Board uses Default Board until your first capture."));
    EXPECT_EQ(control<QComboBox>("Destination").currentText(), QStringLiteral("Last Used Board"));
    choose("Destination", "Work");
    EXPECT_EQ(preferences.quickEntryFixedBoardID(), work->id());
    choose("Destination", "Last Used Board");
    EXPECT_EQ(preferences.quickEntryFixedBoardID(), std::nullopt);
    preferences.setQuickEntryFixedBoardID(base::Uuid::random());
    QApplication::processEvents();
    EXPECT_EQ(control<QComboBox>("Destination").currentText(),
              QStringLiteral("Last Used Board (board is gone)"));
    control<QRadioButton>("Text").click();
    EXPECT_EQ(preferences.quickEntryDefaultType(), model::EntryType::text);
}

TEST_F(QuickEntryPaneTest, TheProgramIsReadyAsTheUserWants) {
    auto& stays = control<QCheckBox>("Keep Quick Entry ready when the window is closed");
    auto& starts = control<QCheckBox>("Start Korvex when you log in");
    say({State::managedByDesktop});
    EXPECT_FALSE(stays.isChecked()) << "nobody is asked, and closing the window ends it";
    say({State::registered});
    EXPECT_TRUE(stays.isChecked());
    EXPECT_THAT(words(), HasSubstr("Ctrl+Q there ends it."));
    stays.click();
    EXPECT_EQ(preferences.whenClosed(), WhenClosed::ends);
    say({State::registered}, {{}});
    EXPECT_THAT(words(), HasSubstr("Only while the shortcut works"));
    say({State::unavailable, app::HotkeyStatus::kNoSuchKey});
    EXPECT_THAT(words(), HasSubstr("This keyboard has no key or modifier for ⌥ Space"));
    say({State::managedByDesktop});
    EXPECT_THAT(words(), HasSubstr("It waits for the keys that your desktop has for it."));
    EXPECT_TRUE(quickEntry.hotkey.mayBeReady());
    EXPECT_FALSE(starts.isChecked());
    starts.click();
    EXPECT_TRUE(quickEntry.setup.autostart.isOn());
    starts.click();
    EXPECT_FALSE(quickEntry.setup.autostart.isOn());
    std::filesystem::remove(folder / "autostart");
    std::ofstream(folder / "autostart") << "in the way";
    starts.click();
    EXPECT_FALSE(starts.isChecked());
    EXPECT_THAT(words(), HasSubstr("This could not be changed"));
}

TEST_F(QuickEntryPaneTest, ClosingTheWindowAsksOnceWhetherItStays) {
    const QSignalSpy ends(window.get(), &MainWindow::quitAccepted);
    settings->close();
    window->close();
    ASSERT_TRUE(window->isVisible());
    ASSERT_TRUE(sheetOver(*window));
    EXPECT_THAT(plain(sheetOver(*window)->accessibleName()), HasSubstr("⌥ Space (Alt+Space)"));
    const auto answer = [this](const char* button) {
        for (auto* const each : sheetOver(*window)->findChildren<QPushButton*>()) {
            if (each->text() == QString::fromUtf8(button)) {
                each->click();
                return;
            }
        }
        FAIL() << button;
    };
    QTest::keyClick(sheetOver(*window), Qt::Key_Escape);
    EXPECT_EQ(preferences.whenClosed(), WhenClosed::asks) << "that is no answer";
    window->close();
    answer("Keep Ready");
    EXPECT_FALSE(window->isVisible());
    EXPECT_EQ(preferences.whenClosed(), WhenClosed::staysReady);
    window->show();
    window->close();
    EXPECT_FALSE(window->isVisible());
    EXPECT_EQ(ends.count(), 0);
    window->show();
    window->quit();
    EXPECT_FALSE(window->isVisible());
    EXPECT_EQ(ends.count(), 1);

    preferences.setWhenClosed(WhenClosed::asks);
    window->show();
    window->close();
    answer("Quit");
    EXPECT_FALSE(window->isVisible());
    EXPECT_EQ(preferences.whenClosed(), WhenClosed::ends);
    EXPECT_EQ(ends.count(), 2);
    preferences.setWhenClosed(WhenClosed::asks);
    say({State::registered}, {{}});
    window->show();
    window->close();
    EXPECT_FALSE(window->isVisible()) << "no key would bring it back";
}

} // namespace
} // namespace korvex::ui
