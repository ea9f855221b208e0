#include "richtext/table/RichTextTable.h"
#include "ui/text/TextFormats.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>
#include <vector>

namespace korvex::ui {

namespace {

using namespace richtext;

/// Above and below a table.
constexpr Twips kAround = 4 * kTwipsPerPoint;
constexpr Twips kWidestPadding = 200 * kTwipsPerPoint;

struct SideProperties {
    QTextFormat::Property padding;
    QTextFormat::Property width;
    QTextFormat::Property style;
    QTextFormat::Property brush;
};
/// The sides in the order of `Side`.
constexpr std::array kSides{
    SideProperties{QTextFormat::TableCellTopPadding, QTextFormat::TableCellTopBorder,
                   QTextFormat::TableCellTopBorderStyle, QTextFormat::TableCellTopBorderBrush},
    SideProperties{QTextFormat::TableCellLeftPadding, QTextFormat::TableCellLeftBorder,
                   QTextFormat::TableCellLeftBorderStyle, QTextFormat::TableCellLeftBorderBrush},
    SideProperties{QTextFormat::TableCellBottomPadding, QTextFormat::TableCellBottomBorder,
                   QTextFormat::TableCellBottomBorderStyle,
                   QTextFormat::TableCellBottomBorderBrush},
    SideProperties{QTextFormat::TableCellRightPadding, QTextFormat::TableCellRightBorder,
                   QTextFormat::TableCellRightBorderStyle, QTextFormat::TableCellRightBorderBrush},
};

double paddingOf(const CellGeometry& geometry, std::size_t side, const TextLook& look) {
    return look.pixels(std::clamp(geometry.padding[side], 0, kWidestPadding));
}

/// Thin lines are drawn one pixel wide, sharp.
double widthOf(const CellBorder& border, const TextLook& look) {
    constexpr double kWidest = 20;
    return border.width <= 0 ? 0 : std::clamp(std::round(look.pixels(border.width)), 1.0, kWidest);
}

QBrush brushOf(const CellBorder& border, const TextLook& look) {
    return border.color ? look.fill(*border.color) : look.separator;
}

bool haveAllOneFrame(const std::vector<TextTableCellRef>& cells) {
    const auto& first = cells.front()->geometry;
    return std::all_of(cells.begin(), cells.end(), [&](const TextTableCellRef& cell) {
        const auto& geometry = cell->geometry;
        return std::all_of(geometry.padding.begin(), geometry.padding.end(),
                           [&](Twips each) { return each == first.padding.front(); }) &&
               std::all_of(geometry.borders.begin(), geometry.borders.end(),
                           [&](const CellBorder& each) { return each == first.borders.front(); });
    });
}

/// The columns of a table as Qt wants their widths: in pixels, with paddings and borders.
class ColumnPixels {
public:
    explicit ColumnPixels(std::size_t columns)
        : m_widths(columns), m_paddings(columns), m_borders(columns + 1) {}

    /// Cells come in the order of the text.
    void add(const TextTableCell& cell, const TextLook& look) {
        RichTextTable::noteWidth(m_widths, cell);
        const auto left = static_cast<std::size_t>(cell.column);
        noteBorder(left, cell, Side::left, look);
        noteBorder(left + static_cast<std::size_t>(cell.columnSpan), cell, Side::right, look);
        if (cell.columnSpan == 1) {
            auto& padding = m_paddings[left];
            padding = std::max(
                padding, paddingOf(cell.geometry, static_cast<std::size_t>(Side::left), look) +
                             paddingOf(cell.geometry, static_cast<std::size_t>(Side::right), look));
        }
    }
    QList<QTextLength> constraints(double outerBorder, const TextLook& look) const {
        QList<QTextLength> result;
        for (std::size_t i = 0; i < m_widths.size(); ++i) {
            const auto content = look.pixels(m_widths[i].value_or(RichTextTable::kDefaultWidth));
            // Half of each line beside it is in a column. The first has an outer one, too.
            const auto lines = (m_borders[i] + m_borders[i + 1]) / 2;
            result.append(
                QTextLength(QTextLength::FixedLength, std::ceil(content + m_paddings[i] + lines) +
                                                          (i == 0 ? outerBorder : 0)));
        }
        return result;
    }

private:
    void noteBorder(std::size_t edge, const TextTableCell& cell, Side side, const TextLook& look) {
        m_borders[edge] = std::max(
            m_borders[edge], widthOf(cell.geometry.borders[static_cast<std::size_t>(side)], look));
    }

