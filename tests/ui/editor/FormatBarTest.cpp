#include "ui/editor/FormatBar.h"

#include "ui/WindowFixture.h"
#include "ui/editor/BarPlace.h"
#include "ui/editor/LanguageMenu.h"
#include "ui/editor/LinkPopover.h"
#include "ui/editor/TablePopover.h"
#include "ui/text/TextLook.h"

#include <QLineEdit>
#include <QMenu>
#include <QTextTable>
#include <QToolButton>
#include <QVBoxLayout>

#include <set>

namespace korvex::ui {
namespace {

using namespace richtext;

class FormatBarTest : public tests::WindowFixture {
protected:
    FormatBarTest() {
        edit->setLook(TextLook(theme));
        auto* const column = new QVBoxLayout(&window);
        column->addWidget(bar);
        column->addWidget(edit);
        window.resize(900, 500);
        window.show();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&window));
        edit->setFocus();
    }

    QToolButton& button(const char* name) {
        QApplication::processEvents(); // what has come or gone is placed
        for (auto* const each : bar->findChildren<QToolButton*>()) {
            if (each->accessibleName() == QString::fromUtf8(name) && each->isVisible()) {
                return *each;
            }
        }
        throw std::invalid_argument(name);
    }
    void click(const char* name) { QTest::mouseClick(&button(name), Qt::LeftButton); }
    void choose(const char* control, const char* entry) {
        auto* const menu = button(control).defaultAction()->menu<QMenu*>();
        Q_EMIT menu->aboutToShow();
        for (auto* const action : menu->actions()) {
            if (action->text().section(QLatin1Char('\t'), 0, 0) == QString::fromUtf8(entry)) {
                EXPECT_TRUE(action->isEnabled()) << entry;
                action->trigger();
                return;
            }
        }
        throw std::invalid_argument(entry);
    }
    QStringList ticked(const char* control) {
        auto* const menu = button(control).defaultAction()->menu<QMenu*>();
        Q_EMIT menu->aboutToShow();
        QStringList result;
        for (const auto* const action : menu->actions()) {
            if (action->isChecked()) {
                result.append(action->text().section(QLatin1Char('\t'), 0, 0));
            }
        }
        return result;
    }
    /// What is lit, with what the heading says.
    std::set<std::string> lit() {
        std::set<std::string> result{button("Heading").text().toStdString()};
        for (const auto* const each : bar->findChildren<QToolButton*>()) {
            if (each->isVisible() && each->isChecked()) {
                result.insert(each->accessibleName().toStdString());
            }
        }
        return result;
    }
    void select(int start, int end) {
        auto cursor = edit->textCursor();
        cursor.setPosition(start);
        cursor.setPosition(end, QTextCursor::KeepAnchor);
        edit->setTextCursor(cursor);
    }
    template <typename Panel>
    Panel* panel() {
        QApplication::processEvents();
        QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        return window.findChild<Panel*>();
    }
    static void press(Qt::Key key) { QTest::keyClick(QApplication::focusWidget(), key); }
    static void type(const char* text) {
        QTest::keyClicks(QApplication::focusWidget(), QString::fromUtf8(text));
    }

    QWidget window;
    RichTextEdit* edit = new RichTextEdit(&window);
    FormatBar* bar = new FormatBar(*edit, workspace.code, theme, &window);
};

TEST_F(FormatBarTest, TheControlsShowWhatStandsAtTheCaret) {
    CharacterAttributes struck;
    struck.strikethrough = LineStyle::single;
    struck.font.isItalic = true;
    CharacterAttributes linked;
    linked.link = "https://example.org";
    ParagraphStyle item;
    item.lists = {std::make_shared<TextList>(TextList{.marker = u"{disc}"})};
    struct Case {
        AttributedString text;
        std::set<std::string> lit;
    };
    const auto heading =
        RichTextSerializer::applyingHeading(HeadingLevel::level2, AttributedString(u"heading"));
    for (const auto& [text, expected] :
         {Case{AttributedString(u"plain"), {"Normal text"}},
          Case{AttributedString(u"struck", struck), {"Normal text", "Italic", "Strikethrough"}},
          Case{AttributedString(u"linked", linked), {"Normal text", "Link"}},
          Case{AttributedString(u"item", {}, item), {"Normal text", "Lists"}},
          Case{AttributedString(u"code", CodeSyntax::attributes("cpp", CodeKind::inlineCode)),
               {"Normal text", "Inline code"}},
          Case{AttributedString(u"block", CodeSyntax::attributes("cpp", CodeKind::block)),
               {"Normal text", "Code block"}},
          Case{heading, {"Heading 2", "Bold"}}}) {
        edit->setContent(text);
        select(2, 2);
        EXPECT_EQ(lit(), expected);
    }
}

