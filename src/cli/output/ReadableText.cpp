#include "cli/output/ReadableText.h"

#include "cli/terminal/DisplayText.h"

#include "base/Utf16.h"
#include "richtext/text/ListMarker.h"

#include <algorithm>
#include <unordered_map>
#include <vector>

namespace korvex::cli {

namespace {

/// A column is made no wider than this for the sake of one long cell.
constexpr std::size_t kWidestColumn = 40;
constexpr std::size_t kIndentPerList = 2;
constexpr char16_t kLineSeparator = u'\u2028';

class Lines {
public:
    explicit Lines(const std::u16string& text) : m_text(text) {}

    void add(const richtext::AttributedString::ParagraphRun& paragraph) {
        auto text = m_text.substr(paragraph.range.location, paragraph.range.length);
        if (text.ends_with(u'\n')) {
            text.pop_back();
        }
        const auto isInTable = !paragraph.style.cells.empty();
        std::replace(text.begin(), text.end(), kLineSeparator, isInTable ? u' ' : u'\n');
        auto line = itemMarker(paragraph.style) + base::utf8(text);
        if (isInTable) {
            addToTable(paragraph.style.cells.front(), std::move(line));
        } else {
            finishTable();
            addLine(line);
        }
    }

    std::string take() {
        finishTable();
        return std::move(m_lines);
    }

private:
    std::string itemMarker(const richtext::ParagraphStyle& style) {
        if (style.lists.empty()) {
            return {};
        }
        const auto& list = *style.lists.back();
        const auto number = list.start + m_itemsBefore[&list]++;
        const auto marker = base::utf8(richtext::markerText(list, number));
        return std::string(kIndentPerList * (style.lists.size() - 1), ' ') + marker +
               (marker.empty() ? "" : " ");
    }

    void addToTable(const richtext::TextTableCellRef& cell, std::string text) {
        if (m_lastCell == cell) {
            m_rows.back().back().append(" ").append(text);
            return;
        }
        if (m_lastCell && m_lastCell->table != cell->table) {
            finishTable();
        }
        if (!m_lastCell || m_lastCell->row != cell->row) {
            m_rows.emplace_back();
        }
        m_rows.back().push_back(std::move(text));
        m_lastCell = cell;
    }

    void finishTable() {
        std::vector<std::size_t> widths;
        for (const auto& row : m_rows) {
            widths.resize(std::max(widths.size(), row.size()));
            for (std::size_t column = 0; column < row.size(); ++column) {
                const auto width = std::min(displayWidth(row[column]), kWidestColumn);
                widths[column] = std::max(widths[column], width);
            }
        }
        for (const auto& row : m_rows) {
            std::string line;
            for (std::size_t column = 0; column < row.size(); ++column) {
                line.append(column > 0 ? " | " : "").append(row[column]);
                const auto used = displayWidth(row[column]);
                if (column + 1 < row.size() && used < widths[column]) {
                    line.append(widths[column] - used, ' ');
                }
            }
            addLine(line);
        }
        m_rows.clear();
        m_lastCell.reset();
    }

    void addLine(std::string_view line) {
        m_lines.append(m_isFirst ? "" : "\n").append(line);
        m_isFirst = false;
    }

    const std::u16string& m_text;
    std::string m_lines;
    bool m_isFirst = true;
    std::unordered_map<const richtext::TextList*, std::int64_t> m_itemsBefore;
    std::vector<std::vector<std::string>> m_rows;
    richtext::TextTableCellRef m_lastCell;
};

} // namespace

std::string readableText(const richtext::AttributedString& text) {
    Lines lines(text.text());
    text.forEachParagraph([&](const auto& paragraph) { lines.add(paragraph); });
    return lines.take();
}

} // namespace korvex::cli