    std::vector<std::optional<Twips>> m_widths;
    std::vector<double> m_paddings;
    /// The widest line at each edge of the columns.
    std::vector<double> m_borders;
};

/// Whether the line on that side is the cell's to draw: of two neighbours the upper or left one
/// does.
bool drawsBorder(const TextTableCell& cell, Side side) {
    switch (side) {
    case Side::top:
        return cell.row == 0;
    case Side::left:
        return cell.column == 0;
    case Side::bottom:
    case Side::right:
        break;
    }
    return true;
}

} // namespace

TableFormats::TableFormats(const std::vector<TextTableCellRef>& cells, const TextLook& look)
    : m_look(look), m_haveOneFrame(haveAllOneFrame(cells)) {
    const auto& table = cells.front()->table;
    m_table.setProperty(kTableProperty, QVariant::fromValue(table));
    // Qt takes much longer to lay out and to paint cells that share their borders.
    m_table.setBorderCollapse(!m_haveOneFrame);
    m_table.setCellSpacing(0);
    m_table.setCellPadding(0);
    m_table.setBorder(0);
    double outerBorder = 0;
    if (m_haveOneFrame) {
        const auto& geometry = cells.front()->geometry;
        outerBorder = widthOf(geometry.borders.front(), look);
        m_table.setCellPadding(paddingOf(geometry, 0, look));
    }
    // The outer lines stay clear of the edges of what the table stands in.
    m_table.setLeftMargin(outerBorder);
    m_table.setTopMargin(look.pixels(kAround) + outerBorder);
    m_table.setBottomMargin(look.pixels(kAround) + outerBorder);
    ColumnPixels columns(static_cast<std::size_t>(table->columns));
    for (const auto& cell : cells) {
        columns.add(*cell, look);
    }
    m_table.setColumnWidthConstraints(columns.constraints(outerBorder, look));
}

void TableFormats::apply(const TextTableCellRef& cell, QTextTableCellFormat& format) const {
    const auto& geometry = cell->geometry;
    format.setProperty(kCellProperty, QVariant::fromValue(cell));
    if (geometry.background) {
        format.setBackground(m_look.fill(*geometry.background));
    }
    switch (geometry.verticalAlignment) {
    case VerticalAlignment::top:
        break;
    case VerticalAlignment::middle:
        format.setVerticalAlignment(QTextCharFormat::AlignMiddle);
        break;
    case VerticalAlignment::bottom:
        format.setVerticalAlignment(QTextCharFormat::AlignBottom);
        break;
    }
    for (std::size_t i = 0; i < kSides.size(); ++i) {
        if (!m_haveOneFrame) {
            format.setProperty(kSides[i].padding, paddingOf(geometry, i, m_look));
        }
        const auto isDrawn = !m_haveOneFrame || drawsBorder(*cell, static_cast<Side>(i));
        const auto width = isDrawn ? widthOf(geometry.borders[i], m_look) : 0;
        if (width > 0) {
            format.setProperty(kSides[i].width, width);
            format.setProperty(kSides[i].style, int{QTextFrameFormat::BorderStyle_Solid});
            format.setProperty(kSides[i].brush, brushOf(geometry.borders[i], m_look));
        } else {
            format.clearProperty(kSides[i].width);
            format.clearProperty(kSides[i].style);
            format.clearProperty(kSides[i].brush);
        }
    }
}

} // namespace korvex::ui
