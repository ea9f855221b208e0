#pragma once

#include "base/Utf16.h"
#include "richtext/text/AttributedString.h"

#include <algorithm>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace korvex::tests {

/// Every table of a text that is not inside another, in text order.
inline std::vector<richtext::TextTableRef> outerTables(const richtext::AttributedString& text) {
    std::vector<richtext::TextTableRef> result;
    text.forEachStyleRun([&](const richtext::AttributedString::ParagraphRun& run) {
        const auto& cells = run.style.cells;
        if (!cells.empty() &&
            std::find(result.begin(), result.end(), cells.front()->table) == result.end()) {
            result.push_back(cells.front()->table);
        }
    });
    return result;
}

/// Paragraphs as one line each: "A01:text" stands in table A, row 0, column 1, "A01.B00:text" in
/// table B inside of that cell, ":text" in no table. Lines with the same place share the cell; an
/// apostrophe behind a place means another cell there.
class TableNotation {
public:
    /// Tables have as many columns as `columns` says, or two.
    explicit TableNotation(std::map<char, std::int32_t> columns = {})
        : m_columns(std::move(columns)) {}

    richtext::AttributedString text(const std::vector<std::string>& lines) {
        richtext::AttributedString result;
        for (const auto& line : lines) {
            const auto colon = line.find(':');
            richtext::ParagraphStyle style;
            for (std::size_t start = 0; start < colon;) {
                const auto end = std::min(line.find('.', start), colon);
                style.cells.push_back(cell(line.substr(0, end), line.substr(start, 3)));
                start = end + 1;
            }
            result.append(base::utf16(line.substr(colon + 1)) + u"\n", {}, style);
        }
        return result;
    }

    /// The other way round; tables are named in the order in which they come.
    static std::vector<std::string> lines(const richtext::AttributedString& text) {
        std::vector<std::string> result;
        std::map<const richtext::TextTable*, char> names;
        text.forEachParagraph([&](const richtext::AttributedString::ParagraphRun& paragraph) {
            std::string line;
            for (const auto& cell : paragraph.style.cells) {
                const auto next = static_cast<char>('A' + names.size());
                const auto name = names.try_emplace(cell->table.get(), next).first->second;
                line += (line.empty() ? "" : ".") + std::string(1, name) +
                        std::to_string(cell->row) + std::to_string(cell->column);
            }
            auto units = text.text().substr(paragraph.range.location, paragraph.range.length);
            if (units.back() == u'\n') {
                units.pop_back();
            }
            result.push_back(line + ":" + base::utf8(units));
        });
        return result;
    }

private:
    richtext::TextTableCellRef cell(const std::string& path, const std::string& place) {
        auto& known = m_cells[path];
        if (!known) {
            auto& table = m_tables[place[0]];
            if (!table) {
                const auto columns = m_columns.find(place[0]);
                table = std::make_shared<richtext::TextTable>(richtext::TextTable{
                    .columns = columns == m_columns.end() ? 2 : columns->second});
            }
            known = std::make_shared<richtext::TextTableCell>(richtext::TextTableCell{
                .table = table, .row = place[1] - '0', .column = place[2] - '0'});
        }
        return known;
    }

    std::map<char, std::int32_t> m_columns;
    std::map<char, richtext::TextTableRef> m_tables;
    std::map<std::string, richtext::TextTableCellRef> m_cells;
};

} // namespace korvex::tests
