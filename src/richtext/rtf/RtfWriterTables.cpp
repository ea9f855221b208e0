#include "richtext/rtf/RtfWriterTables.h"

#include "richtext/rtf/RtfDialect.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

namespace korvex::richtext::rtf {

namespace {

constexpr std::array<std::string_view, 4> kBorderWords{"\\clbrdrt", "\\clbrdrl", "\\clbrdrb",
                                                       "\\clbrdrr"};
constexpr std::array<std::string_view, 4> kPaddingWords{"\\clpadt", "\\clpadl", "\\clpadb",
                                                        "\\clpadr"};

Twips limited(Twips length) {
    return std::clamp(length, -kMaximumLength, kMaximumLength);
}

std::string_view alignmentWord(VerticalAlignment alignment) {
    switch (alignment) {
    case VerticalAlignment::top:
        return "\\clvertalt";
    case VerticalAlignment::middle:
        return "\\clvertalc";
    case VerticalAlignment::bottom:
        return "\\clvertalb";
    }
    return {};
}

void writeBorder(Output& output, ColorNumbers& colors, std::string_view side,
                 const CellBorder& border) {
    output.raw(side);
    const auto width = limited(border.width);
    if (width > 0) {
        output.word("\\brdrs\\brdrw", width);
    } else {
        output.raw("\\brdrnil");
    }
    if (const auto color = colors.of(border.color); color != 0) {
        output.word("\\brdrcf", color);
    }
    output.raw(' ');
}

void writeGeometry(Output& output, ColorNumbers& colors, const CellGeometry& geometry) {
    output.raw(alignmentWord(geometry.verticalAlignment));
    if (const auto fill = colors.of(geometry.background); fill != 0) {
        output.word(" \\clcbpat", fill);
    } else {
        output.raw(" \\clshdrawnil");
    }
    if (geometry.width) {
        output.word(" \\clwWidth", limited(*geometry.width));
        output.raw("\\clftsWidth3");
    }
    output.raw(' ');
    for (std::size_t side = 0; side < kBorderWords.size(); ++side) {
        writeBorder(output, colors, kBorderWords[side], geometry.borders[side]);
    }
    for (std::size_t side = 0; side < kPaddingWords.size(); ++side) {
        output.word(kPaddingWords[side], limited(geometry.padding[side]));
        output.raw(' ');
    }
    output.raw("\\gaph");
}

} // namespace

TablePlan::TablePlan(std::span<const CellStretch> stretches) : m_stretches(stretches) {
    auto places = placesAsGiven();
    if (places.empty()) {
        places = newPlaces();
    }
    fill(places);
}

/// Empty when the places are out of order, overlap or leave far too much room.
std::vector<TablePlan::Place> TablePlan::placesAsGiven() const {
    constexpr std::int64_t kMaximumPerCell = 64;
    constexpr std::int64_t kAlwaysAllowed = 4096;
    auto room = kAlwaysAllowed + kMaximumPerCell * static_cast<std::int64_t>(m_stretches.size());
    std::vector<Place> places;
    places.reserve(m_stretches.size());
    std::array<std::int64_t, kMaximumColumns> freeFrom{};
    const std::int64_t firstRow = m_stretches.front().cell->row;
    Place last{.row = -1};
    for (const auto& stretch : m_stretches) {
        const auto& cell = *stretch.cell;
        const Place place{cell.row - firstRow, cell.column, cell.rowSpan, cell.columnSpan};
        const auto isRight =
            place.row > last.row ||
            (place.row == last.row && place.column >= last.column + last.columnSpan);
        if (!isRight || place.column < 0 || place.rowSpan < 1 || place.columnSpan < 1 ||
            place.column + place.columnSpan > kMaximumColumns) {
            return {};
        }
        room -= (place.row - last.row) + place.rowSpan * place.columnSpan;
        if (room < 0) {
            return {};
        }
        for (auto column = place.column; column < place.column + place.columnSpan; ++column) {
            auto& row = freeFrom[static_cast<std::size_t>(column)];
            if (row > place.row) {
                return {};
            }
            row = place.row + place.rowSpan;
        }
        places.push_back(place);
        last = place;
    }
    return places;
}

std::vector<TablePlan::Place> TablePlan::newPlaces() const {
    std::vector<Place> places;
    places.reserve(m_stretches.size());
    Place last{.row = -1};
    const TextTableCell* lastCell = nullptr;
    for (const auto& [cell, first, end] : m_stretches) {
        Place place{.row = last.row,
                    .column = std::clamp<std::int64_t>(cell->column, 0, kMaximumColumns - 1)};
        if (!lastCell || cell->row != lastCell->row || place.column <= last.column) {
            ++place.row;
        }
        places.push_back(place);
        last = place;
        lastCell = cell;
    }
    return places;
}

void TablePlan::fill(const std::vector<Place>& places) {
    std::int64_t rows = 0;
    std::int64_t columns = std::clamp(m_stretches.front().cell->table->columns, 1, kMaximumColumns);
    for (const auto& place : places) {
        rows = std::max(rows, place.row + place.rowSpan);
        columns = std::max(columns, place.column + place.columnSpan);
    }
    m_rows.resize(static_cast<std::size_t>(rows));
    for (std::size_t index = 0; index < places.size(); ++index) {
        const auto& place = places[index];
        const auto left = static_cast<std::size_t>(place.column);
        const auto right = left + static_cast<std::size_t>(place.columnSpan);
        for (std::int64_t row = 0; row < place.rowSpan; ++row) {
            auto& slots = m_rows[static_cast<std::size_t>(place.row + row)];
            slots.resize(std::max(slots.size(), right));
            for (auto column = left; column < right; ++column) {
                auto& slot = slots[column];
                slot.kind = column == left ? Slot::Kind::continued : Slot::Kind::continuedMerged;
                if (row == 0) {
                    slot.kind = column == left ? Slot::Kind::cell : Slot::Kind::merged;
                }
                slot.startsColumns = column == left && place.columnSpan > 1;
                slot.startsRows = row == 0 && column == left && place.rowSpan > 1;
                slot.stretch = index;
            }
        }
    }
    // The number of columns shows in the first row. No row is without any.
    m_rows.front().resize(static_cast<std::size_t>(columns));
    for (auto& row : m_rows) {
        row.resize(std::max<std::size_t>(row.size(), 1));
    }
    measure(places, static_cast<std::size_t>(columns));
}

void TablePlan::measure(const std::vector<Place>& places, std::size_t columns) {
    constexpr std::int64_t kUnknown = 0;
    std::vector<std::int64_t> widths(columns, kUnknown);
    for (std::size_t index = 0; index < places.size(); ++index) {
        const auto& geometry = m_stretches[index].cell->geometry;
        auto& width = widths[static_cast<std::size_t>(places[index].column)];
        if (places[index].columnSpan == 1 && width == kUnknown && geometry.width) {
            const std::int64_t total =
                std::int64_t{limited(*geometry.width)} +
                limited(geometry.padding[static_cast<std::size_t>(Side::left)]) +
                limited(geometry.padding[static_cast<std::size_t>(Side::right)]);
            width = std::max<std::int64_t>(total, 1);
        }
    }
    std::int64_t edge = kRowLeft;
    m_edges.reserve(columns);
    for (const auto width : widths) {
        edge += width == kUnknown ? kDefaultColumnWidth : width;
        m_edges.push_back(edge);
    }
}

void TablePlan::writeDefinition(Output& output, ColorNumbers& colors, const Row& row) const {
    for (std::size_t column = 0; column < row.size(); ++column) {
        const auto& slot = row[column];
        output.raw(slot.startsColumns ? "\\clmgf" : "");
        output.raw(slot.startsRows ? "\\clvmgf" : "");
        switch (slot.kind) {
        case Slot::Kind::cell:
            writeGeometry(output, colors, m_stretches[slot.stretch].cell->geometry);
            break;
        case Slot::Kind::merged:
            output.raw("\\clmrg");
            break;
        case Slot::Kind::continued:
            output.raw("\\clvmrg");
            break;
        case Slot::Kind::continuedMerged:
            output.raw("\\clmrg\\clvmrg");
            break;
        case Slot::Kind::absent:
            output.raw("\\korvexabsent");
            break;
        }
        output.word("\\cellx", m_edges[column]);
        output.raw('\n');
    }
}

} // namespace korvex::richtext::rtf
