#include "richtext/table/RichTextTable.h"
#include "richtext/table/TableLayout.h"
#include "richtext/text/HeadingLevel.h"

#include <algorithm>
#include <utility>

namespace korvex::richtext {

namespace {

/// Where a table begins: its first paragraph and the tables around it.
struct Beginning {
    std::size_t line;
    std::size_t depth;
};

std::optional<Beginning> beginningOf(const std::vector<Line>& lines, const TextTableRef& table) {
    for (std::size_t i = 0; i < lines.size(); ++i) {
        const auto& cells = lines[i].style->cells;
        const auto found = std::find_if(cells.begin(), cells.end(),
                                        [&](const auto& cell) { return cell->table == table; });
        if (found != cells.end()) {
            return Beginning{i, static_cast<std::size_t>(found - cells.begin())};
        }
    }
    return std::nullopt;
}

/// Paragraphs that stand one after the other are copied in one go.
AttributedString copyOf(const AttributedString& text, std::span<const Line> lines) {
    AttributedString result;
    for (std::size_t i = 0; i < lines.size();) {
        auto range = lines[i].range;
        for (++i; i < lines.size() && lines[i].range.location == range.end(); ++i) {
            range.length += lines[i].range.length;
        }
        result.append(text.slice(range));
    }
    if (!result.isEmpty() && result.text().back() != u'\n') {
        result.append(u"\n", result.attributesAt(result.length()), {});
    }
    return result;
}

AttributedString emptyParagraph(const CharacterAttributes& attributes,
                                std::vector<TextTableCellRef> cells) {
    return AttributedString(u"\n", attributes, {.cells = std::move(cells)});
}

template <typename T>
void move(std::vector<T>& items, std::int32_t from, std::int32_t to) {
    const auto first = items.begin();
    if (from < to) {
        std::rotate(first + from, first + from + 1, first + to + 1);
    } else {
        std::rotate(first + to, first + from, first + from + 1);
    }
}

} // namespace

std::optional<RichTextTable::Grid> RichTextTable::Grid::read(const AttributedString& text,
                                                             const TextTableRef& table) {
    const auto lines = linesOf(text);
    const auto beginning = beginningOf(lines, table);
    if (!beginning) {
        return std::nullopt;
    }
    const auto first = beginning->line;
    const auto depth = beginning->depth;
    std::vector<Line> own;
    std::vector<Line> others;
    auto ownEnd = first;
    for (auto i = first; i < lines.size(); ++i) {
        const auto* const cell = lines[i].cell(depth);
        const auto isOwn =
            cell && (*cell)->table == table && lines[i].isBeside(lines[first], depth);
        (isOwn ? own : others).push_back(lines[i]);
        ownEnd = isOwn ? i + 1 : ownEnd;
    }
    others.resize(ownEnd - first - own.size());

    const auto layout = layoutOf(own, depth);
    if (!layout) {
        return std::nullopt;
    }
    Grid grid;
    grid.m_depth = depth;
    grid.m_columnWidths = layout->widths;
    const auto& cells = lines[first].style->cells;
    const std::vector<TextTableCellRef> outer(cells.begin(),
                                              cells.begin() + static_cast<std::ptrdiff_t>(depth));
    for (std::int32_t row = 0; row < layout->rows; ++row) {
        auto& contents = grid.m_rows.emplace_back();
        for (std::int32_t column = 0; column < layout->columns; ++column) {
            const auto& place = layout->at(row, column);
            if (!place.empty()) {
                contents.push_back(copyOf(text, place));
                continue;
            }
            auto empty = outer;
            empty.push_back(std::make_shared<TextTableCell>(
                TextTableCell{.table = table,
                              .row = row,
                              .column = column,
                              .geometry = layout->geometryBeside(row, depth)}));
            contents.push_back(emptyParagraph(newCellAttributes(row), std::move(empty)));
        }
    }

    const auto isOutside = [depth](const Line& line) { return line.cell(depth) == nullptr; };
    const auto* const next = ownEnd < lines.size() ? &lines[ownEnd] : nullptr;
    const auto isFollowed = next && isOutside(*next) && next->isBeside(lines[first], depth);
    if (others.empty() ? !isFollowed : !isOutside(others.front())) {
        grid.m_after.append(emptyParagraph({}, outer));
    }
    grid.m_after.append(copyOf(text, others));
    auto end = lines[ownEnd - 1].range.end();
    if (isFollowed && text.text()[next->range.location] == u'\n') {
        grid.m_after.append(text.slice(next->range));
        end = next->range.end();
    } else if (!isFollowed && !others.empty() && !isOutside(others.back())) {
        grid.m_after.append(emptyParagraph({}, outer));
    }
    grid.m_range = {lines[first].range.location, end - lines[first].range.location};
    grid.m_needsRepair = layout->isDamaged || !others.empty() || !isFollowed;
    return grid;
}

AttributedString RichTextTable::Grid::attributedString() const {
    const auto table = std::make_shared<TextTable>(TextTable{.columns = columnCount()});
    AttributedString result;
    for (std::int32_t row = 0; row < rowCount(); ++row) {
        for (std::int32_t column = 0; column < columnCount(); ++column) {
            auto content = m_rows[static_cast<std::size_t>(row)][static_cast<std::size_t>(column)];
            TextTableCell cell{.table = table, .row = row, .column = column};
            cell.geometry = cellOf(content).geometry;
            cell.geometry.width = m_columnWidths[static_cast<std::size_t>(column)];
            const auto ref = std::make_shared<TextTableCell>(std::move(cell));
            content.editStyles({0, content.length()},
                               [&](ParagraphStyle& style) { style.cells[m_depth] = ref; });
            result.append(content);
        }
    }
    result.append(m_after);
    return result;
}

bool RichTextTable::Grid::apply(const Edit& edit) {
    switch (edit.kind) {
    case Edit::Kind::insertRow:
        return insertRow(edit);
    case Edit::Kind::duplicateRow:
        return duplicateRow(edit);
    case Edit::Kind::deleteRow:
        return deleteRow(edit);
    case Edit::Kind::moveRow:
        return moveRow(edit);
    case Edit::Kind::insertColumn:
        return insertColumn(edit);
    case Edit::Kind::duplicateColumn:
        return duplicateColumn(edit);
    case Edit::Kind::deleteColumn:
        return deleteColumn(edit);
    case Edit::Kind::moveColumn:
        return moveColumn(edit);
    case Edit::Kind::resizeColumn:
        return resizeColumn(edit);
    }
    return false;
}

bool RichTextTable::Grid::insertRow(const Edit& edit) {
    if (!hasRow(edit.index) || rowCount() == kMaximumRows) {
        return false;
    }
    Row added;
    for (const auto& neighbour : m_rows[static_cast<std::size_t>(edit.index)]) {
        added.push_back(emptyLike(neighbour, newCellAttributes(edit.index)));
    }
    const auto place = edit.index + (edit.where == Edit::Where::after ? 1 : 0);
    if (edit.index == 0) {
        takeHeaderLook(place == 0 ? m_rows.front() : added);
    }
    m_rows.insert(m_rows.begin() + place, std::move(added));
    return true;
}

bool RichTextTable::Grid::duplicateRow(const Edit& edit) {
    if (!hasRow(edit.index) || rowCount() == kMaximumRows) {
        return false;
    }
    Row copy;
    for (const auto& content : m_rows[static_cast<std::size_t>(edit.index)]) {
        copy.push_back(withTablesOfItsOwn(content, m_depth + 1));
    }
    if (edit.index == 0) {
        takeHeaderLook(copy);
    }
    m_rows.insert(m_rows.begin() + edit.index + 1, std::move(copy));
    return true;
}

bool RichTextTable::Grid::deleteRow(const Edit& edit) {
    if (!hasRow(edit.index) || rowCount() == 1) {
        return false;
    }
    if (edit.index == 0) {
        giveHeaderLook(m_rows[0], m_rows[1]);
    }
    m_rows.erase(m_rows.begin() + edit.index);
    return true;
}

bool RichTextTable::Grid::moveRow(const Edit& edit) {
    if (!hasRow(edit.index) || !hasRow(edit.target) || edit.index == edit.target) {
        return false;
    }
    move(m_rows, edit.index, edit.target);
    if (edit.index == 0 || edit.target == 0) {
        auto& former = m_rows[edit.index == 0 ? static_cast<std::size_t>(edit.target) : 1];
        giveHeaderLook(former, m_rows[0]);
        takeHeaderLook(former);
    }
    return true;
}

bool RichTextTable::Grid::insertColumn(const Edit& edit) {
    if (!hasColumn(edit.index) || columnCount() == kMaximumColumns) {
        return false;
    }
    const auto place = edit.index + (edit.where == Edit::Where::after ? 1 : 0);
    for (std::int32_t row = 0; row < rowCount(); ++row) {
        auto& contents = m_rows[static_cast<std::size_t>(row)];
        contents.insert(
            contents.begin() + place,
            emptyLike(contents[static_cast<std::size_t>(edit.index)], newCellAttributes(row)));
    }
    m_columnWidths.insert(m_columnWidths.begin() + place, std::nullopt);
    return true;
}

bool RichTextTable::Grid::duplicateColumn(const Edit& edit) {
    if (!hasColumn(edit.index) || columnCount() == kMaximumColumns) {
        return false;
    }
    for (auto& contents : m_rows) {
        contents.insert(
            contents.begin() + edit.index + 1,
            withTablesOfItsOwn(contents[static_cast<std::size_t>(edit.index)], m_depth + 1));
    }
    const auto width = m_columnWidths[static_cast<std::size_t>(edit.index)];
    m_columnWidths.insert(m_columnWidths.begin() + edit.index + 1, width);
    return true;
}

bool RichTextTable::Grid::deleteColumn(const Edit& edit) {
    if (!hasColumn(edit.index) || columnCount() == 1) {
        return false;
    }
    for (auto& contents : m_rows) {
        contents.erase(contents.begin() + edit.index);
    }
    m_columnWidths.erase(m_columnWidths.begin() + edit.index);
    return true;
}

bool RichTextTable::Grid::moveColumn(const Edit& edit) {
    if (!hasColumn(edit.index) || !hasColumn(edit.target) || edit.index == edit.target) {
        return false;
    }
    for (auto& contents : m_rows) {
        move(contents, edit.index, edit.target);
    }
    move(m_columnWidths, edit.index, edit.target);
    return true;
}

bool RichTextTable::Grid::resizeColumn(const Edit& edit) {
    if (!hasColumn(edit.index)) {
        return false;
    }
    auto width = edit.width;
    if (width) {
        width = std::clamp(*width, kMinimumWidth, kMaximumWidth);
    }
    return std::exchange(m_columnWidths[static_cast<std::size_t>(edit.index)], width) != width;
}

const TextTableCell& RichTextTable::Grid::cellOf(const AttributedString& content) const {
    return *content.styleAt(0).cells[m_depth];
}

AttributedString RichTextTable::Grid::emptyLike(const AttributedString& neighbour,
                                                const CharacterAttributes& attributes) const {
    auto cells = neighbour.styleAt(0).cells;
    cells.resize(m_depth + 1);
    return emptyParagraph(attributes, std::move(cells));
}

void RichTextTable::Grid::setBackground(AttributedString& content,
                                        std::optional<Color> background) const {
    content.editStyles({0, content.length()}, [&](ParagraphStyle& style) {
        auto cell = *style.cells[m_depth];
        cell.geometry.background = background;
        style.cells[m_depth] = std::make_shared<TextTableCell>(std::move(cell));
    });
}

void RichTextTable::Grid::giveHeaderLook(const Row& from, Row& to) const {
    for (std::size_t column = 0; column < to.size(); ++column) {
        auto& content = to[column];
        const auto& background = cellOf(from[column]).geometry.background;
        setBackground(content, background.value_or(Color::named(SystemColor::headerFill)));
        content.editAttributes({0, content.length()}, [](CharacterAttributes& attributes) {
            if (!attributes.isCode() && !headingLevel(attributes.font)) {
                attributes.font.isBold = true;
                attributes.font.size = kBaseFontSize;
            }
        });
    }
}

void RichTextTable::Grid::takeHeaderLook(Row& row) const {
    for (auto& content : row) {
        setBackground(content, std::nullopt);
        content.editAttributes({0, content.length()}, [](CharacterAttributes& attributes) {
            if (!attributes.isCode() && !headingLevel(attributes.font)) {
                attributes.font.isBold = false;
            }
        });
    }
}

} // namespace korvex::richtext
