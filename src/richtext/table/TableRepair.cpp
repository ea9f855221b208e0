#include "richtext/table/RichTextTable.h"
#include "richtext/table/TableLayout.h"
#include "richtext/text/AttributedStringBuilder.h"

#include <deque>
#include <unordered_map>
#include <unordered_set>

namespace korvex::richtext {

namespace {

/// Puts the paragraphs of a text into the order in which its tables are whole.
class Repair {
public:
    /// `lines` stand in the same cells of the tables around `depth`, and so does what comes back.
    std::vector<Line> repaired(std::span<const Line> lines, std::size_t depth);
    bool hasChanged() const { return m_hasChanged; }

private:
    struct Table {
        std::vector<Line> lines;
        std::size_t last = 0;
        bool isInterleaved = false;
        enum class State { unseen, kept, written } state = State::unseen;
    };

    void write(const TableLayout& layout, std::size_t depth, std::vector<Line>& out);
    void appendCell(std::span<const Line> lines, std::size_t depth, std::vector<Line>& out) {
        const auto inside = repaired(lines, depth + 1);
        out.insert(out.end(), inside.begin(), inside.end());
    }
    std::vector<Line> withParagraphsAfterTables(const std::vector<Line>& lines, std::size_t depth);
    const ParagraphStyle* made(ParagraphStyle style) {
        m_hasChanged = true;
        return &m_styles.emplace_back(std::move(style));
    }

    std::deque<ParagraphStyle> m_styles;
    /// Tables that a text has already; met again in another cell, one gets a copy of its own.
    std::unordered_set<const TextTable*> m_known;
    bool m_hasChanged = false;
};

std::vector<Line> Repair::repaired(std::span<const Line> lines, std::size_t depth) {
    const auto isInTable = [depth](const Line& line) { return line.cell(depth) != nullptr; };
    if (std::none_of(lines.begin(), lines.end(), isInTable)) {
        return {lines.begin(), lines.end()};
    }
    std::unordered_map<const TextTable*, Table> tables;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        if (const auto* const cell = lines[i].cell(depth)) {
            auto& table = tables[(*cell)->table.get()];
            table.isInterleaved =
                table.isInterleaved || (!table.lines.empty() && table.last + 1 != i);
            table.lines.push_back(lines[i]);
            table.last = i;
        }
    }
    std::vector<Line> out;
    out.reserve(lines.size() + tables.size());
    for (std::size_t i = 0; i < lines.size();) {
        const auto* const cell = lines[i].cell(depth);
        if (!cell) {
            out.push_back(lines[i++]);
            continue;
        }
        auto& table = tables[(*cell)->table.get()];
        if (table.state == Table::State::unseen) {
            const auto isShared = !m_known.insert((*cell)->table.get()).second;
            const auto layout = layoutOf(table.lines, depth);
            if (layout && (layout->isDamaged || table.isInterleaved || isShared)) {
                table.state = Table::State::written;
                write(*layout, depth, out);
            } else {
                table.state = Table::State::kept;
            }
        }
        auto end = i + 1;
        while (end < lines.size() && isInTable(lines[end]) && *lines[end].cell(depth) == *cell) {
            ++end;
        }
        if (table.state == Table::State::kept) {
            appendCell(lines.subspan(i, end - i), depth, out);
        }
        i = end;
    }
    return withParagraphsAfterTables(out, depth);
}

void Repair::write(const TableLayout& layout, std::size_t depth, std::vector<Line>& out) {
    const auto table = std::make_shared<TextTable>(TextTable{.columns = layout.columns});
    const auto first = std::find_if(layout.places.begin(), layout.places.end(),
                                    [](const auto& place) { return !place.empty(); });
    ParagraphStyle empty{.cells = first->front().style->cells};
    empty.cells.resize(depth + 1);
    std::vector<bool> isCovered(layout.places.size());
    for (std::int32_t row = 0; row < layout.rows; ++row) {
        for (std::int32_t column = 0; column < layout.columns; ++column) {
            const auto place = static_cast<std::size_t>(row * layout.columns + column);
            if (isCovered[place]) {
                continue;
            }
            const auto& old = layout.places[place];
            TextTableCell cell{.table = table, .row = row, .column = column};
            if (old.empty()) {
                cell.geometry = layout.geometryBeside(row, depth);
            } else {
                const auto& former = **old.front().cell(depth);
                const auto span = layout.freeSpan(place, former, isCovered);
                cell.rowSpan = span.rows;
                cell.columnSpan = span.columns;
                cell.geometry = former.geometry;
            }
            if (cell.columnSpan == 1) {
                cell.geometry.width = layout.widths[static_cast<std::size_t>(column)];
            }
            const auto ref = std::make_shared<TextTableCell>(std::move(cell));
            if (old.empty()) {
                empty.cells[depth] = ref;
                out.push_back({{}, made(empty)});
                continue;
            }
            auto lines = old;
            const ParagraphStyle* oldStyle = nullptr;
            const ParagraphStyle* newStyle = nullptr;
            for (auto& line : lines) {
                if (line.style != oldStyle) {
                    oldStyle = line.style;
                    auto style = *oldStyle;
                    style.cells[depth] = ref;
                    newStyle = made(std::move(style));
                }
                line.style = newStyle;
            }
            appendCell(lines, depth, out);
        }
    }
}

std::vector<Line> Repair::withParagraphsAfterTables(const std::vector<Line>& lines,
                                                    std::size_t depth) {
    std::vector<Line> out;
    out.reserve(lines.size() + 1);
    for (std::size_t i = 0; i < lines.size(); ++i) {
        out.push_back(lines[i]);
        const auto* const cell = lines[i].cell(depth);
        if (!cell) {
            continue;
        }
        const auto* const next = i + 1 < lines.size() ? lines[i + 1].cell(depth) : nullptr;
        const auto isLast = i + 1 == lines.size();
        if (isLast || (next && (*next)->table != (*cell)->table)) {
            ParagraphStyle style{.cells = lines[i].style->cells};
            style.cells.resize(depth);
            out.push_back({{}, made(std::move(style))});
        }
    }
    return out;
}

/// Writes lines as a text, and finds where an offset of the old text has gone.
class Rewriting {
public:
    explicit Rewriting(const AttributedString& old) : m_old(old) {
        m_builder.reserve(old.length());
    }

