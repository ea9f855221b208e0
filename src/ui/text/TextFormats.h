#pragma once

#include "richtext/text/ParagraphStyle.h"
#include "ui/text/TextLook.h"

#include <QTextBlock>
#include <QTextCursor>
#include <QTextFormat>
#include <QTextList>
#include <QTextTable>

#include <functional>
#include <optional>
#include <vector>

namespace korvex::ui {

/// How attributes stand in the formats of a QTextDocument: by Qt's own properties where Qt can say
/// it, beside them by these. A format that another part of Qt made reads as what it looks like.
enum TextProperty {
    /// LineStyle as int, where it is not the one that is drawn.
    kUnderlineProperty = QTextFormat::UserProperty + 1,
    kStrikethroughProperty,
    /// MilliPoints as int, where it is not the base size.
    kFontSizeProperty,
    /// QString and bool.
    kCodeLanguageProperty,
    kCodeBlockProperty,
    /// Colors as uint.
    kForegroundProperty,
    kBackgroundProperty,
    kAttachmentProperty,
    /// A character that cannot stand in a document has one that stands for it: this is its UTF-16
    /// unit, as int.
    kUnitProperty,
    /// A block has a ParagraphStyle without its lists and cells.
    kStyleProperty,
    /// A block has the cells of a table that no QTextTable can show, as a
    /// std::vector<TextTableCellRef>.
    kCellsProperty,
    /// A list item has the number of its lists, as int. Its list's format moves it in, but an item
    /// is laid out anew, by an undo too, only where its own format changes.
    kDepthProperty,
    /// This block is no paragraph of the text: Qt needs it beside a table.
    kGapProperty,
    /// A list has a std::vector<TextListRef>, from the outermost to the list itself.
    kListsProperty,
    /// A table has its TextTableRef.
    kTableProperty,
    /// A cell has its TextTableCellRef.
    kCellProperty,
};

QTextCharFormat charFormatOf(const richtext::CharacterAttributes& attributes, const TextLook& look);
richtext::CharacterAttributes attributesOf(const QTextCharFormat& format);

/// All but the paragraph's lists and cells. A list item's own indents are not drawn: its list moves
/// it in. The distance to what is below is that to a paragraph of the same kind.
QTextBlockFormat blockFormatOf(const richtext::ParagraphStyle& style, BlockKind kind,
                               const TextLook& look);
/// The style that the block shows, without lists and cells.
richtext::ParagraphStyle styleOf(const QTextBlockFormat& format);
/// A block whose whole text belongs to a code block.
bool isCodeBlock(const QTextBlock& block);
/// The first character tells it, in an empty paragraph what is typed into it.
std::optional<richtext::HeadingLevel> headingOf(const QTextBlock& block);

/// `lists` must not be empty. Qt draws no markers of it: `paintUnderText` does.
QTextListFormat listFormatOf(const std::vector<richtext::TextListRef>& lists);
/// The lists that a drawn one stands for, from the outermost to its own; never empty.
std::vector<richtext::TextListRef> listsOf(const QTextList& list);
/// A TextList's marker for a list that Qt made.
std::u16string markerOf(const QTextListFormat& format);

/// How a table is drawn: with the same padding in all cells, and with thin lines where it has none
/// of its own. Where all its cells have the same borders on all sides each draws those on its right
/// and below, and the first ones of rows and columns the outer ones; else neighbours share theirs
/// and the wider one is seen. `look` must outlive it.
class TableFormats {
public:
    /// All cells of a table, whose columns are within the table; not empty.
    TableFormats(const std::vector<richtext::TextTableCellRef>& cells, const TextLook& look);

    const QTextTableFormat& table() const { return m_table; }
    void apply(const richtext::TextTableCellRef& cell, QTextTableCellFormat& format) const;

private:
    double widthOf(const richtext::TextTableCell& cell, richtext::Side side) const;

    const TextLook& m_look;
    /// No cell has a border.
    bool m_isBare;
    bool m_haveOneFrame;
    QTextTableFormat m_table;
};

/// Sets the attributes of a paragraph's end, which are those of text that is typed into it while it
/// is empty. In a cell the cell's own look stays.
void setEndAttributes(const QTextBlock& block, const richtext::CharacterAttributes& attributes,
                      const TextLook& look);
/// Changes the attributes of what is selected, run by run, ends of paragraphs included; without a
/// selection those of what is typed next. One step of undo.
void changeAttributes(QTextCursor& cursor, const TextLook& look,
                      const std::function<void(richtext::CharacterAttributes&)>& change);

/// An empty block that only Qt needs: between two tables, or at the start or the end of what a
/// table stands in.
bool isGap(const QTextBlock& block);
/// The blocks right before and right behind each table, in no order; one between two tables twice.
std::vector<QTextBlock> blocksBesideTables(const QTextDocument& document);

} // namespace korvex::ui
