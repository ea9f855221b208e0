#pragma once

#include "richtext/text/AttributedString.h"
#include "ui/text/DrawnLists.h"
#include "ui/text/TextFormats.h"

#include <optional>
#include <span>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace korvex::ui {

/// Puts formatted text into a QTextDocument at a cursor. In a document a table ends the paragraph
/// before it, so the end of a paragraph is written only when it is known what follows.
class TextDocumentWriter {
public:
    /// Both must outlive the writer.
    TextDocumentWriter(QTextCursor& cursor, const TextLook& look);

    /// Puts the text in the place of the selection, in one step of undo. The cursor ends after the
    /// text.
    void replaceSelection(const richtext::AttributedString& text);

private:
    struct Paragraph {
        richtext::TextRange range;
        const richtext::ParagraphStyle* style;
        bool hasFeed;
    };
    using Paragraphs = std::span<const Paragraph>;
    struct Table {
        int rows = 0;
        std::vector<richtext::TextTableCellRef> cells;
        /// Each cell has its paragraphs here, in the order of `cells`.
        std::vector<Paragraphs> contents;
    };
    /// What the cursor stands in.
    enum class Place {
        /// The start of a paragraph whose style is to be set.
        fresh,
        /// A paragraph that keeps its style.
        inside,
        /// A paragraph that is complete; its end is still to be written.
        ended,
    };
    /// What comes after the text.
    struct Rest {
        enum class Kind {
            /// The paragraph that the text was put into, or what is left of it.
            paragraph,
            /// The same, but its start was not taken away.
            wholeParagraph,
            /// A block that only Qt needs.
            gap,
        };
        Kind kind = Kind::paragraph;
        QTextBlockFormat block;
        QTextCharFormat end;
    };

    Rest removeSelection();
    void writeInline();
    void finish(const Rest& rest);
    void write(Paragraphs paragraphs, std::size_t depth);
    void writeParagraph(const Paragraph& paragraph, std::size_t depth);
    void writeTable(const Table& table, std::size_t depth);
    void writeRuns(richtext::TextRange range);
    /// Sets the format's list; false when there is none yet for these.
    bool setList(QTextBlockFormat& format, const std::vector<richtext::TextListRef>& lists);
    void markGap();
    const QTextCharFormat& charFormat(const richtext::CharacterAttributes& attributes);
    /// The attributes that the end of the paragraph has.
    const richtext::CharacterAttributes& endOf(const Paragraph& paragraph) const;
    BlockKind kindOf(const Paragraph& paragraph) const;
    /// Absent when these paragraphs are not one table, whole and in order.
    std::optional<Table> tableOf(Paragraphs paragraphs, std::size_t depth) const;

    QTextCursor& m_cursor;
    const TextLook& m_look;
    const richtext::AttributedString* m_text = nullptr;
    Place m_place = Place::fresh;
    /// The paragraph is a cell's first, and the cell has the attributes of its end already.
    bool m_hasEnd = false;
    std::unordered_set<const richtext::TextTable*> m_writtenTables;
    DrawnLists m_lists;
    /// The formats by the address of their attributes, which stay where they are while the text is
    /// written.
    std::unordered_map<const richtext::CharacterAttributes*, QTextCharFormat> m_charFormats;
};

} // namespace korvex::ui
