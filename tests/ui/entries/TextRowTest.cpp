#include "ui/text/TextRow.h"

#include "richtext/code/CodeSyntax.h"
#include "richtext/table/RichTextTable.h"
#include "richtext/text/HeadingLevel.h"
#include "ui/WindowFixture.h"
#include "ui/editor/RichTextEdit.h"
#include "ui/entries/EntryListView.h"
#include "ui/text/TextDocumentConversion.h"
#include "ui/todos/RowFrame.h"

#include <QDesktopServices>
#include <QImage>
#include <QPainter>
#include <QSignalSpy>
#include <QTextBrowser>
#include <QUrl>

#include <array>
#include <cmath>

namespace korvex::ui {
namespace {

using namespace richtext;

/// Takes the place of the system that opens links. A QTextBrowser has a slot that takes one.
class Browser final : public QTextBrowser {
public:
    Browser() {
        for (const auto* const scheme : kSchemes) {
            QDesktopServices::setUrlHandler(QLatin1String(scheme), this, "setSource");
        }
    }
    ~Browser() override {
        for (const auto* const scheme : kSchemes) {
            QDesktopServices::unsetUrlHandler(QLatin1String(scheme));
        }
    }
    QStringList opened;

protected:
    void doSetSource(const QUrl& url, QTextDocument::ResourceType) override {
        opened.append(url.toString());
    }

private:
    static constexpr std::array kSchemes{"https", "mailto", "ftp", "file"};
};

class TextRowTest : public tests::WindowFixture {
protected:
    model::Entry& addText(const AttributedString& text) {
        return own.entries.createText({.rich = text, .board = *inbox, .now = clock.now()});
    }
    void show() {
        model.setBoard(inbox);
        list.resize(500, 400);
        list.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&list));
        QApplication::processEvents();
    }
    /// The middle of the character at an offset of the text in a row, in the viewport.
    QPoint placeOf(int row, const AttributedString& text, std::size_t offset) {
        const auto rect = list.visualRect(model.index(row, 0));
        const auto frame = RowFrame::ofText(theme);
        RichTextEdit edit;
        fill(edit, text, rect.width() - 2 * frame.side);
        return rect.topLeft() + QPoint(frame.side, frame.top()) + placeIn(edit, offset);
    }
    void fill(RichTextEdit& edit, const AttributedString& text, int width) {
        edit.setLook(TextLook(theme));
        edit.setContent(text);
        edit.resize(width, 2'000);
        edit.document()->setTextWidth(width);
    }
    static QPoint placeIn(RichTextEdit& edit, std::size_t offset) {
        QTextCursor cursor(edit.document());
        cursor.setPosition(positionOf(*edit.document(), offset));
        // The left half of a character is its own.
        return edit.cursorRect(cursor).center() + QPoint(1, 0);
    }

    EntryListModel model{workspace.context, workspace.serializer, workspace.scheduleClock,
                         workspace.dates};
    EntryListView list{model, workspace.code, theme};
};

AttributedString sample() {
    AttributedString text;
    text.append(u"Trip\n", {.font = fontOf(HeadingLevel::level1)},
                {.spacingBefore = spacingBeforeOf(HeadingLevel::level1)});
    text.append(u"We land on Friday and then there is more than fits into one line of the row.\n",
                {}, {});
    const auto list = std::make_shared<TextList>(TextList{.marker = u"{check}"});
    text.append(u"one\ntwo\n", {}, {.lists = {list}});
    text.append(u"int a;\nint b;\n", CodeSyntax::attributes("cpp", CodeKind::block),
                {.lineSpacing = kCodeBlockLineSpacing});
    text.append(RichTextTable::make(3, 2));
    text.append(u"the end", {}, {});
    return text;
}

TEST_F(TextRowTest, EveryCharacterStandsWhereTheEditorShowsIt) {
    const auto text = sample();
    constexpr int kWidth = 360;
    RichTextEdit edit;
    fill(edit, text, kWidth);
    const TextRow row(text, kWidth, TextLook(theme));
    EXPECT_EQ(row.height(), static_cast<int>(std::ceil(edit.document()->size().height())));
    for (std::size_t offset = 0; offset < text.length(); ++offset) {
        if (QChar(text.text()[offset]).isLetter()) {
            EXPECT_EQ(row.caretAt(placeIn(edit, offset)), static_cast<int>(offset));
        }
    }
    TextRow narrowed(text, 4 * kWidth, TextLook(theme));
    narrowed.setWidth(kWidth);
    EXPECT_EQ(narrowed.height(), row.height());
    const auto offset = text.text().find(u"end");
    EXPECT_EQ(narrowed.caretAt(placeIn(edit, offset)), static_cast<int>(offset));
}

TEST_F(TextRowTest, BetweenTwoLinesTheNearerOneIsMeant) {
    constexpr int kWidth = 200;
    constexpr auto kWords = u"one two three four five six seven eight nine ten eleven twelve";
    AttributedString text(kWords + std::u16string(u"\n"));
    text.append(AttributedString(kWords));
    RichTextEdit edit;
    fill(edit, text, kWidth);
    TextRow row(text, kWidth, TextLook(theme));
    // Every line but the last of each paragraph is longer than this.
    constexpr int kAcross = 20;
    for (int y = 2; y < row.height() - 2; ++y) {
        const QPoint place(kAcross, y);
        QTest::mouseClick(edit.viewport(), Qt::LeftButton, {}, place);
        EXPECT_NEAR(placeIn(edit, static_cast<std::size_t>(row.caretAt(place))).x(), place.x(), 12)
            << y;
        EXPECT_EQ(edit.textCursor().position(), row.caretAt(place)) << y;
    }
}

TEST_F(TextRowTest, MarkersStandAtOneDistanceBeforeTheText) {
    const TextLook look(theme);
    constexpr int kWidth = 300;
    for (const auto* const letters : {u"text\n", u"\u05d0\u05d1\n"}) {
        for (const auto* const marker :
             {u"{disc}", u"{circle}", u"{square}", u"{hyphen}", u"{decimal}.", u"{lower-roman})"}) {
            const auto drawn = std::make_shared<TextList>(TextList{.marker = marker});
            TextRow row(AttributedString(letters, {}, {.lists = {drawn}}), kWidth, look);
            QImage seen(kWidth, row.height(), QImage::Format_RGB32);
            seen.fill(Qt::white);
            QPainter painter(&seen);
            row.paint(painter, look);
            painter.end();
            const auto isRightToLeft = *letters != u't';
            const auto isInked = [&](int fromText) {
                const int x = look.listIndent() - 1 - fromText;
                for (int y = 0; y < seen.height(); ++y) {
                    if (qGray(seen.pixel(isRightToLeft ? kWidth - 1 - x : x, y)) < 180) {
                        return true;
                    }
                }
                return false;
            };
            int blank = 0;
            while (blank < look.listIndent() && !isInked(blank)) {
                ++blank;
            }
            EXPECT_NEAR(blank, look.space(Space::medium), 2)
                << QString::fromUtf16(marker).toStdString() << ' ' << isRightToLeft;
        }
    }
}

TEST_F(TextRowTest, AClickAsksForEditingAtTheCharacter) {
    const auto text = sample();
    add({"a todo above"});
    addText(text);
    show();
    const QSignalSpy requests(&list, &EntryListView::editRequested);
    const auto offset = text.text().find(u"Friday");
    QTest::mouseClick(list.viewport(), Qt::LeftButton, {}, placeOf(1, text, offset));
    ASSERT_EQ(requests.size(), 1);
    EXPECT_EQ(requests[0][0].toInt(), 1);
    EXPECT_EQ(requests[0][1].toInt(), static_cast<int>(offset));
}

TEST_F(TextRowTest, AClickWithControlOpensLinksOfAllowedSchemesOnly) {
    AttributedString text;
    const std::vector<std::string> links{"https://example.org/a", "mailto:a@example.org",
                                         "ftp://example.org/", "file:///etc/passwd"};
    for (const auto& link : links) {
        text.append(u"link\n", {.link = link}, {});
    }
    text.append(u"plain", {}, {});
    addText(text);
    show();
    Browser browser;
    const QSignalSpy requests(&list, &EntryListView::editRequested);
    for (std::size_t line = 0; line <= links.size(); ++line) {
        const auto place = placeOf(0, text, 5 * line + 2);
        QTest::mouseMove(list.viewport(), place);
        QTest::mouseClick(list.viewport(), Qt::LeftButton, Qt::ControlModifier, place);
    }
    EXPECT_EQ(browser.opened, QStringList({QStringLiteral("https://example.org/a"),
                                           QStringLiteral("mailto:a@example.org")}));
    EXPECT_EQ(requests.size(), 0);
}

TEST_F(TextRowTest, OnlyRowsInSightAreDecoded) {
    constexpr int kTexts = 300;
    log.expectError("Unable to decode");
    for (int i = 0; i < kTexts; ++i) {
        auto entry = std::make_unique<model::Entry>(model::EntryFields{
            .id = base::Uuid::random(),
            .content = "the text " + std::to_string(i),
            .richTextData = base::Bytes{'n', 'o', ' ', 'r', 't', 'f'},
            .createdAt = clock.now(),
            .updatedAt = clock.now(),
            .sortOrder = i,
        });
        auto& inserted = own.context.insert(std::move(entry));
        inserted.setBoard(inbox);
    }
    own.context.save();
    show();
    // Each decoding of what is no RTF leaves a line.
    const auto decoded = log.count("Unable to decode");
    EXPECT_GT(decoded, 5U);
    EXPECT_LT(decoded, 60U);
    EXPECT_EQ(model.text(0), QStringLiteral("the text 0")) << "what a screen reader hears";
}

TEST_F(TextRowTest, ATextOverTheLimitShowsItsBeginningAndIsNotEdited) {
    auto entry = std::make_unique<model::Entry>(model::EntryFields{
        .id = base::Uuid::random(), .content = std::string(20'000, 'x'), .updatedAt = clock.now()});
    auto& inserted = own.context.insert(std::move(entry));
    inserted.setBoard(inbox);
    own.context.save();
    show();
    EXPECT_FALSE(model.isEditable(0));
    const auto height = list.visualRect(model.index(0, 0)).height();
    EXPECT_LT(height, 400) << "500 characters are some lines";
}

TEST_F(TextRowTest, ARowFollowsItsFormatting) {
    auto& entry = addText(AttributedString(u"text"));
    show();
    const auto before = list.visualRect(model.index(0, 0)).height();
    clock.advance(60);
    own.entries.updateText(entry, AttributedString(u"text", {.font = fontOf(HeadingLevel::level1)}),
                           clock.now());
    model.refresh();
    EXPECT_GT(list.visualRect(model.index(0, 0)).height(), before + 3);
}

TEST_F(TextRowTest, AWideTableMovesInItsRowAndTheTextAroundStays) {
    AttributedString text(u"above\n");
    text.append(RichTextTable::make(1, 10));
    text.append(u"below", {}, {});
    constexpr int kWidth = 200;
    const TextLook look(theme);
    TextRow row(text, kWidth, look);
    const QPointF inTable(kWidth - 5, row.height() / 2.0);
    const QPointF above(2, 2);
    const int first = row.caretAt(inTable);
    EXPECT_FALSE(row.scrollTables(50, above));
    int moves = 0;
    while (moves < 100 && row.scrollTables(50, inTable)) {
        ++moves;
    }
    EXPECT_GT(moves, 1);
    EXPECT_LT(moves, 100) << "no further than to its end";
    EXPECT_GT(row.caretAt(inTable), first);
    EXPECT_EQ(row.caretAt(above), 0);
    row.reachTo(2 * kWidth);
    EXPECT_EQ(row.reach(), 2 * kWidth);
    EXPECT_GT(row.caretAt({2 * kWidth - 5, inTable.y()}), row.caretAt(inTable));
    row.reachTo(100 * kWidth);
    EXPECT_EQ(row.reach(), row.wholeWidth());
    EXPECT_FALSE(row.scrollTables(1)) << "all of it is seen";
    row.reachTo(0);
    EXPECT_EQ(row.reach(), kWidth);
    row.scrollTables(10'000);
    TextRow again(text, 10 * kWidth, look);
    EXPECT_FALSE(again.scrollTables(50)) << "it has room";
    again.setWidth(kWidth);
    again.setTableOffsets(row.tableOffsets());
    EXPECT_EQ(again.caretAt(inTable), row.caretAt(inTable));
    EXPECT_TRUE(row.scrollTables(-10'000));
    EXPECT_EQ(row.caretAt(inTable), first);
}

} // namespace
} // namespace korvex::ui
