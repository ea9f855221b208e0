#include "ui/boards/BoardPicker.h"

#include "ui/WindowFixture.h"
#include "ui/kit/words/FuzzyMatch.h"

#include <QLineEdit>
#include <QListView>
#include <QSignalSpy>

#include <gmock/gmock.h>

namespace korvex::ui {
namespace {

using ::testing::ElementsAre;

TEST(FuzzyMatch, NearerNamesHaveASmallerDistance) {
    const struct {
        const char* typed;
        /// From near to far; each strictly nearer than the next.
        std::vector<const char*> names;
    } cases[] = {
        {"work", {"work", "workshop", "home work", "patchwork"}},
        {"tl", {"tl", "tlc", "trip to lisbon", "title"}},
        {"tri li", {"trip lisbon", "a trip to lisbon"}},
        {"ho", {"ho", "home", "my home", "photos"}},
    };
    for (const auto& [typed, names] : cases) {
        int nearest = -1;
        for (const auto* const name : names) {
            const auto distance = fuzzyDistance(QString::fromUtf8(name), QString::fromUtf8(typed));
            ASSERT_TRUE(distance) << typed << " in " << name;
            EXPECT_GT(*distance, nearest) << typed << " in " << name;
            nearest = *distance;
        }
    }
}

TEST(FuzzyMatch, NamesWithoutTheLettersInOrderAreNotFound) {
    const std::pair<const char*, const char*> cases[] = {
        {"work", "krow"}, {"xs", "x"}, {"a b", "ab"}, {"é", "e"}, {"aa", "a"}};
    for (const auto& [typed, name] : cases) {
        EXPECT_FALSE(fuzzyDistance(QString::fromUtf8(name), QString::fromUtf8(typed)))
            << typed << " in " << name;
    }
    EXPECT_EQ(fuzzyDistance(QStringLiteral("anything"), QStringLiteral("  ")), 0);
}

class BoardPickerTest : public tests::WindowFixture {
protected:
    BoardPickerTest() {
        for (const auto* const name : {"Work", "Trip to Lisbon", "Café", "Homework"}) {
            own.boards.createBoard(name, kNow);
        }
        window.resize(600, 400);
        other.setParent(&window);
        window.show();
        other.show();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&window));
        other.setFocus();
    }

    BoardPicker& open(const model::Board* excluded = nullptr) {
        auto boards = services::BoardService::activeBoards(own.boards.boards());
        std::erase(boards, excluded);
        auto* const picker =
            new BoardPicker({.title = QStringLiteral("Go to board"), .boards = std::move(boards)},
                            own.context, workspace.folding, theme, &window);
        QObject::connect(picker, &BoardPicker::chosen, &window,
                         [this](model::Board* board) { chosen.push_back(board->name()); });
        picker->open();
        return *picker;
    }
    static std::vector<std::string> names(const BoardPicker& picker) {
        const auto* const model = picker.findChild<QListView*>()->model();
        std::vector<std::string> result;
        for (int row = 0; row < model->rowCount(); ++row) {
            result.push_back(toUtf8(model->index(row, 0).data().toString()));
        }
        return result;
    }
    static void type(const char* text) {
        QTest::keyClicks(QApplication::focusWidget(), QString::fromUtf8(text));
    }
    static void key(Qt::Key which) { QTest::keyClick(QApplication::focusWidget(), which); }

    QWidget window;
    QLineEdit other;
    std::vector<std::string> chosen;
};

TEST_F(BoardPickerTest, SomeLettersAndReturnChoose) {
    auto& picker = open();
    EXPECT_THAT(names(picker), ElementsAre("Inbox", "Work", "Trip to Lisbon", "Café", "Homework"));
    type("WORK");
    EXPECT_THAT(names(picker), ElementsAre("Work", "Homework"));
    key(Qt::Key_Down);
    key(Qt::Key_Return);
    EXPECT_THAT(chosen, ElementsAre("Homework"));
    EXPECT_TRUE(other.hasFocus()) << "the keyboard goes back";
    open();
    type("cafe");
    key(Qt::Key_Return);
    EXPECT_THAT(chosen, ElementsAre("Homework", "Café"));
}

TEST_F(BoardPickerTest, NothingFoundOrEscapeChoosesNothing) {
    auto& picker = open();
    type("zzz");
    EXPECT_THAT(names(picker), ::testing::IsEmpty());
    key(Qt::Key_Return);
    EXPECT_TRUE(picker.isVisible());
    key(Qt::Key_Escape);
    EXPECT_TRUE(other.hasFocus());
    EXPECT_THAT(chosen, ::testing::IsEmpty());
    auto& second = open();
    other.setFocus();
    EXPECT_FALSE(second.isVisible()) << "it does not stay behind when the keyboard goes elsewhere";
}

TEST_F(BoardPickerTest, FollowsTheStoreWithoutTheExcluded) {
    auto& picker = open(inbox);
    key(Qt::Key_Down); // Trip to Lisbon
    elsewhere([](tests::StoreClient& client) {
        for (auto* const board : client.boards.boards()) {
            if (board->name() == "Work") {
                client.boards.deleteBoard(*board);
            } else if (board->name() == "Homework") {
                client.boards.setArchived(true, *board, kNow);
            }
        }
    });
    EXPECT_THAT(names(picker), ElementsAre("Trip to Lisbon", "Café"));
    key(Qt::Key_Return);
    EXPECT_THAT(chosen, ElementsAre("Trip to Lisbon")) << "the choice stayed";
}

} // namespace
} // namespace korvex::ui