TEST_F(FormatBarTest, AClickFormatsTheSelectionAndLeavesKeyboardAndSelectionWithTheText) {
    for (const auto* const name :
         {"Bold", "Italic", "Underline", "Strikethrough", "Inline code", "Code block"}) {
        edit->setContent(AttributedString(u"some words here"));
        select(5, 10);
        click(name);
        EXPECT_TRUE(edit->hasFocus()) << name;
        EXPECT_EQ(edit->textCursor().selectedText(), QStringLiteral("words")) << name;
        EXPECT_TRUE(button(name).isChecked()) << name;
        EXPECT_NE(edit->content().attributesAt(6), CharacterAttributes{}) << name;
        click(name);
        EXPECT_FALSE(button(name).isChecked()) << name;
    }
}

TEST_F(FormatBarTest, HeadingsAndListsAreChosenFromMenus) {
    edit->setContent(AttributedString(u"some words"));
    choose("Heading", "Heading 3");
    EXPECT_EQ(RichTextSerializer::headingLevel(edit->content()), HeadingLevel::level3);
    EXPECT_EQ(button("Heading").text(), QStringLiteral("Heading 3"));
    EXPECT_EQ(ticked("Heading"), QStringList(QStringLiteral("Heading 3")));
    choose("Heading", "Normal text");
    EXPECT_EQ(RichTextSerializer::headingLevel(edit->content()), std::nullopt);

    for (const auto& [entry, marker] :
         {std::pair("Dashed list", u"{hyphen}"), std::pair("Numbered list: a.", u"{lower-alpha}."),
          std::pair("Checked list", u"{check}")}) {
        choose("Lists", entry);
        const auto text = edit->content();
        ASSERT_FALSE(text.styleAt(0).lists.empty()) << entry;
        EXPECT_EQ(text.styleAt(0).lists.back()->marker, marker);
        EXPECT_EQ(ticked("Lists"), QStringList(QString::fromUtf8(entry)));
    }
    choose("Lists", "No list");
    EXPECT_TRUE(edit->content().styleAt(0).lists.empty());
}

TEST_F(FormatBarTest, EveryControlIsReachedByKeyboardAndGivesItBack) {
    edit->setContent(RichTextTable::make(2, 2));
    select(1, 1); // the controls of tables, too
    std::set<std::string> expected;
    for (const auto* const each : bar->findChildren<QToolButton*>()) {
        if (each->isVisible() && each->isEnabled()) {
            EXPECT_FALSE(each->toolTip().isEmpty());
            expected.insert(each->accessibleName().toStdString());
        }
    }
    EXPECT_EQ(expected.count(""), 0U) << "a control without a name";
    std::set<std::string> reached;
    QTest::keyClick(edit, Qt::Key_F6);
    while (const auto* const focused = qobject_cast<QToolButton*>(QApplication::focusWidget())) {
        if (!reached.insert(focused->accessibleName().toStdString()).second) {
            break;
        }
        press(Qt::Key_Tab);
    }
    EXPECT_EQ(reached, expected);

    for (const auto key : {Qt::Key_Return, Qt::Key_Space, Qt::Key_Escape, Qt::Key_F6}) {
        const bool wasBold = edit->formatState().isBold;
        button("Bold").setFocus(Qt::TabFocusReason);
        press(key);
        EXPECT_TRUE(edit->hasFocus());
        EXPECT_EQ(edit->formatState().isBold,
                  key == Qt::Key_Return || key == Qt::Key_Space ? !wasBold : wasBold);
    }
}

TEST_F(FormatBarTest, InATableItsControlsAppearAndAreDisabledAtTheLimits) {
    auto text = AttributedString(u"before\n");
    text.append(RichTextTable::make(RichTextTable::kMaximumRows - 1, 2));
    edit->setContent(text);
    EXPECT_THROW(button("Insert Row Below"), std::invalid_argument);
    select(8, 8);
    EXPECT_TRUE(button("Insert Row Below").isEnabled());
    click("Insert Row Below");
    EXPECT_TRUE(edit->hasFocus());
    EXPECT_EQ(edit->textCursor().currentTable()->rows(), RichTextTable::kMaximumRows);
    EXPECT_FALSE(button("Insert Row Above").isEnabled());
    EXPECT_TRUE(button("Insert Column Left").isEnabled());
    choose("Table", "Duplicate Column");
    EXPECT_EQ(edit->textCursor().currentTable()->columns(), 3);
    choose("Table", "Delete Table");
    EXPECT_EQ(edit->textCursor().currentTable(), nullptr);
    EXPECT_THROW(button("Insert Row Below"), std::invalid_argument);
}

TEST_F(FormatBarTest, WhatDoesNotFitStandsInAMenuAndNothingIsCutOff) {
    edit->setContent(RichTextTable::make(2, 2));
    select(1, 1);
    for (const int fontSize : {10, 24}) {
        preferences.setFontSize(fontSize);
        for (const int width : {900, 500, 330, 240}) {
            SCOPED_TRACE(std::to_string(width) + " px at size " + std::to_string(fontSize));
            window.setFixedWidth(width);
            QApplication::processEvents();
            std::size_t shown = 0;
            for (const auto* const each : bar->findChildren<QToolButton*>()) {
                if (each->isVisible()) {
                    EXPECT_TRUE(bar->rect().contains(each->geometry()))
                        << each->accessibleName().toStdString();
                    EXPECT_GE(each->width(), std::min(each->minimumSizeHint().width(), 20));
                    ++shown;
                }
            }
            std::size_t listed = 0;
            if (const auto* const more =
                    bar->findChild<QToolButton*>(QStringLiteral("qt_toolbar_ext_button"));
                more->isVisible()) {
                --shown;
                ASSERT_TRUE(more->menu());
                for (const auto* const action : more->menu()->actions()) {
                    listed += action->isVisible() && !action->isSeparator() ? 1 : 0;
                }
            }
            EXPECT_EQ(shown + listed, 14U);
        }
    }
}

