#include "ui/text/TextDocumentConversion.h"

#include "TextFixture.h"
#include "richtext/RandomText.h"
#include "richtext/table/RichTextTable.h"
#include "richtext/text/Formatting.h"
#include "ui/text/TextDocument.h"
#include "ui/text/TextFormats.h"

#include <QTextCursor>
#include <QTextLayout>
#include <QTextTable>

#include <algorithm>
#include <array>
#include <random>

namespace korvex::ui {
namespace {

using namespace richtext;

class TextDocumentConversionTest : public tests::TextFixture {
protected:
    AttributedString shown(const AttributedString& text) {
        setText(document, text, look());
        return textOf(document);
    }
    static TextTableRef tableOf(int columns) {
        return std::make_shared<TextTable>(TextTable{.columns = columns});
    }
    static ParagraphStyle inCell(const TextTableRef& table, int row, int column) {
        return {.cells = {std::make_shared<TextTableCell>(
                    TextTableCell{.table = table, .row = row, .column = column})}};
    }
    /// One letter for each cell, by rows.
    static AttributedString table(std::u16string_view letters, int columns) {
        const auto identity = tableOf(columns);
        AttributedString result;
        for (std::size_t i = 0; i < letters.size(); ++i) {
            const auto place = static_cast<int>(i);
            result.append(std::u16string(1, letters[i]) + u"\n", {},
                          inCell(identity, place / columns, place % columns));
        }
        return result;
    }
    static AttributedString plain(std::u16string_view text) { return AttributedString(text); }
    static AttributedString joined(std::initializer_list<AttributedString> parts) {
        AttributedString result;
        for (const auto& part : parts) {
            result.append(part);
        }
        return result;
    }
    /// Qt does not take back what became of the first paragraph's end.
    bool isUndone(AttributedString before) const {
        auto now = textOf(document);
        for (auto* const each : {&now, &before}) {
            each->editAttributes({each->paragraphAt(0).end() - 1, 1},
                                 [](CharacterAttributes& attributes) { attributes = {}; });
        }
        return now.isEquivalentTo(before);
    }
    /// A cell has an end in a document, also where the text has cut it off.
    static AttributedString sample(std::uint64_t seed) {
        auto text = RandomText(seed).next();
        if (!text.isEmpty() && text.text().back() != u'\n' &&
            !text.styleAt(text.length()).cells.empty()) {
            text.append(u"\n", text.attributesAt(text.length()), {});
        }
        return text;
    }
    int tableCount() const {
        int count = 0;
        for (auto* const frame : document.rootFrame()->childFrames()) {
            count += qobject_cast<QTextTable*>(frame) ? 1 : 0;
        }
        return count;
    }