    AttributedString text(const std::vector<Line>& lines) {
        for (const auto& line : lines) {
            if (line.range.length > 0) {
                m_starts.emplace(line.range.location, m_builder.length());
            }
            append(line, &line == &lines.back() ? Position::last : Position::inside);
        }
        m_length = m_builder.length();
        m_addedAtEnd = lines.empty() || lines.back().range.length > 0 ? 0 : 1;
        return m_builder.take();
    }
    std::size_t moved(std::size_t offset) const {
        const auto paragraph = m_old.paragraphAt(offset);
        if (paragraph.length == 0) {
            return m_length - m_addedAtEnd;
        }
        return m_starts.at(paragraph.location) + offset - paragraph.location;
    }

private:
    enum class Position { inside, last };

    void append(const Line& line, Position position) {
        if (line.range.length == 0) {
            const auto& cells = line.style->cells;
            const auto attributes =
                cells.empty() ? CharacterAttributes() : newCellAttributes(cells.back()->row);
            m_builder.append(u'\n', m_builder.idOf(attributes));
        } else {
            const std::u16string_view units = m_old.text();
            m_old.forEachRun(line.range, [&](const AttributedString::CharacterRun& run) {
                m_builder.append(units.substr(run.range.location, run.range.length),
                                 m_builder.idOf(run.attributes));
            });
            if (position != Position::last && units[line.range.end() - 1] != u'\n') {
                m_builder.append(u'\n', m_builder.idOf(m_old.attributesAt(line.range.end() - 1)));
            }
        }
        m_builder.endParagraph(m_builder.idOf(*line.style));
    }

    const AttributedString& m_old;
    AttributedString::Builder m_builder;
    /// Of the old paragraphs, by where they began.
    std::unordered_map<std::size_t, std::size_t> m_starts;
    std::size_t m_length = 0;
    std::size_t m_addedAtEnd = 0;
};

} // namespace

RichTextTable::Repaired RichTextTable::repairingIncompleteTables(AttributedString text,
                                                                 TextRange selection) {
    if (!containsTable(text)) {
        return {std::move(text), selection};
    }
    Repair repair;
    const auto lines = repair.repaired(linesOf(text), 0);
    if (!repair.hasChanged()) {
        return {std::move(text), selection};
    }
    Rewriting rewriting(text);
    auto result = rewriting.text(lines);
    const auto start = rewriting.moved(std::min(selection.location, text.length()));
    const auto end = rewriting.moved(std::min(selection.end(), text.length()));
    return {std::move(result), {start, end > start ? end - start : 0}};
}

} // namespace korvex::richtext
