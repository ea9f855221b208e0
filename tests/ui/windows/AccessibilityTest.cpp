#include "ui/kit/speech/Accessibility.h"

#include "ui/AccessibleTree.h"
#include "ui/StillStyle.h"
#include "ui/WindowFixture.h"
#include "ui/boards/BoardListing.h"
#include "ui/boards/BoardPicker.h"
#include "ui/boards/SidebarRow.h"
#include "ui/editor/RichTextEdit.h"
#include "ui/entries/BoardPage.h"
#include "ui/entries/RowRefusal.h"
#include "ui/kit/overlays/ConfirmationSheet.h"
#include "ui/kit/overlays/ErrorBanner.h"
#include "ui/overview/TodoListView.h"
#include "ui/windows/MainWindow.h"
#include "ui/windows/Sidebar.h"
#include "ui/windows/StoreErrorWindow.h"

#include <QClipboard>
#include <QComboBox>
#include <QMenu>
#include <QToolButton>

#include <gmock/gmock.h>

namespace korvex::ui {
namespace {

using ::testing::HasSubstr;
using ::testing::IsEmpty;
using tests::AccessibleTree;

class AccessibilityTest : public tests::WindowFixture {
protected:
    AccessibilityTest() {
        work = &own.boards.createBoard("Work", kNow);
        old = &own.boards.createBoard("Old", kNow);
        todo = &withFiles("Renew passport", {"form.pdf"});
        add({"Buy milk"});
        own.entries.updateSchedule(*todo, model::TodoSchedule::dueOn(base::DayNumber{20250310}),
                                   kNow);
        own.entries.completeTodo(*add({"Water plants"}).front(), kNow);
        note = &own.entries.createText(
            {.rich = richtext::RichTextSerializer::plainRichText("We land on Friday."),
             .board = *inbox,
             .now = kNow});
        own.boards.setArchived(true, *old, kNow);
        window = std::make_unique<MainWindow>(workspace, theme);
        window->resize(900, 640);
        window->show();
        EXPECT_TRUE(QTest::qWaitForWindowActive(window.get()));
        QApplication::processEvents();
        list().setStyle(&still);
    }

    BoardPage& page() { return *window->findChild<BoardPage*>(); }
    EntryListView& list() { return page().list(); }
    Navigation& navigation() { return *window->findChild<Navigation*>(); }
    AccessibleTree tree() {
        QApplication::processEvents();
        return AccessibleTree(*window);
    }
    /// What has the keyboard; the window while nothing in it has.
    QWidget* focused() const {
        auto* const widget = QApplication::focusWidget();
        return widget ? widget : window.get();
    }
    void key(int which, Qt::KeyboardModifiers modifiers = {}) {
        QTest::keyClick(focused(), static_cast<Qt::Key>(which), modifiers);
    }
    void edit(const model::Entry& entry) {
        list().setFocus();
        list().setCurrentRow(page().entries().rowOf(entry));
        key(Qt::Key_Return);
    }
    static void perform(QAccessibleInterface& object, const char* action) {
        object.actionInterface()->doAction(QString::fromUtf8(action));
    }

