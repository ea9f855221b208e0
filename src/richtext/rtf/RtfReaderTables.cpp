#include "richtext/rtf/RtfReaderTables.h"

#include <algorithm>
#include <iterator>
#include <limits>

namespace korvex::richtext::rtf {

namespace {

/// A line that says no width is drawn this wide.
constexpr Twips kThinLine = 10;

} // namespace

TableBuilder::TableBuilder(Budget& budget, const ColorTable& colors)
    : m_budget(budget), m_colors(colors) {
    m_levels.reserve(kMaximumTableDepth);
}

TableBuilder::Level& TableBuilder::level(std::size_t depth) {
    if (m_levels.size() < depth) {
        m_levels.resize(depth);
    }
    m_openDepth = std::max(m_openDepth, depth);
    return m_levels[depth - 1];
}

void TableBuilder::definitionWord(std::size_t depth, const Keyword& keyword,
                                  std::int32_t parameter) {
    auto& place = level(depth);
    if (keyword.action == Action::rowDefault) {
        place.isLastRow = false;
    }
    place.definition.word(keyword, parameter, m_dialect);
}

const std::vector<TextTableCellRef>& TableBuilder::cells(std::size_t depth) {
    endTables(depth);
    m_cells.clear();
    for (std::size_t outer = 1; outer <= depth && openCell(level(outer)); ++outer) {
        m_cells.push_back(level(outer).cell);
    }
    return m_cells;
}

bool TableBuilder::isCellOpen(std::size_t depth) const {
    return depth <= m_levels.size() && m_levels[depth - 1].cell;
}

bool TableBuilder::isPlaceholderNext(std::size_t depth) const {
    if (depth > m_levels.size()) {
        return false;
    }
    const auto& level = m_levels[depth - 1];
    const auto* const definition = level.definition.cell(level.slots.size());
    return definition && definition->isPlaceholder();
}

bool TableBuilder::isRowFull(std::size_t depth) const {
    return depth <= m_levels.size() &&
           m_levels[depth - 1].slots.size() + 1 >= static_cast<std::size_t>(kMaximumColumns);
}

bool TableBuilder::openCell(Level& level) {
    // A cell costs itself, its edges, and what keeps them.
    constexpr std::size_t kCost = sizeof(TextTableCell) + 8 * sizeof(Placed);
    if (level.cell) {
        return true;
    }
    if (m_budget.isExhausted()) {
        return false;
    }
    if (!level.table) {
        m_budget.spend(kCost);
        level.table = std::make_shared<TextTable>();
    }
    m_budget.spend(kCost);
    level.cell = std::make_shared<TextTableCell>();
    level.cell->table = level.table;
    return true;
}

void TableBuilder::endCell(std::size_t depth) {
    endTables(depth);
    auto& level = this->level(depth);
    // The last place is kept for a cell with words.
    const std::size_t kept = level.cell ? 0 : 1;
    if (level.slots.size() + kept < static_cast<std::size_t>(kMaximumColumns)) {
        level.slots.push_back(std::move(level.cell));
    }
    level.cell.reset();
}

void TableBuilder::endRow(std::size_t depth) {
    endTables(depth);
    auto& level = this->level(depth);
    if (level.cell) {
        endCell(depth);
    }
    if (!level.slots.empty() && level.table) {
        place(level);
        ++level.row;
    }
    level.slots.clear();
    if (level.isLastRow) {
        level.isLastRow = false;
        endTable(level);
    }
}

void TableBuilder::endTables(std::size_t depth) {
    for (; m_openDepth > depth; --m_openDepth) {
        auto& level = m_levels[m_openDepth - 1];
        if (level.cell) {
            level.slots.push_back(std::move(level.cell));
        }
        if (!level.slots.empty() && level.table) {
            place(level);
        }
        endTable(level);
    }
}

void TableBuilder::endTable(Level& level) {
    if (!level.haveRowsEqualSlots && level.hasAllEdges) {
        placeByEdges(level);
    }
    if (level.hasRowSpans) {
        separateRows(level);
    }
    // What the row definition says holds on.
    level = {.definition = std::move(level.definition)};
}

/// Gives the cells of a finished row their places and looks, and spans to those they meet.
void TableBuilder::place(Level& level) {
    std::vector<Reaching> reaching;
    TextTableCell* spanning = nullptr;
    static const CellDefinition kPlain;
    for (std::size_t slot = 0; slot < level.slots.size(); ++slot) {
        const auto* const described = level.definition.cell(slot);
        const auto& definition = described ? *described : kPlain;
        if (const auto& cell = level.slots[slot]) {
            cell->row = level.row;
            cell->column = static_cast<std::int32_t>(slot);
            cell->geometry = geometry(level, slot, definition);
            spanning = definition.startsColumns ? cell.get() : nullptr;
            if (definition.startsRows) {
                reaching.push_back({key(level, slot), cell});
            }
        } else if (definition.isMerged) {
            if (spanning && !definition.isVerticallyMerged) {
                ++spanning->columnSpan;
            }
        } else {
            spanning = nullptr;
            const auto above = std::lower_bound(
                level.reaching.begin(), level.reaching.end(), key(level, slot),
                [](const Reaching& entry, std::int64_t sought) { return entry.key < sought; });
            if (definition.isVerticallyMerged && above != level.reaching.end() &&
                above->key == key(level, slot)) {
                ++above->cell->rowSpan;
                level.hasRowSpans = true;
                reaching.push_back(*above);
            }
        }
    }
    level.reaching = std::move(reaching);
    const auto columns = std::max(level.slots.size(), level.definition.size());
    level.table->columns = std::max(level.table->columns, static_cast<std::int32_t>(columns));
    noteCells(level);
}

std::int64_t TableBuilder::key(const Level& level, std::size_t slot) const {
    return m_dialect == RtfDialect::native ? static_cast<std::int64_t>(slot) : left(level, slot);
}

Twips TableBuilder::left(const Level& level, std::size_t slot) {
    const auto* const before = slot == 0 ? nullptr : level.definition.cell(slot - 1);
    return before ? before->edge : level.definition.left();
}

CellGeometry TableBuilder::geometry(const Level& level, std::size_t slot,
                                    const CellDefinition& definition) const {
    CellGeometry geometry;
    for (std::size_t side = 0; side < definition.borders.size(); ++side) {
        const auto& border = definition.borders[side];
        const auto width = std::max(border.width.value_or(kThinLine), 0);
        geometry.borders[side] = {border.hasLine ? width : 0, m_colors.color(border.color)};
        geometry.padding[side] = definition.padding[side].value_or(level.definition.padding(side));
    }
    geometry.background = m_colors.color(definition.fill);
    geometry.verticalAlignment = definition.alignment;
    if (definition.isWidthInTwips) {
        geometry.width = definition.width;
    }
    if (m_dialect == RtfDialect::office) {
        // There widths are those of the whole cell, and edges say them as well.
        auto total = geometry.width.value_or(0);
        if (total <= 0) {
            total = definition.edge - left(level, slot);
        }
        const auto padding = geometry.padding[static_cast<std::size_t>(Side::left)] +
                             geometry.padding[static_cast<std::size_t>(Side::right)];
        geometry.width = total > 0 ? std::optional(std::clamp(total - padding, 1, kMaximumLength))
                                   : std::nullopt;
    }
    return geometry;
}

void TableBuilder::noteCells(Level& level) const {
    level.haveRowsEqualSlots =
        level.haveRowsEqualSlots &&
        (m_dialect == RtfDialect::native ||
         level.slotsPerRow.value_or(level.slots.size()) == level.slots.size());
    level.slotsPerRow = level.slots.size();
    for (std::size_t slot = 0; slot < level.slots.size(); ++slot) {
        const auto& cell = level.slots[slot];
        if (!cell) {
            continue;
        }
        const auto last = slot + static_cast<std::size_t>(cell->columnSpan) - 1;
        const auto* const definition = level.definition.cell(last);
        const auto right = definition ? definition->edge : 0;
        level.hasAllEdges = level.hasAllEdges && definition && right > left(level, slot);
        level.cells.push_back({cell, left(level, slot), right});
    }
}

/// Columns are what lies between two neighbouring edges of any rows.
void TableBuilder::placeByEdges(Level& level) {
    /// Edges that are meant to be the same need not be.
    constexpr Twips kTolerance = 20;
    std::vector<Twips> edges;
    edges.reserve(2 * level.cells.size());
    for (const auto& placed : level.cells) {
        edges.push_back(placed.left);
        edges.push_back(placed.right);
    }
    std::sort(edges.begin(), edges.end());
    std::vector<Twips> columns;
    for (const auto edge : edges) {
        if (columns.empty() || edge > columns.back() + kTolerance) {
            columns.push_back(edge);
        }
    }
    if (columns.size() < 2 || columns.size() > static_cast<std::size_t>(kMaximumColumns) + 1) {
        return;
    }
    const auto indexOf = [&](Twips edge) {
        const auto after = std::upper_bound(columns.begin(), columns.end(), edge);
        return static_cast<std::int32_t>(after - columns.begin()) - 1;
    };
    struct Place {
        std::int32_t column;
        std::int32_t columnSpan;
    };
    std::vector<Place> before;
    before.reserve(level.cells.size());
    for (const auto& [cell, left, right] : level.cells) {
        before.push_back({cell->column, cell->columnSpan});
        cell->column = indexOf(left);
        cell->columnSpan = indexOf(right) - cell->column;
    }
    if (areRowsInOrder(level)) {
        level.table->columns = static_cast<std::int32_t>(columns.size()) - 1;
        return;
    }
    for (std::size_t index = 0; index < before.size(); ++index) {
        level.cells[index].cell->column = before[index].column;
        level.cells[index].cell->columnSpan = before[index].columnSpan;
    }
}

/// Whether no cell covers the place of another one in its row.
bool TableBuilder::areRowsInOrder(const Level& level) {
    std::int32_t row = -1;
    std::int32_t column = 0;
    for (const auto& placed : level.cells) {
        const auto& cell = *placed.cell;
        column = cell.row == row ? column : 0;
        row = cell.row;
        if (cell.column < column || cell.columnSpan < 1) {
            return false;
        }
        column = cell.column + cell.columnSpan;
    }
    return true;
}

/// A cell that reaches down ends where another one stands. Cells come row by row.
void TableBuilder::separateRows(Level& level) {
    std::array<TextTableCell*, kMaximumColumns> above{};
    for (const auto& placed : level.cells) {
        auto& cell = *placed.cell;
        for (auto column = cell.column; column < cell.column + cell.columnSpan; ++column) {
            auto*& reaching = above[static_cast<std::size_t>(column)];
            if (reaching && reaching->row + reaching->rowSpan > cell.row) {
                reaching->rowSpan = std::max(cell.row - reaching->row, 1);
            }
            reaching = &cell;
        }
    }
}

} // namespace korvex::richtext::rtf