TEST_F(FormatBarTest, ALinkIsSetWhereItWasAskedForEvenIfTheCaretMovesMeanwhile) {
    edit->setContent(AttributedString(u"some words here"));
    select(5, 10);
    click("Link");
    ASSERT_TRUE(panel<LinkPopover>());
    type("example.org");
    select(0, 0);
    press(Qt::Key_Return);
    EXPECT_FALSE(panel<LinkPopover>());
    EXPECT_TRUE(edit->hasFocus());
    const auto text = edit->content();
    EXPECT_EQ(text.text(), u"some words here");
    EXPECT_EQ(text.attributesAt(5).link, "https://example.org");
    EXPECT_EQ(text.attributesAt(9).link, "https://example.org");
    EXPECT_EQ(text.attributesAt(4).link, "");
    EXPECT_EQ(text.attributesAt(10).link, "");

    select(7, 7);
    click("Link");
    ASSERT_TRUE(panel<LinkPopover>());
    EXPECT_EQ(panel<LinkPopover>()->findChild<QLineEdit*>()->text(),
              QStringLiteral("https://example.org"));
    press(Qt::Key_Backspace); // the field is selected
    press(Qt::Key_Return);
    EXPECT_EQ(edit->content().attributesAt(7).link, "");
}

TEST_F(FormatBarTest, ATableOfTheChosenSizeIsInserted) {
    click("Table");
    ASSERT_TRUE(panel<TablePopover>());
    type("2");
    press(Qt::Key_Tab);
    type("500"); // the last digit does not go in
    press(Qt::Key_Return);
    EXPECT_FALSE(panel<TablePopover>());
    EXPECT_TRUE(edit->hasFocus());
    const auto* const table = edit->textCursor().currentTable();
    ASSERT_TRUE(table);
    EXPECT_EQ(table->columns(), 2);
    EXPECT_EQ(table->rows(), 50);
}

TEST_F(FormatBarTest, TheLanguageOfCodeIsShownAndChosen) {
    edit->setContent(
        AttributedString(u"int main() {}", CodeSyntax::attributes("auto", CodeKind::block)));
    select(3, 3);
    EXPECT_EQ(button("Language").text(), QStringLiteral("Automatic"));
    click("Language");
    ASSERT_TRUE(panel<LanguageMenu>());
    type("plain");
    press(Qt::Key_Return);
    EXPECT_FALSE(panel<LanguageMenu>());
    EXPECT_TRUE(edit->hasFocus());
    EXPECT_EQ(edit->content().attributesAt(3).korvexCodeLanguage, "plaintext");
    EXPECT_EQ(button("Language").text(), QStringLiteral("Plain Text"));
}

TEST(BarPlaceTest, TheBarIsBesideTheRowOrAtTheEdgeThatTheRowReachesBeyond) {
    using Edge = BarPlace::Edge;
    struct Case {
        const char* what;
        QRect row;
        int above;
        int top;
        Edge edge = Edge::none;
    };
    const QRect sight(0, 0, 400, 300);
    for (const auto& [what, row, above, top, edge] :
         {Case{"room over it", QRect(8, 100, 384, 50), 100, 60},
          Case{"just enough", QRect(8, 44, 384, 50), 44, 4},
          Case{"one that begins at the edge", QRect(8, 20, 384, 50), 500, 4, Edge::top},
          Case{"out of sight", QRect(8, -500, 384, 700), 500, 4, Edge::top},
          Case{"the first row", QRect(8, 4, 384, 50), 4, 58},
          Case{"the first row, higher than the list", QRect(8, 4, 384, 900), 4, 260, Edge::foot},
          Case{"and scrolled", QRect(8, -300, 384, 900), 4, 260, Edge::foot},
          Case{"to its end", QRect(8, -650, 384, 900), 4, 254}}) {
        const auto [bar, kept] =
            placeOfBar({200, 36}, {.sight = sight, .row = row, .above = above, .distance = 4});
        EXPECT_EQ(bar, QRect(8, top, 200, 36)) << what;
        EXPECT_EQ(kept, edge) << what;
    }
    const BarSurroundings wide{
        .sight = sight, .row = {8, 100, 384, 50}, .above = 100, .distance = 4};
    EXPECT_EQ(placeOfBar({900, 36}, wide).bar, QRect(8, 60, 384, 36))
        << "what does not fit goes into its menu";
}

} // namespace
} // namespace korvex::ui