    tests::StillStyle still;
    model::Board* work = nullptr;
    model::Board* old = nullptr;
    model::Entry* todo = nullptr;
    model::Entry* note = nullptr;
    std::unique_ptr<MainWindow> window;
};

TEST_F(AccessibilityTest, WhateverIsInSightCanBeFoundAndNamedAndReached) {
    struct Scene {
        const char* name;
        std::function<void()> open;
        /// What is in it, among other things.
        const char* shows;
    };
    const auto press = [this](const char* name) {
        for (auto* const each : window->findChildren<QAbstractButton*>()) {
            if (each->accessibleName() == QString::fromUtf8(name)) {
                each->click();
            }
        }
    };
    const std::vector<Scene> scenes{
        {"a board", [] {}, "List: Entries"},
        {"its completed todos",
         [this] {
             list().setCurrentRow(page().entries().rowOf(EntryRowKind::completedHeading));
             list().setFocus();
             key(Qt::Key_Return);
         },
         "ListItem: Water plants"},
        {"an edited todo", [this] { edit(*todo); }, "EditableText: Todo"},
        {"a refused todo",
         [this] {
             page().startTodo();
             QApplication::clipboard()->setText(QString(10'001, QLatin1Char('x')));
             key(Qt::Key_V, Qt::ControlModifier);
         },
         "AlertMessage: Entries can contain"},
        {"an edited text", [this] { edit(*note); }, "ToolBar: Format"},
        {"a new table",
         [this] {
             edit(*note);
             key(Qt::Key_T, Qt::ControlModifier | Qt::AltModifier);
         },
         ""},
        {"a link",
         [this] {
             edit(*note);
             key(Qt::Key_K, Qt::ControlModifier | Qt::ShiftModifier);
         },
         "Dialog: "},
        {"a schedule",
         [this] {
             list().setFocus();
             list().setCurrentRow(page().entries().rowOf(*todo));
             key(Qt::Key_D, Qt::ControlModifier);
         },
         "Dialog: Schedule"},
        {"icons and colours", [&] { press("Icon of the board"); },
         "Dialog: Icon and color of the board"},
        {"a choice of boards", [this] { key(Qt::Key_K, Qt::ControlModifier); },
         "Dialog: Go to board"},
        {"a question",
         [this] {
             Q_EMIT window->findChild<Sidebar*>()->boardMenuRequested(work, {});
             auto* const menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
             for (auto* const action : menu->actions()) {
                 if (action->text() == QStringLiteral("Delete…")) {
                     action->trigger();
                 }
             }
             menu->close();
         },
         "Button: Delete board"},
        {"a name that is typed", [this] { window->findChild<Sidebar*>()->rename(*work); },
         "EditableText: Name of the board"},
        {"a name over its page", [this] { page().header().rename(*inbox); },
         "EditableText: Name of the board"},
        {"an error", [this] { window->showError(QStringLiteral("It is broken.")); },
         "AlertMessage: It is broken."},
        {"upcoming", [this] { navigation().showPage(PageKind::upcoming); }, "List: Upcoming"},
        {"completed",
         [this] {
             navigation().showPage(PageKind::completed);
             for (auto* const picker : window->findChildren<QComboBox*>()) {
                 if (picker->accessibleName() == QStringLiteral("Filter by completion date")) {
                     picker->setCurrentIndex(picker->count() - 1);
                 }
             }
         },
         "List: Completed"},
        {"search",
         [this] {
             key(Qt::Key_F, Qt::ControlModifier);
             QTest::keyClicks(focused(), QStringLiteral("a"));
         },
         "List: Results"},
        {"archived boards", [this] { navigation().showPage(PageKind::archived); }, "ListItem: Old"},
        {"an archived board", [this] { navigation().showBoard(*old); }, "This board is archived."},
    };
    for (const auto& scene : scenes) {
        window->activateWindow(); // after a menu
        EXPECT_TRUE(QTest::qWaitForWindowActive(window.get())) << scene.name;
        navigation().openBoard(*inbox);
        scene.open();
        const auto found = tree();
        EXPECT_THAT(found.problems(), IsEmpty()) << scene.name;
        EXPECT_THAT(found.text(), HasSubstr(scene.shows)) << scene.name;
        EXPECT_THAT(found.text(), HasSubstr("Window: ")) << scene.name;
        for (auto* const popover : window->findChildren<Popover*>()) {
            popover->closeNow();
        }
        QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        for (auto* const refusal : page().findChildren<RowRefusal*>()) {
            if (!refusal->isHidden()) {
                Q_EMIT refusal->discarded();
            }
        }
        page().endAnswer();
    }
}

TEST_F(AccessibilityTest, RowsTellTheirStateAndWhatCanBeDoneWithThem) {
    auto found = tree();
    auto* const row = found.find(QAccessible::ListItem, QStringLiteral("Renew passport"));
    ASSERT_NE(row, nullptr) << found.text();
    EXPECT_TRUE(row->state().checkable);
    EXPECT_FALSE(row->state().checked);
    EXPECT_EQ(row->text(QAccessible::Description),
              QStringLiteral("Open, Due: Today, 1 attachment: form.pdf"));
    EXPECT_EQ(row->actionInterface()->actionNames(),
              (QStringList{QStringLiteral("Complete"), QStringLiteral("Edit"),
                           QStringLiteral("Schedule")}));
    perform(*row, "Schedule");
    EXPECT_NE(tree().find(QAccessible::Dialog, QStringLiteral("Schedule")), nullptr);
    window->findChild<Popover*>()->closeNow();
    perform(*row, "Complete");
    EXPECT_TRUE(todo->isCompleted());
    EXPECT_TRUE(row->state().checked) << "while it is still seen";

    auto* const board = found.find(QAccessible::ListItem, QStringLiteral("Work"));
    ASSERT_NE(board, nullptr);
    EXPECT_EQ(board->text(QAccessible::Description), QStringLiteral("0 open todos"));
    EXPECT_FALSE(board->state().selected);
    perform(*board, "Open");
    EXPECT_EQ(page().board(), work);
    EXPECT_TRUE(board->state().selected);
    auto* const completed = found.find(QAccessible::ListItem, QStringLiteral("Completed"));
    ASSERT_NE(completed, nullptr);
    EXPECT_FALSE(completed->state().checkable) << "it is no box to tick";
    completed->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    EXPECT_TRUE(completed->state().selected);
    EXPECT_NE(tree().find(QAccessible::Heading, QStringLiteral("Today")), nullptr);
}

TEST_F(AccessibilityTest, AnEditorStandsInItsRowAndLeavesTheKeyboardThere) {
    edit(*todo);
    const auto found = tree();
    auto* const field = found.find(QAccessible::EditableText, QStringLiteral("Todo"));
    ASSERT_NE(field, nullptr) << found.text();
    auto* row = field->parent();
    while (row && row->role() != QAccessible::ListItem) {
        row = row->parent();
    }
    ASSERT_NE(row, nullptr);
    EXPECT_EQ(row->text(QAccessible::Name), QStringLiteral("Renew passport"));
    key(Qt::Key_Escape);
    EXPECT_EQ(QAccessible::queryAccessibleInterface(&list())->focusChild(), row);
    EXPECT_TRUE(row->state().focused);
    EXPECT_EQ(row->childCount(), 0);
}

TEST_F(AccessibilityTest, RowsStayThemselvesWhileOthersComeAndGo) {
    auto* const entries = QAccessible::queryAccessibleInterface(&list());
    auto* const milk = entries->child(1);
    ASSERT_EQ(milk->text(QAccessible::Name), QStringLiteral("Buy milk"));
    own.entries.deleteEntry(*todo);
    EXPECT_EQ(entries->indexOfChild(milk), 0);
    EXPECT_EQ(entries->child(0), milk);
    for (int i = 0; i < 300; ++i) {
        auto* const fresh = add({"for a moment"}).front();
        EXPECT_NE(entries->child(entries->childCount() - 3), nullptr);
        own.entries.deleteEntry(*fresh);
    }
    EXPECT_EQ(entries->child(0), milk) << "the rows that are gone were forgotten, and no other";
    EXPECT_TRUE(milk->isValid());
}

/// Tab leads once through what is in sight, each of it named; nothing that is hidden is on the way.
TEST_F(AccessibilityTest, TabReachesTheHeaderAndComesRound) {
    list().setFocus();
    QStringList names;
    for (int step = 0; step < 30; ++step) {
        key(Qt::Key_Tab);
        auto* const focused = QApplication::focusWidget();
        ASSERT_NE(focused, nullptr);
        EXPECT_TRUE(focused->isVisible());
        names.append(QAccessible::queryAccessibleInterface(focused)->text(QAccessible::Name));
        EXPECT_FALSE(names.last().isEmpty()) << focused->metaObject()->className();
        if (focused == &list()) {
            break;
        }
    }
    EXPECT_EQ(names.last(), QStringLiteral("Entries"));
    EXPECT_TRUE(names.contains(QStringLiteral("Icon of the board")))
        << names.join(QStringLiteral(", ")).toStdString();
    EXPECT_TRUE(names.contains(QStringLiteral("Menu of the board")));
}

TEST_F(AccessibilityTest, ShiftF10OpensTheMenuOfWhatHasTheKeyboard) {
    const auto menuTexts = [this] {
        key(Qt::Key_F10, Qt::ShiftModifier);
        QStringList texts;
        if (auto* const menu = qobject_cast<QMenu*>(QApplication::activePopupWidget())) {
            for (const auto* const action : menu->actions()) {
                texts.append(action->text());
            }
            menu->close();
        }
        QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        return texts;
    };
    list().setFocus();
    list().setCurrentRow(0);
    EXPECT_TRUE(menuTexts().contains(QStringLiteral("Schedule…"))) << "a row's";
    edit(*todo);
    EXPECT_TRUE(menuTexts().contains(QStringLiteral("Change to text"))) << "an editor's";
    key(Qt::Key_Escape);
    window->findChild<BoardListView*>()->setFocus();
    EXPECT_TRUE(menuTexts().contains(QStringLiteral("Archive"))) << "a board's";
    for (auto* const button : window->findChildren<QToolButton*>()) {
        if (button->accessibleName() == QStringLiteral("Icon of the board")) {
            button->setFocus();
        }
    }
    EXPECT_TRUE(menuTexts().contains(QStringLiteral("Edit"))) << "the page's";
    navigation().showPage(PageKind::upcoming);
    navigation().takeKeyboard();
    EXPECT_TRUE(menuTexts().contains(QStringLiteral("Go to entry")));
}

TEST_F(AccessibilityTest, AStoreErrorHasNamesForAllThatCanBeReached) {
    StoreErrorWindow error(QStringLiteral("The store is damaged."), "/tmp/Primary.store", theme);
    error.show();
    EXPECT_TRUE(QTest::qWaitForWindowActive(&error));
    EXPECT_THAT(AccessibleTree(error).problems(), IsEmpty());
}

} // namespace
} // namespace korvex::ui
