#include "ui/entries/BoardPage.h"

#include "ui/StillStyle.h"
#include "ui/WindowFixture.h"
#include "ui/boards/BoardPicker.h"
#include "ui/kit/ErrorBanner.h"

#include <QAction>
#include <QLineEdit>
#include <QToolButton>

#include <gmock/gmock.h>

namespace korvex::ui {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// A board's page in a window whose keys undo and redo.
class UndoInWindowTest : public tests::WindowFixture {
protected:
    UndoInWindowTest() {
        changes = own.context.didChange().connect([this](const auto&) { page.refresh(); });
        for (const auto& [keys, run] :
             {std::pair{QKeySequence(Qt::CTRL | Qt::Key_Z), &EntryActions::undo},
              std::pair{QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_Z), &EntryActions::redo}}) {
            auto* const action = new QAction(&page);
            action->setShortcut(keys);
            page.addAction(action);
            QObject::connect(action, &QAction::triggered, &page.actions(), run);
        }
        list().setStyle(&still);
        page.resize(600, 400);
        page.show();
        page.showBoard(*inbox);
        EXPECT_TRUE(QTest::qWaitForWindowActive(&page));
    }

    EntryListView& list() { return page.list(); }
    TodoTextEdit& field() { return page.findChild<TodoEditor*>()->field(); }
    bool isEditing() { return !page.findChild<TodoEditor*>()->isHidden(); }
    void select(int row) {
        list().setCurrentRow(row);
        list().setFocus();
    }
    void key(int which, Qt::KeyboardModifiers modifiers = {}) {
        QTest::keyClick(isEditing() ? static_cast<QWidget*>(&field()) : &list(),
                        static_cast<Qt::Key>(which), modifiers);
    }
    QToolButton* offer() {
        for (auto* const button : page.banner().findChildren<QToolButton*>()) {
            if (button->isVisible() && button->text() == QStringLiteral("Undo")) {
                return button;
            }
        }
        return nullptr;
    }

    tests::StillStyle still;
    BoardPage page{workspace, theme};
    base::Subscription changes;
};

TEST_F(UndoInWindowTest, DeletesAtOnceAndOffersToTakeItBack) {
    add({"a", "b", "c"});
    select(1);
    key(Qt::Key_Delete);
    EXPECT_THAT(storedTexts(*inbox), ElementsAre("a", "c"));
    ASSERT_TRUE(offer());
    EXPECT_EQ(page.banner().message(), QStringLiteral("“b” was deleted."));
    offer()->click();
    EXPECT_THAT(storedTexts(*inbox), ElementsAre("a", "b", "c"));
    EXPECT_EQ(list().currentRow(), 1) << "what came back is what is selected";
    EXPECT_FALSE(page.banner().isVisible());
}

TEST_F(UndoInWindowTest, KeysGoBackAndForwardThroughAllThatWasDone) {
    add({"a", "b", "c"});
    select(0);
    key(Qt::Key_Return);
    QTest::keyClicks(&field(), QStringLiteral("!"));
    key(Qt::Key_Escape);
    key(Qt::Key_Down, Qt::AltModifier);
    key(Qt::Key_Return, Qt::ControlModifier);
    select(0);
    key(Qt::Key_Delete);
    EXPECT_THAT(storedTexts(*inbox), ElementsAre("c"));
    for (int i = 0; i < 4; ++i) {
        key(Qt::Key_Z, Qt::ControlModifier);
    }
    EXPECT_THAT(storedTexts(*inbox), ElementsAre("a", "b", "c"));
    for (int i = 0; i < 5; ++i) {
        key(Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
    }
    EXPECT_THAT(storedTexts(*inbox), ElementsAre("c"));
}

TEST_F(UndoInWindowTest, AnEditorUndoesItsOwnWordsFirst) {
    add({"a", "b"});
    select(0);
    key(Qt::Key_Delete);
    key(Qt::Key_Return);
    ASSERT_TRUE(isEditing());
    QTest::keyClicks(&field(), QStringLiteral("x"));
    key(Qt::Key_Z, Qt::ControlModifier);
    key(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_TRUE(isEditing()) << "one too many takes nothing else back";
    EXPECT_EQ(field().toPlainText(), QStringLiteral("b"));
    EXPECT_THAT(storedTexts(*inbox), ElementsAre("b"));
    key(Qt::Key_Escape);
    key(Qt::Key_Return);
    key(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_FALSE(isEditing()) << "nothing was typed: the window's";
    EXPECT_THAT(storedTexts(*inbox), ElementsAre("a", "b"));
}

TEST_F(UndoInWindowTest, AnUndoThatIsRefusedSaysWhyAndTheRestGoesOn) {
    auto& todo = *add({"a"}).front();
    own.entries.updateTodo(todo, "b", clock.now());
    own.entries.updateTodo(todo, "c", clock.now());
    elsewhere([&](auto& program) {
        program.entries.updateTodo(theirs(program, todo), "theirs", clock.now());
    });
    log.expectError("Edit Todo undo failed");
    page.actions().undo();
    EXPECT_TRUE(page.banner().isVisible());
    EXPECT_THAT(storedTexts(*inbox), ElementsAre("theirs"));
    EXPECT_TRUE(own.undo.canUndo());
}

TEST_F(UndoInWindowTest, MovesToABoardByItsName) {
    auto& work = own.boards.createBoard("Work", clock.now());
    add({"a", "b"});
    select(0);
    key(Qt::Key_M, Qt::ControlModifier | Qt::ShiftModifier);
    auto* const picker = page.findChild<BoardPicker*>();
    ASSERT_TRUE(picker);
    auto* const search = picker->findChild<QLineEdit*>();
    QTest::keyClicks(search, QStringLiteral("wo"));
    QTest::keyClick(search, Qt::Key_Return);
    QApplication::processEvents();
    EXPECT_THAT(storedTexts(work), ElementsAre("a"));
    EXPECT_THAT(storedTexts(*inbox), ElementsAre("b"));
    ASSERT_TRUE(offer());
    offer()->click();
    EXPECT_THAT(storedTexts(work), IsEmpty());
    EXPECT_THAT(storedTexts(*inbox), ElementsAre("a", "b"));
}

TEST_F(UndoInWindowTest, ATickTakenBackByKeyWhileItIsSeenStays) {
    add({"a", "b"});
    select(0);
    key(Qt::Key_Space);
    key(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_THAT(storedTexts(*inbox), ElementsAre("a", "b"));
    runLoop.advance(2 * kTickShown);
    ASSERT_EQ(page.entries().rowCount(), 3);
    EXPECT_EQ(page.entries().text(0), QStringLiteral("a"));
    EXPECT_FALSE(page.entries().isLingering(*page.entries().entry(0)));
}

} // namespace
} // namespace korvex::ui
