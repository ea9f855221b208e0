#pragma once

#include "richtext/text/AttributedStringBuilder.h"
#include "ui/text/TextFormats.h"

#include <QTextFrame>

#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace korvex::ui {

/// Reads a QTextDocument. Lists and tables that came from a text are the same objects again; what
/// Qt made or changed becomes objects that say what is there now. For one reading.
class TextDocumentReader {
public:
    explicit TextDocumentReader(const QTextDocument& document) : m_document(document) {}
    virtual ~TextDocumentReader() = default;
    TextDocumentReader(const TextDocumentReader&) = delete;
    TextDocumentReader& operator=(const TextDocumentReader&) = delete;

    richtext::AttributedString read();

protected:
    /// What a document's formats say; asked once for each that occurs.
    virtual richtext::CharacterAttributes attributes(const QTextCharFormat& format,
                                                     const QTextBlockFormat& block) const;
    virtual richtext::ParagraphStyle style(const QTextBlockFormat& format) const;
    /// What a list is that Qt made.
    virtual richtext::TextList list(const QTextListFormat& format) const;
    /// Whether the block is no paragraph of the text.
    virtual bool isLeftOut(const QTextBlock& block) const;

private:
    using Builder = richtext::AttributedString::Builder;
    struct Cell {
        QTextTableCell place;
        richtext::TextTableCellRef cell;
    };
    struct Known {
        richtext::AttributedString::AttributesId id = 0;
        /// What a stand-in stands for; 0 for what is no stand-in.
        char16_t unit = 0;
    };

    void readFrame(QTextFrame::iterator from, const QTextFrame::iterator& to);
    void readTable(const QTextTable& table);
    /// Row by row, without places that another cell covers.
    std::vector<Cell> cellsOf(const QTextTable& table);
    void readBlock(const QTextBlock& block);
    void append(const QString& text, Known known);
    Known known(int charFormat, const QTextCharFormat& format, const QTextBlock& block);
    richtext::AttributedString::StyleId styleId(const QTextBlock& block);
    const std::vector<richtext::TextListRef>& listsOf(const QTextList& list);

    const QTextDocument& m_document;
    Builder m_builder;
    std::vector<richtext::TextTableCellRef> m_cells;
    std::unordered_set<const richtext::TextTable*> m_tables;
    std::unordered_map<const QTextList*, std::vector<richtext::TextListRef>> m_lists;
    /// Those of the last item, in which a list that Qt made may stand.
    std::vector<richtext::TextListRef> m_lastLists;
    /// The key holds the numbers of the two formats.
    std::unordered_map<std::uint64_t, Known> m_attributes;
    /// The key is the number of the block's format. This holds for the cell that is being read.
    std::unordered_map<int, richtext::AttributedString::StyleId> m_styles;
};

} // namespace korvex::ui
