#include "ui/kit/speech/Accessibility.h"

#include "ui/AccessibleTree.h"
#include "ui/StillStyle.h"
#include "ui/WindowFixture.h"
#include "ui/boards/SidebarRow.h"
#include "ui/entries/BoardPage.h"
#include "ui/kit/style/QuietStyle.h"
#include "ui/overview/TodoListView.h"
#include "ui/windows/MainWindow.h"
#include "ui/windows/Sidebar.h"
#include "ui/windows/StoreErrorWindow.h"
#include "ui/windows/StorePreparingWindow.h"
#include "ui/windows/WindowScenes.h"
#include "ui/workspace/ProgramName.h"

#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QToolButton>

#include <gmock/gmock.h>

#include <functional>

namespace korvex::ui {
namespace {

using ::testing::HasSubstr;
using ::testing::IsEmpty;
using tests::AccessibleTree;

class AccessibilityTest : public tests::WindowFixture {
protected:
    AccessibilityTest() {
        work = &own.boards.createBoard("Work", kNow);
        auto& old = own.boards.createBoard("Old", kNow);
        todo = &withFiles("Renew passport", {"form.pdf"});
        add({"Buy milk"});
        own.entries.updateSchedule(*todo, model::TodoSchedule::dueOn(base::DayNumber{20250310}),
                                   kNow);
        own.entries.completeTodo(*add({"Water plants"}).front(), kNow);
        own.entries.createText(
            {.rich = richtext::RichTextSerializer::plainRichText("We land on Friday."),
             .board = *inbox,
             .now = kNow});
        own.boards.setArchived(true, old, kNow);
        window = std::make_unique<MainWindow>(workspace, theme);
        window->resize(900, 640);
        window->show();
        EXPECT_TRUE(QTest::qWaitForWindowActive(window.get()));
        QApplication::processEvents();
        list().setStyle(&still);
        scenes.emplace(*window, workspace, theme, &quickEntry.system);
    }

    BoardPage& page() { return *window->findChild<BoardPage*>(); }
    EntryListView& list() { return page().list(); }
    Navigation& navigation() { return *window->findChild<Navigation*>(); }
    AccessibleTree tree() {
        QApplication::processEvents();
        return AccessibleTree(scenes->shown());
    }
    void key(Qt::Key which, Qt::KeyboardModifiers modifiers = {}) { scenes->key(which, modifiers); }
    void edit(const model::Entry& entry) { scenes->edit(entry); }
    static void perform(QAccessibleInterface& object, const char* action) {
        object.actionInterface()->doAction(QString::fromUtf8(action));
    }

    tests::StillStyle still;
    model::Board* work = nullptr;
    model::Entry* todo = nullptr;
    std::unique_ptr<MainWindow> window;
    std::optional<tests::WindowScenes> scenes;
};

TEST_F(AccessibilityTest, WhateverIsInSightCanBeFoundAndNamedAndReached) {
    log.expectError("Quick Entry failed: "); // what a scene is of
    for (const auto& scene : scenes->all()) {
        scenes->open(scene);
        const auto found = tree();
        EXPECT_THAT(found.problems(), IsEmpty()) << scene.name;
        EXPECT_THAT(found.text(), HasSubstr(scene.shows)) << scene.name;
        EXPECT_THAT(found.text(), HasSubstr("Window: ")) << scene.name;
        scenes->close();
    }
}

TEST_F(AccessibilityTest, NoWordOfAButtonOrALabelIsCutInTheNarrowestWindow) {
    log.expectError("Quick Entry failed: "); // what a scene is of
    const ui::InstalledStyle style(theme);
    preferences.setFontSize(app::AppPreferences::kFontSizes.back());
    window->resize(window->minimumSize().width(), 700);
    for (const auto& scene : scenes->all()) {
        scenes->open(scene);
        for (const auto* const part : scenes->shown().findChildren<QWidget*>()) {
            const auto* const button = qobject_cast<const QPushButton*>(part);
            const auto* const label = qobject_cast<const QLabel*>(part);
            const auto words = button ? button->text() : label ? label->text() : QString();
            const auto wanted = label && label->wordWrap()
                                    ? QSize(0, label->heightForWidth(label->width()))
                                    : part->minimumSizeHint();
            if (!words.isEmpty() && part->isVisible()) {
                EXPECT_EQ(part->size().expandedTo(wanted), part->size())
                    << scene.name << ": " << words.toStdString();
            }
        }
        scenes->close();
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
    EXPECT_FALSE(row->isValid());
    EXPECT_EQ(row->role(), QAccessible::ListItem) << "and not what stands before the first row";
    EXPECT_TRUE(row->rect().isEmpty());
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
    StoreErrorWindow error(QStringLiteral("Korvex"), QStringLiteral("The store is damaged."),
                           "/tmp/Primary.store", theme);
    error.show();
    EXPECT_TRUE(QTest::qWaitForWindowActive(&error));
    EXPECT_THAT(AccessibleTree(error).problems(), IsEmpty());
}

TEST_F(AccessibilityTest, WhatStandsInForTheMainWindowSaysWhichFileItIsAboutAndWhatIsDone) {
    const auto program = programName(std::filesystem::path("/tmp/notes"));
    EXPECT_EQ(program, QStringLiteral("/tmp/notes – Korvex"));
    StoreErrorWindow legacy(program, QStringLiteral("It is cut short."),
                            "/tmp/Korvex/default.store", theme, StoreErrorWindow::Which::legacy);
    StorePreparingWindow preparing(program, theme);
    const auto words = [&program](QWidget& shown) {
        shown.show();
        EXPECT_THAT(AccessibleTree(shown).problems(), IsEmpty());
        EXPECT_EQ(shown.windowTitle(), program) << "of two stores, which";
        std::string all;
        for (const auto* const label : shown.findChildren<QLabel*>()) {
            all += label->text().toStdString() + "\n";
        }
        return all;
    };
    EXPECT_THAT(words(legacy), HasSubstr("It is the store of an older Korvex, the file below. Move "
                                         "it away to start anew, or try again when the cause is "
                                         "gone.\n/tmp/Korvex/default.store\n"));
    EXPECT_THAT(words(preparing), HasSubstr("The store is being prepared\n"));
    auto& spoken = *QAccessible::queryAccessibleInterface(preparing.findChild<QLabel*>());
    EXPECT_EQ(spoken.role(), QAccessible::AlertMessage) << "it appears by itself";
    EXPECT_EQ(spoken.text(QAccessible::Name), QStringLiteral("The store is being prepared"));
    const QSignalSpy left(&preparing, &StorePreparingWindow::left);
    int leaves = 0;
    for (const auto& leave : std::initializer_list<std::function<void()>>{
             [&] { preparing.close(); },
             [&] { QTest::keyClick(&preparing, Qt::Key_Escape); },
             [&] { QTest::keyClick(&preparing, Qt::Key_Q, Qt::ControlModifier); },
         }) {
        preparing.show();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&preparing));
        leave();
        EXPECT_EQ(left.count(), ++leaves);
    }
}

} // namespace
} // namespace korvex::ui
