#include "richtext/rtf/RtfReaderTables.h"

#include <algorithm>
#include <iterator>
#include <limits>

namespace korvex::richtext::rtf {

namespace {

Twips limited(std::int32_t length) {
    return std::clamp(length, -kMaximumLength, kMaximumLength);
}

/// The side whose padding a word means: office suites write the top one's word for the left side,
/// and the left one's for the top.
std::size_t paddedSide(Side named, RtfDialect dialect) {
    if (dialect == RtfDialect::office && named == Side::top) {
        return static_cast<std::size_t>(Side::left);
    }
    if (dialect == RtfDialect::office && named == Side::left) {
        return static_cast<std::size_t>(Side::top);
    }
    return static_cast<std::size_t>(named);
}

/// A line that says no width is drawn this wide.
constexpr Twips kThinLine = 10;

} // namespace

void RowDefinition::word(const Keyword& keyword, std::int32_t parameter, RtfDialect dialect) {
    const auto length = limited(parameter);
    switch (keyword.action) {
    case Action::rowDefault:
        *this = {};
        break;
    case Action::rowLeft:
        m_left = length;
        break;
    case Action::rowGap:
        // The native dialect writes a gap that means nothing.
        if (dialect != RtfDialect::native) {
            m_padding[static_cast<std::size_t>(Side::left)] = length;
            m_padding[static_cast<std::size_t>(Side::right)] = length;
        }
        break;
    case Action::rowPadding:
        m_padding[static_cast<std::size_t>(keyword.value)] = length;
        break;
    case Action::cellEdge:
        m_next.edge = length;
        if (m_cells.size() < static_cast<std::size_t>(kMaximumColumns)) {
            m_cells.push_back(m_next);
        }
        m_next = {};
        m_border.reset();
        break;
    case Action::cellWidth:
        m_next.width = length;
        break;
    case Action::cellWidthUnit: {
        constexpr std::int32_t kTwips = 3;
        m_next.isWidthInTwips = parameter == kTwips;
        break;
    }
    case Action::cellPadding:
        m_next.padding[paddedSide(static_cast<Side>(keyword.value), dialect)] = length;
        break;
    case Action::cellBorder:
        m_border = static_cast<std::size_t>(keyword.value);
        break;
    case Action::otherBorder:
        m_border.reset();
        break;
    case Action::borderLine:
        if (m_border) {
            m_next.borders[*m_border].hasLine = keyword.value != 0;
        }
        break;
    case Action::borderWidth:
        if (m_border) {
            m_next.borders[*m_border].width = length;
        }
        break;
    case Action::borderColor:
        if (m_border) {
            m_next.borders[*m_border].color = static_cast<std::uint32_t>(parameter);
        }
        break;
    case Action::cellFill:
        m_next.fill = static_cast<std::uint32_t>(parameter);
        break;
    case Action::cellAlignment:
        m_next.alignment = static_cast<VerticalAlignment>(keyword.value);
        break;
    case Action::mergeStart:
        m_next.startsColumns = true;
        break;
    case Action::merged:
        m_next.isMerged = true;
        break;
    case Action::verticalMergeStart:
        m_next.startsRows = true;
        break;
    case Action::verticallyMerged:
        m_next.isVerticallyMerged = true;
        break;
    case Action::absentCell:
        m_next.isAbsent = true;
        break;
    default:
        break;
    }
}

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
    if (level.hasRowSpans && !isConsistent(level)) {
        for (const auto& placed : level.cells) {
            placed.cell->rowSpan = 1;
        }
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
    if (isConsistent(level)) {
        level.table->columns = static_cast<std::int32_t>(columns.size()) - 1;
        return;
    }
    for (std::size_t index = 0; index < before.size(); ++index) {
        level.cells[index].cell->column = before[index].column;
        level.cells[index].cell->columnSpan = before[index].columnSpan;
    }
}

/// Whether no cell covers another's place. Cells come row by row.
bool TableBuilder::isConsistent(const Level& level) {
    std::array<std::int32_t, kMaximumColumns> freeFrom{};
    std::int32_t row = -1;
    std::int32_t column = 0;
    for (const auto& placed : level.cells) {
        const auto& cell = *placed.cell;
        if (cell.row != row) {
            row = cell.row;
            column = 0;
        }
        if (cell.column < column || cell.columnSpan < 1) {
            return false;
        }
        column = cell.column + cell.columnSpan;
        for (auto covered = cell.column; covered < column; ++covered) {
            auto& free = freeFrom[static_cast<std::size_t>(covered)];
            if (free > row) {
                return false;
            }
            free = row + cell.rowSpan;
        }
    }
    return true;
}

} // namespace korvex::richtext::rtf
