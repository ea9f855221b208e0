#include "ui/windows/WindowScenes.h"

#include "services/AttachmentList.h"
#include "services/EntryOrder.h"
#include "support/FakeReminderCenter.h"
#include "ui/editor/FormatBar.h"
#include "ui/editor/RichTextEdit.h"
#include "ui/entries/BoardPage.h"
#include "ui/entries/RowRefusal.h"
#include "ui/kit/controls/SearchField.h"
#include "ui/kit/overlays/Popover.h"
#include "ui/settings/SettingsLabel.h"
#include "ui/settings/SettingsWindow.h"
#include "ui/windows/MainWindow.h"
#include "ui/windows/Sidebar.h"

#include <QAbstractButton>
#include <QApplication>
#include <QClipboard>
#include <QComboBox>
#include <QMenu>
#include <QTest>

#include <algorithm>
#include <stdexcept>

namespace korvex::tests {

using namespace ui;

namespace {

/// A scene that does not find what it is of would be a picture of something else.
template <typename Thing>
Thing& found(Thing* thing, const char* name) {
    if (!thing) {
        throw std::logic_error(name);
    }
    return *thing;
}

} // namespace

WindowScenes::WindowScenes(MainWindow& window, const Workspace& workspace, const Theme& theme,
                           ScriptedHotkeySystem* hotkeys)
    : m_window(window),
      m_workspace(workspace),
      m_capture(workspace, theme),
      m_reminders(dynamic_cast<FakeReminderCenter*>(&workspace.reminders)),
      m_inbox(workspace.boards.inboxBoard()) {
    for (auto* const board : workspace.boards.boards()) {
        auto*& found = board->isArchived() ? m_archived : m_other;
        found = found || board == m_inbox ? found : board;
    }
    for (auto* const entry : services::activeEntries(*m_inbox)) {
        auto*& found = entry->isTodo() ? m_todo : m_text;
        found = found ? found : entry;
        const auto files = services::attachmentsOf(*entry).attachments;
        m_pictured =
            !files.empty() && files.front().filename.ends_with(".png") ? entry : m_pictured;
    }
    addBoardScenes();
    addEditingScenes();
    addPanelScenes();
    addMenuScenes();
    addPageScenes();
    addSettingsScenes();
    addCaptureScenes();
    if (hotkeys) {
        addHotkeyScenes(*hotkeys);
    }
    if (m_reminders) {
        addReminderScenes();
    }
}

void WindowScenes::add(const char* name, std::function<void()> open, std::string shows) {
    m_scenes.push_back({name, std::move(open), std::move(shows)});
}

void WindowScenes::addBoardScenes() {
    add(
        "board", [] {}, "List: Entries");
    if (!services::completedTodos(*m_inbox).empty()) {
        add(
            "board-completed",
            [this] {
                page().list().setCurrentRow(page().entries().rowOf(EntryRowKind::completedHeading));
                page().list().setFocus();
                key(Qt::Key_Return);
            },
            "ListItem: " + services::completedTodos(*m_inbox).front()->content());
    }
    add(
        "board-name",
        [this] { m_window.findChild<Sidebar*>()->rename(m_other ? *m_other : *m_inbox); },
        "EditableText: Name of the board");
    add(
        "board-name-over-page", [this] { page().header().rename(*m_inbox); },
        "EditableText: Name of the board");
    add(
        "board-name-refused",
        [this] {
            page().header().rename(*m_inbox);
            type(" ");
            key(Qt::Key_Return);
        },
        "AlertMessage: Board names");
    add(
        "error", [this] { m_window.showError(QStringLiteral("It is broken.")); },
        "AlertMessage: It is broken.");
    add(
        "undo",
        [this] { // one more than there are: all others stay
            const auto added = m_workspace.entries.createTodos(
                {.contents = {"Book a table"},
                 .board = *m_inbox,
                 .after = m_todo ? std::optional(m_todo->id()) : std::nullopt,
                 .now = m_workspace.clock.now()});
            page().refresh();
            choose(*added.front());
            key(Qt::Key_Delete);
        },
        "Button: Undo");
    add(
        "notice",
        [this] { m_window.showNotices({"The store was damaged. What could be read was saved."}); },
        "AlertMessage: The store was damaged.");
}

void WindowScenes::addEditingScenes() {
    add(
        "todo-new", [this] { page().startTodo(); }, "EditableText: Todo");
    add(
        "todo-refused",
        [this] {
            page().startTodo();
            QApplication::clipboard()->setText(QString(10'001, QLatin1Char('x')));
            key(Qt::Key_V, Qt::ControlModifier);
        },
        "AlertMessage: Entries can contain");
    if (m_todo) {
        add(
            "todo-edited", [this] { edit(*m_todo); }, "EditableText: Todo");
    }
    add(
        "text-new", [this] { page().startText(); }, "ToolBar: Format");
    if (m_text) {
        add(
            "text-selected", [this] { choose(*m_text); }, "List: Entries");
        add(
            "text-edited", [this] { edit(*m_text); }, "ToolBar: Format");
        add(
            "text-table",
            [this] {
                edit(*m_text);
                // The bar of a narrow window keeps the button behind "More".
                auto& editor = found(m_window.findChild<RichTextEdit*>(), "Editor");
                editor.perform({{richtext::RichTextAction::Kind::table}});
            },
            "Button: Insert table");
        add(
            "text-link",
            [this] {
                edit(*m_text);
                key(Qt::Key_K, Qt::ControlModifier | Qt::ShiftModifier);
            },
            "Dialog: ");
        add(
            "text-language",
            [this] {
                edit(*m_text);
                key(Qt::Key_End, Qt::ControlModifier);
                auto& editor = found(m_window.findChild<RichTextEdit*>(), "Editor");
                if (!editor.formatState().isCodeBlock) {
                    editor.perform({{richtext::RichTextAction::Kind::codeBlock}});
                }
                barAction("Language").trigger();
            },
            "List: Languages");
    }
}

void WindowScenes::addPanelScenes() {
    if (m_todo) {
        add(
            "schedule",
            [this] {
                choose(*m_todo);
                key(Qt::Key_D, Qt::ControlModifier);
            },
            "Dialog: Schedule");
        add(
            "schedule-refused",
            [this] {
                choose(*m_todo);
                key(Qt::Key_D, Qt::ControlModifier);
                focus("Due day");
                key(Qt::Key_Tab);
                key(Qt::Key_Space);
                type("11:00 PM");
            },
            "AlertMessage: Choose a start time");
        add(
            "month",
            [this] {
                choose(*m_todo);
                key(Qt::Key_D, Qt::ControlModifier);
                QApplication::processEvents(); // what is filled in finds its place
                focus("Due day");
                key(Qt::Key_Down, Qt::AltModifier);
            },
            "Button: Next month");
    }
    if (m_pictured) {
        add(
            "preview",
            [this] {
                choose(*m_pictured);
                key(Qt::Key_Right);
                key(Qt::Key_Space);
                const auto name = QStringLiteral("attachmentPreview"); // decoded on a thread
                static_cast<void>(
                    QTest::qWaitFor([&] { return m_window.findChild<QWidget*>(name) != nullptr; }));
            },
            "Dialog: ");
    }
    add(
        "icons", [this] { press("Icon of the board"); }, "Dialog: Icon and color of the board");
    add(
        "board-choice", [this] { key(Qt::Key_K, Qt::ControlModifier); }, "Dialog: Go to board");
    if (m_other) {
        add(
            "question",
            [this] {
                Q_EMIT m_window.findChild<Sidebar*>()->boardMenuRequested(m_other, {});
                chooseInMenu("Delete…");
            },
            "Button: Delete board");
    }
}

void WindowScenes::addMenuScenes() {
    add("menu-page", [this] { press("Menu of the board"); });
    add("menu-board", [this] {
        auto& sidebar = *m_window.findChild<Sidebar*>();
        Q_EMIT sidebar.boardMenuRequested(m_other ? m_other : m_inbox,
                                          sidebar.mapToGlobal(sidebar.rect().center()));
    });
    if (m_todo) {
        add("menu-entry", [this] {
            choose(*m_todo);
            key(Qt::Key_F10, Qt::ShiftModifier);
        });
    }
    if (m_text) {
        addBarScenes();
    }
}

/// Of the bar over the text; in a narrow window they open from behind "More".
void WindowScenes::addBarScenes() {
    for (const auto& [scene, control] :
         {std::pair("menu-headings", "Heading"), std::pair("menu-lists", "Lists")}) {
        add(scene, [this, name = control] {
            edit(*m_text);
            const auto& bar = found(m_window.findChild<FormatBar*>(), "Format");
            barAction(name).menu()->popup(bar.mapToGlobal(bar.rect().bottomLeft()));
        });
    }
}

QAction& WindowScenes::barAction(const char* name) const {
    const auto actions = found(m_window.findChild<FormatBar*>(), name).actions();
    const auto action = std::find_if(actions.begin(), actions.end(), [&](const QAction* each) {
        return each->toolTip().startsWith(QString::fromUtf8(name));
    });
    return found(action == actions.end() ? nullptr : *action, name);
}

void WindowScenes::addPageScenes() {
    add(
        "upcoming", [this] { navigation().showPage(PageKind::upcoming); }, "List: Upcoming");
    add(
        "completed", [this] { navigation().showPage(PageKind::completed); }, "List: Completed");
    add(
        "completed-range",
        [this] {
            navigation().showPage(PageKind::completed);
            for (auto* const picker : m_window.findChildren<QComboBox*>()) {
                if (picker->accessibleName() == QStringLiteral("Filter by completion date")) {
                    picker->setCurrentIndex(picker->count() - 1);
                }
            }
        },
        "List: Completed");
    add("completed-choice", [this] {
        navigation().showPage(PageKind::completed);
        focus("Filter by due date");
        key(Qt::Key_Space);
    });
    add(
        "search",
        [this] {
            key(Qt::Key_F, Qt::ControlModifier);
            type("a");
        },
        "List: Results");
    add("search-nothing", [this] {
        key(Qt::Key_F, Qt::ControlModifier);
        type("zzz");
    });
    if (m_archived) {
        add(
            "archived", [this] { navigation().showPage(PageKind::archived); },
            "List: Archived boards");
        add(
            "board-archived", [this] { navigation().showBoard(*m_archived); },
            "This board is archived.");
    }
    add(
        "sidebar",
        [this] {
            auto& sidebar = *m_window.findChild<Sidebar*>();
            if (!sidebar.isVisible()) {
                key(Qt::Key_F9); // over the page of a narrow window
            }
            sidebar.takeKeyboard();
        },
        "List: Boards");
}

void WindowScenes::addSettingsScenes() {
    int pane = 0;
    for (const auto& [name, shows] :
         {std::pair("settings-general", "ComboBox: Last board"),
          std::pair("settings-appearance", "ComboBox: 13"),
          std::pair("settings-quick-entry", "Button: Shortcut: Alt+Space"),
          std::pair("settings-notifications", "StaticText: Notifications"),
          std::pair("settings-backups", "CheckBox: Back up every day")}) {
        add(
            name, [this, index = pane++] { openSettings(index); }, shows);
    }
}

void WindowScenes::openSettings(int pane) {
    key(Qt::Key_Comma, Qt::ControlModifier);
    auto& window = found(settings(), "Settings");
    window.showPane(pane);
    window.resize(window.size().boundedTo(m_window.size()));
    static_cast<void>(QTest::qWaitForWindowActive(&window));
}

void WindowScenes::open(const std::string& name) {
    const auto scene = std::find_if(m_scenes.begin(), m_scenes.end(),
                                    [&](const Scene& each) { return each.name == name; });
    open(found(scene == m_scenes.end() ? nullptr : &*scene, name.c_str()));
}

void WindowScenes::open(const Scene& scene) {
    m_window.activateWindow(); // after a menu
    static_cast<void>(QTest::qWaitForWindowActive(&m_window));
    if (m_other) {
        navigation().openBoard(*m_other); // what was opened out on the Inbox closes
    }
    navigation().openBoard(*m_inbox);
    scene.open();
    QApplication::processEvents();
}

bool WindowScenes::isSettled() {
    const auto labels = shown().findChildren<SettingsLabel*>();
    return std::none_of(labels.begin(), labels.end(), [](const SettingsLabel* each) {
        return each->isVisible() && each->text().endsWith(QStringLiteral("ing…"));
    });
}

void WindowScenes::close() {
    m_capture.close();
    if (auto* const open = settings()) {
        open->close();
        m_window.activateWindow();
    }
    while (auto* const menu = QApplication::activePopupWidget()) {
        menu->close();
    }
    for (auto* const popover : m_window.findChildren<Popover*>()) {
        popover->closeNow();
    }
    if (auto* const reset = widget<QAbstractButton>("Reset the filter")) {
        reset->click();
    }
    QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    for (auto* const refusal : page().findChildren<RowRefusal*>()) {
        if (!refusal->isHidden()) {
            Q_EMIT refusal->discarded();
        }
    }
    m_window.findChild<Sidebar*>()->searchField().clear();
    page().endAnswer();
    if (auto* const notice = widget<QAbstractButton>("Close this message")) {
        notice->click();
    }
    if (m_reminders) {
        m_reminders->set(FakeReminderCenter::Status());
    }
    key(Qt::Key_Escape); // the sidebar that lies over a narrow page
}

void WindowScenes::edit(const model::Entry& entry) {
    choose(entry);
    key(Qt::Key_Return);
}

void WindowScenes::key(Qt::Key which, Qt::KeyboardModifiers modifiers) {
    auto* const focused = QApplication::focusWidget();
    QTest::keyClick(focused ? focused : &m_window, which, modifiers);
}

SettingsWindow* WindowScenes::settings() {
    for (auto* const window : QApplication::topLevelWidgets()) {
        if (auto* const found = qobject_cast<SettingsWindow*>(window)) {
            return found;
        }
    }
    return nullptr;
}

QWidget& WindowScenes::shown() {
    if (m_capture.panel().isVisible()) {
        return m_capture.panel();
    }
    auto* const open = settings();
    return open && open->isVisible() ? static_cast<QWidget&>(*open) : m_window;
}

BoardPage& WindowScenes::page() const {
    return *m_window.findChild<BoardPage*>();
}

Navigation& WindowScenes::navigation() const {
    return *m_window.findChild<Navigation*>();
}

void WindowScenes::choose(const model::Entry& entry) {
    page().list().setFocus();
    page().list().setCurrentRow(page().entries().rowOf(entry));
}

void WindowScenes::type(const char* text) {
    if (auto* const focused = QApplication::focusWidget()) {
        QTest::keyClicks(focused, QString::fromUtf8(text));
    }
}

template <typename Kind>
Kind* WindowScenes::widget(const char* name) const {
    const auto all = m_window.findChildren<Kind*>();
    const auto found = std::find_if(all.begin(), all.end(), [&](const Kind* each) {
        return each->isVisible() && each->accessibleName() == QString::fromUtf8(name);
    });
    return found == all.end() ? nullptr : *found;
}

void WindowScenes::press(const char* button) {
    found(widget<QAbstractButton>(button), button).click();
}

void WindowScenes::focus(const char* field) {
    found(widget<QWidget>(field), field).setFocus();
}

void WindowScenes::chooseInMenu(const char* text) {
    auto& menu = found(qobject_cast<QMenu*>(QApplication::activePopupWidget()), text);
    const auto actions = menu.actions();
    const auto action = std::find_if(actions.begin(), actions.end(), [&](const QAction* each) {
        return each->text() == QString::fromUtf8(text);
    });
    found(action == actions.end() ? nullptr : *action, text).trigger();
    menu.close();
}

} // namespace korvex::tests
