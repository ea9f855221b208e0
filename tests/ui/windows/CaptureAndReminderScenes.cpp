#include "support/FakeReminderCenter.h"
#include "ui/windows/MainWindow.h"
#include "ui/windows/WindowScenes.h"

#include <QAbstractButton>
#include <QApplication>
#include <QTest>

// What is captured and reminded of from outside the main window.
namespace korvex::tests {

using namespace ui;

void WindowScenes::addHotkeyScenes(ScriptedHotkeySystem& hotkeys) {
    using State = app::HotkeyStatus::State;
    struct Answer {
        const char* name;
        app::HotkeyStatus status;
        std::vector<app::QuickEntryShortcut> taken;
        const char* shows;
    };
    constexpr int kPane = 2;
    for (const auto& answer :
         {Answer{"settings-shortcut-taken", {State::registered}, {{}}, "Button: Use "},
          Answer{"settings-shortcut-managed", {State::managedByDesktop}, {}, "korvex quick-entry"},
          Answer{"settings-shortcut-declined", {State::declined, 1}, {}, "Button: Ask Again"},
          Answer{"settings-shortcut-bound",
                 {.state = State::boundByDesktop, .trigger = "Meta+Space"},
                 {},
                 "Button: Change…"}}) {
        add(
            answer.name,
            [this, &hotkeys, answer] {
                hotkeys.say(answer.status, answer.taken);
                openSettings(kPane);
                QTest::qWait(50);
            },
            answer.shows);
    }
    add(
        "question-background",
        [this, &hotkeys] {
            m_workspace.quickEntry->hotkey.update({});
            hotkeys.say({State::registered});
            m_window.close();
        },
        "Button: Keep Ready");
}

void WindowScenes::addCapture(const char* name, std::function<void(CaptureScenes&)> open,
                              std::string shows) {
    add(
        name,
        [this, open = std::move(open)] {
            m_capture.open(m_window.size());
            open(m_capture);
        },
        std::move(shows));
}

void WindowScenes::addCaptureScenes() {
    using model::EntryType;
    const auto writeTodos = [](CaptureScenes& capture) {
        capture.write(EntryType::todo, "Buy milk\nRenew passport");
    };
    addCapture(
        "quick-entry-empty", [](CaptureScenes&) {}, "EditableText: Todos, one in each line");
    addCapture(
        "quick-entry",
        [writeTodos](CaptureScenes& capture) {
            writeTodos(capture);
            capture.schedule();
        },
        "Button: Schedule: Due: Tomorrow");
    addCapture(
        "quick-entry-text",
        [](CaptureScenes& capture) {
            capture.write(EntryType::text, "Trip to Lisbon, in the first week of May");
            capture.setHeading();
            capture.attach();
        },
        "Button: Remove confirmation.pdf");
    addCapture(
        "quick-entry-refused",
        [this, writeTodos](CaptureScenes& capture) {
            writeTodos(capture);
            capture.attach();
            key(Qt::Key_Return);
        },
        "AlertMessage: To attach files, add one todo at a time");
    addCapture(
        "quick-entry-schedule",
        [this, writeTodos](CaptureScenes& capture) {
            writeTodos(capture);
            capture.schedule();
            key(Qt::Key_D, Qt::ControlModifier);
            QApplication::processEvents();
        },
        "Dialog: Schedule");
    addCapture(
        "quick-entry-board",
        [this, writeTodos](CaptureScenes& capture) {
            writeTodos(capture);
            key(Qt::Key_K, Qt::ControlModifier);
            QApplication::processEvents();
        },
        "Dialog: Save to board");
    addCapture(
        "quick-entry-question",
        [this, writeTodos](CaptureScenes& capture) {
            writeTodos(capture);
            key(Qt::Key_Escape, Qt::ControlModifier);
            QApplication::processEvents();
        },
        "Button: Discard");
}

/// Where no notification can be shown. The last ones, since they show in the sidebar from then on.
void WindowScenes::addReminderScenes() {
    using schedule::AuthorizationStatus;
    constexpr int kNotificationsPane = 3;
    const auto deny = [this] { m_reminders->set(AuthorizationStatus::denied); };
    const auto miss = [this] {
        m_reminders->set(AuthorizationStatus::unavailable,
                         "No program on this computer shows notifications.");
    };
    if (m_todo) {
        add(
            "schedule-denied",
            [this, deny] {
                deny();
                choose(*m_todo);
                key(Qt::Key_D, Qt::ControlModifier);
                for (auto* const box : m_window.findChildren<QAbstractButton*>()) {
                    if (box->text() == QStringLiteral("Reminder") && !box->isChecked()) {
                        box->click();
                    }
                }
            },
            "AlertMessage: Notifications are disabled");
    }
    add(
        "settings-notifications-denied",
        [this, deny] {
            deny();
            openSettings(kNotificationsPane);
        },
        "StaticText: Disabled");
    add(
        "settings-notifications-unavailable",
        [this, miss] {
            miss();
            openSettings(kNotificationsPane);
        },
        "Button: Look Again");
    add(
        "upcoming-missed",
        [this, miss] {
            miss();
            if (m_workspace.missedReminders.get().entries().empty()) {
                const auto now = m_workspace.now();
                m_workspace.entries.createTodos(
                    {.contents = {"Take out the bins", "Ask the dentist for another day"},
                     .board = *m_inbox,
                     .now = now + -3600.0,
                     .schedule = {.reminderDate = now + -600.0}});
            }
            navigation().showPage(PageKind::upcoming);
        },
        "Heading: Reminders");
}

} // namespace korvex::tests
