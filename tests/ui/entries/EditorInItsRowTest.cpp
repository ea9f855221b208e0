#include "richtext/code/CodeSyntax.h"
#include "richtext/table/RichTextTable.h"
#include "richtext/text/Formatting.h"
#include "ui/editor/FormatBar.h"
#include "ui/editor/RichTextEdit.h"
#include "ui/entries/RowRefusal.h"
#include "ui/entries/TypingFixture.h"
#include "ui/kit/overlays/ErrorBanner.h"

#include <QPushButton>
#include <QScrollBar>
#include <QToolButton>

#include <gmock/gmock.h>

#include <cmath>

namespace korvex::ui {
namespace {

using ::testing::IsEmpty;
using ::testing::StartsWith;

class EditorInItsRowTest : public tests::TypingFixture {
protected:
    TodoEditor& todoEditor() { return *page.findChild<TodoEditor*>(); }
    TextEditor& textEditor() { return *page.findChild<TextEditor*>(); }
    RowRefusal& said() { return *todoEditor().findChild<RowRefusal*>(); }
    QRect placeOf(const model::Entry& entry) {
        return list().visualRect(page.entries().index(page.entries().rowOf(entry), 0));
    }
    model::Entry& addFormatted(const richtext::AttributedString& text) {
        auto& entry = own.entries.createText({.rich = text, .board = *inbox, .now = clock.now()});
        page.refresh();
        return entry;
    }
};

/// As the command line and other programs make them.
TEST_F(EditorInItsRowTest, ATodoOfSeveralLinesIsEditedAsItIsDrawn) {
    const auto twenty = "20 lines" + QByteArray("\nand one").repeated(19).toStdString();
    page.resize(500, 1000);
    for (const auto& content :
         {std::string("a\nb\nc"), std::string("a\u2028b\r\nc"), std::string("a\u00a0b\u2029c"),
          std::string("a\vb\u0085c"), twenty}) {
        SCOPED_TRACE(content);
        const auto& todo = *add({content}).front();
        clock.advance(1);
        const auto before = placeOf(todo);
        edit(todo);
        EXPECT_EQ(placeOf(todo), before);
        EXPECT_EQ(field().verticalScrollBar()->maximum(), 0) << "all of it is in sight";
        key(Qt::Key_Escape);
        EXPECT_EQ(todo.updatedAt(), todo.createdAt()) << "who only looks changes nothing";
        edit(todo);
        elsewhere(
            [&](tests::StoreClient& client) { client.entries.deleteEntry(theirs(client, todo)); });
        EXPECT_FALSE(isEditing()) << "nobody typed";
        EXPECT_TRUE(page.leave());
        EXPECT_THAT(storedTexts(*inbox), IsEmpty());
    }
}

TEST_F(EditorInItsRowTest, NothingMovesWhenAnEditorOpensAndAllStandsOnOneLine) {
    const auto todos =
        add({"plain", "due", "overdue",
             "Call the landlord: the heating knocks, the meter was not read", "דירה"});
    for (const auto row : {1U, 3U, 4U}) {
        own.entries.updateSchedule(*todos[row], model::TodoSchedule::dueOn(20250310), kNow);
    }
    own.entries.updateSchedule(*todos[2], model::TodoSchedule::dueAt(kNow - 86400.0 * 400), kNow);
    for (const int width : {500, 360, 180}) {
        page.resize(width, 600);
        for (const auto size : app::AppPreferences::kFontSizes) {
            preferences.setFontSize(size);
            QApplication::processEvents(); // the page may have to be wider for it
            for (const auto* const todo : todos) {
                SCOPED_TRACE(todo->content() + " at " + std::to_string(size) + " in " +
                             std::to_string(list().column().width));
                const EntryRowLayout shown(page.entries(), page.entries().rowOf(*todo),
                                           list().column().width, theme, TextLook(theme));
                const auto baseline = shown.text().top() + QFontMetrics(theme.font()).ascent();
                const QFontMetrics small(theme.smallFont());
                const auto isBeside = shown.due().top() < shown.text().bottom();
                if (!shown.due().isEmpty() && isBeside) {
                    EXPECT_EQ(shown.due().top() + small.ascent(), baseline);
                }
                const int middle = baseline - QFontMetrics(theme.font()).capHeight() / 2;
                EXPECT_NEAR(shown.sign().center().y(), middle, 1);
                list().setCurrentRow(page.entries().rowOf(*todo));
                const auto before = placeOf(*todo);
                edit(*todo);
                EXPECT_EQ(placeOf(*todo), before);
                EXPECT_EQ(field().geometry().topLeft(), shown.text().topLeft());
                const auto& button = *todoEditor().findChild<QToolButton*>();
                const auto& schedule = shown.due().isEmpty() ? shown.scheduleButton() : shown.due();
                EXPECT_TRUE(button.geometry().contains(schedule));
                EXPECT_EQ(button.geometry().center(), schedule.center());
                key(Qt::Key_Escape);
            }
        }
    }
}

TEST_F(EditorInItsRowTest, OneRingIsDrawnAroundWhatHasTheKeyboard) {
    edit(*add({"a"}).front());
    const auto hasRing = [this] {
        const QPoint onEdge(todoEditor().width() / 2, RowFrame::of(theme).boxTop);
        return todoEditor().grab().toImage().pixelColor(onEdge) == theme.colors().accent;
    };
    EXPECT_TRUE(hasRing());
    todoEditor().findChild<QToolButton*>()->setFocus();
    EXPECT_FALSE(hasRing());
}

TEST_F(EditorInItsRowTest, TheDueLabelHasItsRoomWhateverItSaidBefore) {
    const auto todos = add({"a", "b"});
    own.entries.updateSchedule(*todos[0], model::TodoSchedule::dueOn(20250310), kNow);
    own.entries.updateSchedule(*todos[1], model::TodoSchedule::dueAt(kNow - 86400.0 * 40), kNow);
    const auto& label = *todoEditor().findChild<QToolButton*>();
    const QFontMetrics metrics(theme.smallFont());
    edit(*todos[0]);
    EXPECT_GE(label.width(), metrics.horizontalAdvance(label.text()));
    key(Qt::Key_Down);
    EXPECT_EQ(list().editedRow(), 1);
    EXPECT_GE(label.width(), metrics.horizontalAdvance(label.text())) << "after a shorter one";
    key(Qt::Key_Up);
    elsewhere([&](tests::StoreClient& client) {
        client.entries.updateSchedule(theirs(client, *todos[0]),
                                      model::TodoSchedule::dueAt(kNow + 86400.0 * 40), kNow);
    });
    EXPECT_EQ(list().editedRow(), 0);
    EXPECT_GE(label.width(), metrics.horizontalAdvance(label.text()))
        << "when it arrives while one types";
}

TEST_F(EditorInItsRowTest, ALastingMessageCoversNeitherWhatIsTypedNorWhatIsSaidOfIt) {
    add(std::vector<std::string>(30, "above"));
    page.startTodo();
    type("typed");
    const auto lasting = page.banner().say({.text = QStringLiteral("It lasts.")});
    const auto isCovered = [this](const QWidget& part, const QRect& rect) {
        return part.mapTo(&page, rect.bottomLeft()).y() >= page.banner().y();
    };
    EXPECT_FALSE(isCovered(field(), field().cursorRect())) << "when it comes";
    todoEditor().showError(QStringLiteral("refused"));
    EXPECT_FALSE(isCovered(said(), said().rect()));
    for (int line = 0; line < 3; ++line) {
        type(std::string(120, 'w').c_str());
        EXPECT_FALSE(isCovered(field(), field().cursorRect())) << "while one types";
    }
    key(Qt::Key_Return);
    EXPECT_EQ(shown(), QString());
    EXPECT_FALSE(isCovered(field(), field().cursorRect())) << "when one goes on with the next";
    page.banner().end(lasting);
    EXPECT_TRUE(list().rect().contains(todoEditor().mapTo(&list(), field().cursorRect().center())));
}

TEST_F(EditorInItsRowTest, DiscardingIsOfferedOnceThereIsSomethingToDiscard) {
    page.resize(360, 400);
    edit(*add({"a\r\n"}).front());
    todoEditor().showNotice(QStringLiteral("Another program has done something to this todo."));
    const auto& discard = *said().findChild<QPushButton*>();
    const auto isLaidOut = [&] { return said().height() == said().neededHeight(said().width()); };
    EXPECT_FALSE(discard.isVisible());
    const int before = todoEditor().height();
    type("b");
    EXPECT_TRUE(discard.isVisible());
    EXPECT_TRUE(isLaidOut());
    EXPECT_GT(todoEditor().height(), before) << "it stands under the words";
    key(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_FALSE(discard.isVisible());
    EXPECT_TRUE(isLaidOut());
    EXPECT_EQ(todoEditor().height(), before);
}

TEST_F(EditorInItsRowTest, ATextStandsInItsEditorAsInItsRow) {
    using namespace richtext;
    AttributedString text;
    const auto code = CodeSyntax::attributes("plaintext", CodeKind::block);
    text.append(u"int first;\nint second;\n", code, {});
    text.append(u"Heading\n", {.font = fontOf(HeadingLevel::level1)}, {});
    text.append(u"and body text with ", {}, {});
    text.append(u"code", CodeSyntax::attributes("plaintext", CodeKind::inlineCode), {});
    text.append(u" and a ", {}, {});
    text.append(u"link\n", {.link = "https://e.org"}, {});
    const auto list = std::make_shared<TextList>(TextList{.marker = u"{decimal}."});
    text.append(u"one\ntwo\n", {}, {.lists = {list}});
    text.append(RichTextTable::make(2, 2));
    page.list().viewport()->setStyle(&still); // rows are there at once
    add({"above", "and above", "once more"});
    const auto& entry = addFormatted(text);
    page.resize(600, 700);
    QApplication::processEvents();
    auto& viewport = *page.list().viewport();
    for (const auto direction : {Qt::RightToLeft, Qt::LeftToRight}) {
        SCOPED_TRACE(direction);
        QApplication::setLayoutDirection(direction);
        page.list().forgetLabels();
        QApplication::processEvents();
        page.list().setCurrentRow(0);
        const auto place = placeOf(entry);
        ASSERT_LT(place.bottom(), viewport.height());
        // Neither the row's frame nor the row above, over which the bar floats.
        const auto inside = place.adjusted(12, 8, -12, -8);
        const auto before = viewport.grab(inside).toImage();
        edit(entry);
        field().setCursorWidth(0);
        EXPECT_EQ(placeOf(entry), place);
        const auto* const bar = page.findChild<FormatBar*>();
        EXPECT_TRUE(bar->isVisible());
        EXPECT_FALSE(bar->geometry().intersects(inside));
        EXPECT_TRUE(viewport.grab(inside).toImage() == before);
        key(Qt::Key_Escape);
    }
}

TEST_F(EditorInItsRowTest, TheBarStaysAtOneEdgeAndNeverOnWhatIsTyped) {
    const auto rows = static_cast<int>(add(std::vector<std::string>(5, "above")).size());
    auto& entry = addText(QByteArray("line\n").repeated(80).toStdString());
    add(std::vector<std::string>(20, "below"));
    page.resize(500, 400);
    const auto bar = [this] { return page.findChild<FormatBar*>()->geometry(); };
    const auto& sight = *list().viewport();
    const auto caret = [&] {
        return QRect(field().mapTo(&sight, field().cursorRect().topLeft()),
                     field().cursorRect().size());
    };
    for (const bool isFirst : {false, true}) {
        if (isFirst) {
            own.entries.moveEntry(entry.id(), -rows, *inbox);
            page.refresh();
        }
        edit(entry);
        const auto expectSound = [&](const char* what) {
            EXPECT_TRUE(sight.rect().contains(caret())) << what;
            EXPECT_FALSE(bar().intersects(caret())) << what;
            EXPECT_EQ(bar().bottom() < caret().top(), !isFirst) << what;
        };
        key(Qt::Key_Home, Qt::ControlModifier);
        expectSound("at the beginning");
        for (int step = 0; step < 70; ++step) {
            key(Qt::Key_Down);
            expectSound("on the way down");
        }
        for (int step = 0; step < 70; ++step) {
            key(Qt::Key_Up);
            expectSound("on the way up");
        }
        setCaret(200);
        list().verticalScrollBar()->setValue(list().verticalScrollBar()->maximum());
        type("x");
        expectSound("out of sight");
        EXPECT_NEAR(caret().y(), sight.height() / 3.0, sight.height() / 6.0)
            << "it comes back with what is around it";
        key(Qt::Key_Escape);
    }
}

TEST_F(EditorInItsRowTest, ATextIsAsHighAsItsLines) {
    auto& entry = addText("one");
    add({"below"});
    edit(entry);
    const auto height = [&] { return placeOf(entry).height(); };
    const int before = height();
    type("x");
    EXPECT_EQ(height(), before);
    key(Qt::Key_Return);
    EXPECT_GT(height(), before);
    EXPECT_EQ(textEditor().height(), height());
    for (int i = 0; i < 60; ++i) {
        key(Qt::Key_Return);
    }
    const auto caret = field().cursorRect();
    const int y = field().mapTo(list().viewport(), caret.center()).y();
    EXPECT_GT(y, 0);
    EXPECT_LT(y, list().viewport()->height()) << "the caret stays in sight";
    EXPECT_LE(field().mapTo(&textEditor(), QPoint()).y() + field().document()->size().height(),
              textEditor().height());
}

TEST_F(EditorInItsRowTest, AWideTablesScrollBarHasRoomOfItsOwnWhereItIsNeeded) {
    richtext::AttributedString text(u"above\n");
    text.append(richtext::RichTextTable::make(1, 12));
    const auto& entry = addFormatted(text);
    const auto expectRoom = [this](bool hasBar) {
        QApplication::processEvents();
        EXPECT_EQ(field().horizontalScrollBar()->isVisible(), hasBar);
        EXPECT_EQ(field().viewport()->height(), std::ceil(field().document()->size().height()));
        const auto seen = field().viewport()->grab().toImage();
        for (int y = 0; hasBar && y < seen.height(); ++y) {
            ASSERT_GT(qGray(seen.pixel(seen.width() - 1, y)), 235) << "it fades where it goes on";
        }
    };
    constexpr int kRoomy = 3'000;
    constexpr int kTight = 1'000;
    page.resize(kRoomy, 400);
    edit(entry);
    const int column = list().column().width;
    expectRoom(false);
    for (const int width : {kTight, kRoomy, kTight}) {
        page.resize(width, 400);
        ASSERT_EQ(list().column().width, column) << "the rows are as wide as before";
        expectRoom(width == kTight);
    }
    for (const int width : {kRoomy, kTight}) {
        key(Qt::Key_Escape);
        page.resize(width, 400);
        edit(entry);
        expectRoom(width == kTight);
    }
}

TEST_F(EditorInItsRowTest, ALongNewTextKeepsItsPlaceWhenItIsStoredAndWhenItIsLeft) {
    add(std::vector<std::string>(8, "above"));
    page.startText();
    for (int i = 0; i < 80; ++i) {
        type("line");
        key(Qt::Key_Return);
    }
    setCaret(300);
    QApplication::processEvents();
    auto& bar = *list().verticalScrollBar();
    const auto scrolled = bar.value();
    ASSERT_GT(scrolled, list().viewport()->height());
    const auto caret = [this] { return field().mapToGlobal(field().cursorRect().topLeft()); };
    const auto before = caret();
    runLoop.advance(tests::kPause);
    ASSERT_EQ(storedTexts(*inbox).size(), 9U);
    QApplication::processEvents();
    EXPECT_EQ(bar.value(), scrolled);
    EXPECT_EQ(caret(), before);
    const auto little = textEditor().height() / 10;
    for (const auto& leave : {QKeySequence(Qt::CTRL | Qt::Key_S), QKeySequence(Qt::Key_Escape)}) {
        key(leave[0].key(), leave[0].keyboardModifiers());
        EXPECT_NEAR(bar.value(), scrolled, little);
    }
    EXPECT_THAT(page.entries().entry(list().currentRow())->content(), StartsWith("line"));
}

} // namespace
} // namespace korvex::ui