    TextDocument document;
};

TEST_F(TextDocumentConversionTest, WhatIsShownReadsAsWhatWasGiven) {
    for (std::uint64_t seed = 0; seed < 600; ++seed) {
        const auto text = sample(seed);
        const auto read = shown(text);
        ASSERT_TRUE(read.isEquivalentTo(text))
            << "seed " << seed << ": " << QString::fromStdU16String(text.text()).toStdString()
            << " became " << QString::fromStdU16String(read.text()).toStdString();
    }
}

TEST_F(TextDocumentConversionTest, PositionsFollowTheTextThroughTables) {
    for (std::uint64_t seed = 0; seed < 200; ++seed) {
        const auto text = sample(seed);
        setText(document, text, look());
        int last = -1;
        for (std::size_t offset = 0; offset < text.length(); ++offset) {
            const int position = positionOf(document, offset);
            ASSERT_EQ(offsetOf(document, position), offset) << "seed " << seed;
            ASSERT_GT(position, last) << "seed " << seed;
            last = position;
            const QChar unit = text.text()[offset];
            if (unit.isLetter()) {
                ASSERT_EQ(document.characterAt(position), unit)
                    << "seed " << seed << " offset " << offset;
            }
        }
        ASSERT_LE(offsetOf(document, document.characterCount() - 1), text.length());
    }
}

TEST_F(TextDocumentConversionTest, AnInsertedTextStandsBetweenWhatWasThere) {
    std::mt19937 random(1);
    for (std::uint64_t seed = 0; seed < 300; ++seed) {
        // Whole paragraphs at the border of paragraphs: nothing is joined.
        auto text = sample(seed);
        auto inserted = sample(seed + 10'000);
        for (auto* const each : {&text, &inserted}) {
            each->append(u"end\n", {}, {});
        }
        std::vector<std::size_t> borders{text.length()};
        text.forEachParagraph([&](const AttributedString::ParagraphRun& run) {
            if (run.style.cells.empty()) {
                borders.push_back(run.range.location);
            }
        });
        const auto offset = borders[random() % borders.size()];
        setText(document, text, look());
        QTextCursor cursor(&document);
        cursor.setPosition(positionOf(document, offset));
        insertText(cursor, inserted, look());
        EXPECT_EQ(offsetOf(document, cursor.position()), offset + inserted.length())
            << "seed " << seed;
        auto expected = text;
        expected.replace({offset, 0}, inserted);
        ASSERT_TRUE(textOf(document).isEquivalentTo(expected)) << "seed " << seed;
        document.undo();
        ASSERT_TRUE(isUndone(text)) << "seed " << seed;
    }
}

TEST_F(TextDocumentConversionTest, TablesBecomeTablesWhereverTheyStand) {
    const auto abcd = table(u"abcd", 2);
    const auto ef = table(u"ef", 1);
    struct Case {
        const char* name;
        AttributedString text;
        int tables;
    };
    const std::vector<Case> cases{
        {"alone", abcd, 1},
        {"first", joined({abcd, plain(u"x\n")}), 1},
        {"two side by side", joined({abcd, ef}), 2},
        {"after a paragraph and before one", joined({plain(u"x\n"), abcd, plain(u"y")}), 1},
        {"after an empty paragraph", joined({plain(u"\n"), abcd, plain(u"\n"), ef}), 2},
    };
    for (const auto& each : cases) {
        EXPECT_TRUE(shown(each.text).isEquivalentTo(each.text)) << each.name;
        EXPECT_EQ(tableCount(), each.tables) << each.name;
    }
}

TEST_F(TextDocumentConversionTest, ColumnsOfOtherProgramsAreDrawnWithinTheLimits) {
    auto text = RichTextTable::make(1, 4);
    constexpr std::array<std::optional<Twips>, 4> kWidths{200, std::nullopt, 40'000, 3'000};
    text.editStyles({0, 4}, [&](ParagraphStyle& style) {
        auto cell = *style.cells[0];
        cell.geometry.width = kWidths[static_cast<std::size_t>(cell.column)];
        style.cells[0] = std::make_shared<TextTableCell>(cell);
    });
    setText(document, text, look());
    QTextCursor cursor(&document);
    while (!cursor.currentTable() && cursor.movePosition(QTextCursor::NextBlock)) {
    }
    ASSERT_NE(cursor.currentTable(), nullptr);
    const auto drawn = cursor.currentTable()->format().columnWidthConstraints();
    ASSERT_EQ(drawn.size(), 4);
    const auto inset = drawn[1].rawValue() - look().pixels(RichTextTable::kDefaultWidth);
    EXPECT_NEAR(drawn[0].rawValue(), look().pixels(RichTextTable::kMinimumWidth) + inset, 2);
    EXPECT_NEAR(drawn[2].rawValue(), look().pixels(RichTextTable::kMaximumWidth) + inset, 2);
    EXPECT_NEAR(drawn[3].rawValue(), look().pixels(3'000) + inset, 2);
}

TEST_F(TextDocumentConversionTest, EveryColumnShowsAtLeastItsMinimum) {
    const auto narrow = [](std::array<Twips, 4> borders) {
        auto text = RichTextTable::make(2, 3);
        text.editStyles({0, 6}, [&](ParagraphStyle& style) {
            auto cell = *style.cells[0];
            cell.geometry.width = 100;
            for (std::size_t side = 0; side < borders.size(); ++side) {
                cell.geometry.borders[side].width = borders[side];
            }
            style.cells[0] = std::make_shared<TextTableCell>(cell);
        });
        return text;
    };
    const std::vector<AttributedString> tables{narrow({10, 10, 10, 10}), narrow({0, 0, 0, 0}),
                                               narrow({300, 300, 300, 300}),
                                               narrow({10, 300, 10, 0}), narrow({0, 60, 0, 200})};
    for (std::size_t i = 0; i < tables.size(); ++i) {
        setText(document, tables[i], look());
        document.setTextWidth(100);
        document.size(); // lays it out
        auto block = document.begin();
        while (!QTextCursor(block).currentTable()) {
            block = block.next();
        }
        for (int cell = 0; cell < 6; ++cell, block = block.next()) {
            EXPECT_GE(block.layout()->lineAt(0).width(),
                      look().pixels(RichTextTable::kMinimumWidth) - 0.1)
                << "table " << i << " cell " << cell;
        }
    }
}

TEST_F(TextDocumentConversionTest, OnlyWhatIsAllCodeHasACodeBlocksPadding) {
    const CharacterAttributes code{.font = {.family = FontFamily::monospaced},
                                   .korvexCodeLanguage = "c",
                                   .korvexCodeBlock = true};
    const ParagraphStyle spaced{.lineSpacing = kCodeBlockLineSpacing};
    struct Case {
        const char* name;
        AttributedString text;
        double padding;
    };
    auto part = AttributedString(u"code", code, spaced);
    part.append(u" and words", {}, {});
    const double padding = look().codePaddingBeside();
    const std::vector<Case> cases{
        {"code", AttributedString(u"code\n", code, spaced), padding},
        {"an empty line of code", AttributedString(u"\n", code, spaced), padding},
        {"words with a block's line spacing", AttributedString(u"words\n", {}, spaced), 0},
        {"part of a paragraph", part, 0},
        {"code that is moved in", AttributedString(u"code", code, {.leftIndent = 400}),
         padding + look().pixels(400)},
    };
    for (const auto& each : cases) {
        setText(document, each.text, look());
        EXPECT_DOUBLE_EQ(document.begin().blockFormat().leftMargin(), each.padding) << each.name;
    }
}

TEST_F(TextDocumentConversionTest, ADamagedTableIsShownAsParagraphsAndKept) {
    const auto identity = tableOf(2);
    AttributedString lacking;
    lacking.append(u"a\n", {}, inCell(identity, 0, 0));
    lacking.append(u"b\n", {}, inCell(identity, 1, 1));
    AttributedString huge;
    huge.append(u"a\n", {},
                {.cells = {std::make_shared<TextTableCell>(
                     TextTableCell{.table = tableOf(1'000'000), .row = 2'000'000'000})}});
    const auto twice = table(u"ab", 2);
    for (const auto& text : {lacking, huge, joined({twice, plain(u"x\n"), twice})}) {
        EXPECT_TRUE(shown(text).isEquivalentTo(text));
        EXPECT_LE(tableCount(), 1);
    }
}

TEST_F(TextDocumentConversionTest, ATableThatQtChangedIsCompleteAndHasSensibleCells) {
    auto text = table(u"abcd", 2);
    auto geometry = CellGeometry{.width = 3'000, .padding = {160, 160, 160, 160}};
    geometry.borders.fill({10, Color::named(SystemColor::separator)});
    text.editStyles({0, text.length()}, [&](ParagraphStyle& style) {
        auto cell = std::make_shared<TextTableCell>(*style.cells.front());
        cell->geometry = geometry;
        style.cells = {cell};
    });
    setText(document, text, look());
    auto* const shownTable = qobject_cast<QTextTable*>(document.rootFrame()->childFrames().front());
    shownTable->insertRows(1, 1);
    shownTable->insertColumns(2, 1);
    const auto read = textOf(document);
    EXPECT_EQ(read.text(), u"a\nb\n\n\n\n\nc\nd\n\n");
    int place = 0;
    read.forEachParagraph([&](const AttributedString::ParagraphRun& run) {
        ASSERT_EQ(run.style.cells.size(), 1U);
        const auto& cell = *run.style.cells.front();
        EXPECT_EQ(cell.table, read.styleAt(0).cells.front()->table);
        EXPECT_EQ(cell.table->columns, 3);
        EXPECT_EQ(cell.row, place / 3);
        EXPECT_EQ(cell.column, place % 3);
        EXPECT_EQ(cell.geometry, geometry);
        ++place;
    });
    EXPECT_EQ(place, 9);
    TextDocument again;
    setText(again, read, look());
    EXPECT_TRUE(textOf(again).isEquivalentTo(read));
}

TEST_F(TextDocumentConversionTest, ParagraphsOfOneListStayInIt) {
    const auto list = std::make_shared<TextList>(TextList{.marker = u"{decimal}."});
    AttributedString text;
    text.append(u"one\ntwo\n", {}, {.lists = {list}});
    setText(document, text, look());
    QTextCursor cursor(&document);
    cursor.movePosition(QTextCursor::EndOfBlock);
    cursor.insertBlock(); // what the return key does
    cursor.insertText(QStringLiteral("between"));
    const auto read = textOf(document);
    EXPECT_EQ(read.text(), u"one\nbetween\ntwo\n");
    for (const std::size_t offset : {0U, 5U, 13U}) {
        EXPECT_EQ(read.styleAt(offset).lists, std::vector<TextListRef>{list});
    }
    EXPECT_EQ(itemCountOf(*document.begin().textList()), 3);
    cursor.select(QTextCursor::BlockUnderCursor);
    cursor.removeSelectedText();
    EXPECT_EQ(itemCountOf(*document.begin().textList()), 2);

    cursor.movePosition(QTextCursor::End);
    cursor.createList(QTextListFormat::ListUpperRoman);
    cursor.insertText(QStringLiteral("foreign"));
    const auto foreign = textOf(document);
    ASSERT_EQ(foreign.styleAt(foreign.length()).lists.size(), 1U);
    EXPECT_EQ(foreign.styleAt(foreign.length()).lists.front()->marker, u"{upper-roman}.");
}

TEST_F(TextDocumentConversionTest, AnItemThatComesOrGoesChangesNoOther) {
    const auto list = std::make_shared<TextList>(TextList{.marker = u"{decimal}."});
    AttributedString text;
    for (int item = 0; item < 100; ++item) {
        text.append(u"item\n", {}, {.lists = {list}});
    }
    setText(document, text, look());
    document.documentLayout(); // without one nobody is told of changes
    int most = 0;
    QObject::connect(&document, &QTextDocument::contentsChange, &document,
                     [&](int, int removed, int added) {
                         most = std::max({most, removed, added});
                     });
    auto cursor = QTextCursor(document.findBlockByNumber(50));
    cursor.insertBlock();
    cursor.setBlockFormat({});
    cursor.deletePreviousChar();
    EXPECT_GT(most, 0);
    EXPECT_LT(most, 20) << "what is laid out anew";
}

TEST_F(TextDocumentConversionTest, ASelectionReadsAsItsPartOfTheText) {
    const auto text = joined({plain(u"x\n"), table(u"abcdef", 3), plain(u"y")});
    setText(document, text, look());
    QTextCursor cursor(&document);
    cursor.setPosition(positionOf(document, 0));
    cursor.setPosition(positionOf(document, text.length()), QTextCursor::KeepAnchor);
    EXPECT_TRUE(textOf(cursor).isEquivalentTo(text));

    // From the cell of "b" to that of "f": a square of four.
    cursor.setPosition(positionOf(document, 4));
    cursor.setPosition(positionOf(document, 12), QTextCursor::KeepAnchor);
    ASSERT_TRUE(cursor.hasComplexSelection());
    EXPECT_TRUE(textOf(cursor).isEquivalentTo(table(u"bcef", 2)));
}

TEST_F(TextDocumentConversionTest, AWholeTableIsReplacedInItsPlace) {
    const auto before = table(u"abcd", 2);
    const auto after = table(u"ABCDEF", 2);
    for (const auto& [above, below] :
         {std::pair(plain(u"x\n"), plain(u"y\n")), std::pair(plain(u"\n"), plain(u"\n")),
          std::pair(plain(u""), plain(u"y"))}) {
        for (const auto& replacement : {after, plain(u"text\n"), plain(u"")}) {
            setText(document, joined({above, before, below}), look());
            QTextCursor cursor(&document);
            cursor.setPosition(positionOf(document, above.length()));
            cursor.setPosition(positionOf(document, above.length() + before.length()),
                               QTextCursor::KeepAnchor);
            insertText(cursor, replacement, look());
            EXPECT_TRUE(textOf(document).isEquivalentTo(joined({above, replacement, below})))
                << QString::fromStdU16String(textOf(document).text()).toStdString();
        }
    }
}

TEST_F(TextDocumentConversionTest, ChangedAttributesReachRunsEndsAndCells) {
    auto text = joined({plain(u"x\n"), table(u"ab", 2), plain(u"y")});
    text.editAttributes({1, 3}, [](CharacterAttributes& each) { each.font.isItalic = true; });
    setText(document, text, look());
    QTextCursor cursor(&document);
    cursor.select(QTextCursor::Document);
    const auto embolden = [](CharacterAttributes& each) { each.font.isBold = true; };
    changeAttributes(cursor, look(), embolden);
    auto expected = text;
    expected.editAttributes({0, expected.length()}, embolden);
    EXPECT_TRUE(textOf(document).isEquivalentTo(expected)) << "cells keep what they are";
    document.undo();
    EXPECT_TRUE(isUndone(text));
}

} // namespace
} // namespace korvex::ui
