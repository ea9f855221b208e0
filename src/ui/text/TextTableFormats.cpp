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

struct SideProperties {
    QTextFormat::Property width;
    QTextFormat::Property style;
    QTextFormat::Property brush;
};
/// The sides in the order of `Side`.
constexpr std::array kSides{
    SideProperties{QTextFormat::TableCellTopBorder, QTextFormat::TableCellTopBorderStyle,
                   QTextFormat::TableCellTopBorderBrush},
    SideProperties{QTextFormat::TableCellLeftBorder, QTextFormat::TableCellLeftBorderStyle,
                   QTextFormat::TableCellLeftBorderBrush},
    SideProperties{QTextFormat::TableCellBottomBorder, QTextFormat::TableCellBottomBorderStyle,
                   QTextFormat::TableCellBottomBorderBrush},
    SideProperties{QTextFormat::TableCellRightBorder, QTextFormat::TableCellRightBorderStyle,
                   QTextFormat::TableCellRightBorderBrush},
};

QBrush brushOf(const CellBorder& border, const TextLook& look) {
    return border.color ? look.fill(*border.color) : look.separator;
}

bool isBare(const TextTableCellRef& cell) {
    const auto& borders = cell->geometry.borders;
    return std::all_of(borders.begin(), borders.end(),
                       [](const CellBorder& each) { return each.width <= 0; });
}

bool haveAllOneFrame(const std::vector<TextTableCellRef>& cells) {
    const auto& first = cells.front()->geometry.borders.front();
    return std::all_of(cells.begin(), cells.end(), [&](const TextTableCellRef& cell) {
        const auto& borders = cell->geometry.borders;
        return std::all_of(borders.begin(), borders.end(),
                           [&](const CellBorder& each) { return each == first; });
    });
}

/// The columns of a table as Qt wants their widths: in pixels, with paddings and borders.
class ColumnPixels {
public:
    explicit ColumnPixels(std::size_t columns) : m_widths(columns), m_borders(columns + 1) {}

    /// Cells come in the order of the text; `borderOf` tells the width of their lines.
    template <typename BorderOf>
    void add(const TextTableCell& cell, BorderOf&& borderOf) {
        RichTextTable::noteWidth(m_widths, cell);
        const auto left = static_cast<std::size_t>(cell.column);
        noteBorder(left, borderOf(Side::left));
        noteBorder(left + static_cast<std::size_t>(cell.columnSpan), borderOf(Side::right));
    }
    QList<QTextLength> constraints(double outerBorder, const TextLook& look) const {
        QList<QTextLength> result;
        for (std::size_t i = 0; i < m_widths.size(); ++i) {
            const auto content = look.pixels(m_widths[i].value_or(RichTextTable::kDefaultWidth));
            // Half of each line beside it is in a column. The first has an outer one, too.
            const auto lines = (m_borders[i] + m_borders[i + 1]) / 2;
            result.append(QTextLength(QTextLength::FixedLength,
                                      std::ceil(content + 2 * look.cellPadding() + lines) +
                                          (i == 0 ? outerBorder : 0)));
        }
        return result;
    }

private:
    void noteBorder(std::size_t edge, double width) {
        m_borders[edge] = std::max(m_borders[edge], width);
    }

    std::vector<std::optional<Twips>> m_widths;
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
    : m_look(look),
      m_isBare(std::all_of(cells.begin(), cells.end(), isBare)),
      m_haveOneFrame(m_isBare || haveAllOneFrame(cells)) {
    const auto& table = cells.front()->table;
    m_table.setProperty(kTableProperty, QVariant::fromValue(table));
    // Qt takes much longer to lay out and to paint cells that share their borders.
    m_table.setBorderCollapse(!m_haveOneFrame);
    m_table.setCellSpacing(0);
    m_table.setCellPadding(look.cellPadding());
    m_table.setBorder(0);
    const auto outerBorder = m_haveOneFrame ? widthOf(*cells.front(), Side::left) : 0;
    // The outer lines stay clear of the edges of what the table stands in.
    const auto around = look.space(Space::large);
    m_table.setLeftMargin(outerBorder);
    m_table.setTopMargin(around + outerBorder);
    m_table.setBottomMargin(around + outerBorder);
    ColumnPixels columns(static_cast<std::size_t>(table->columns));
    for (const auto& cell : cells) {
        columns.add(*cell, [&](Side side) { return widthOf(*cell, side); });
    }
    m_table.setColumnWidthConstraints(columns.constraints(outerBorder, look));
}

/// Thin lines are drawn one pixel wide, sharp.
double TableFormats::widthOf(const TextTableCell& cell, Side side) const {
    constexpr double kWidest = 20;
    const auto width = cell.geometry.borders[static_cast<std::size_t>(side)].width;
    if (m_isBare) {
        return 1;
    }
    return width <= 0 ? 0 : std::clamp(std::round(m_look.pixels(width)), 1.0, kWidest);
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
        const auto side = static_cast<Side>(i);
        const auto isDrawn = !m_haveOneFrame || drawsBorder(*cell, side);
        const auto width = isDrawn ? widthOf(*cell, side) : 0;
        if (width > 0) {
            format.setProperty(kSides[i].width, width);
            format.setProperty(kSides[i].style, int{QTextFrameFormat::BorderStyle_Solid});
            format.setProperty(kSides[i].brush,
                               m_isBare ? m_look.separator : brushOf(geometry.borders[i], m_look));
        } else {
            format.clearProperty(kSides[i].width);
            format.clearProperty(kSides[i].style);
            format.clearProperty(kSides[i].brush);
        }
    }
}

} // namespace korvex::ui
