#include "ui/overview/TodoRowLayout.h"

#include "ui/boards/BoardLabel.h"
#include "ui/kit/theme/Direction.h"
#include "ui/todos/RowFrame.h"
#include "ui/todos/RowText.h"

#include <QFontMetrics>

#include <algorithm>

namespace korvex::ui {

namespace {

constexpr int kBoardIconSize = 14;
constexpr int kBoardIconGap = 5;
/// A board's name takes no more of the row than this, beside a text.
constexpr double kWidestColumn = 0.22;
constexpr int kWidestName = 160;
/// Above a heading.
constexpr int kHeadingDistance = 14;

} // namespace

TodoRowLayout::TodoRowLayout(const TodoListModel& model, int row, int width, int boardColumn,
                             const Theme& theme)
    : m_width(width),
      m_boardColumn(boardColumn),
      m_text(makeTextLayout(model.text(row), directionOf(model.text(row)), theme)),
      m_detailLabel(model.detailLabel(row)) {
    if (const auto* const board = model.entry(row)->board()) {
        m_boardText = boardLabel(*board);
    }
    m_isTurned = m_text->textOption().textDirection() != QGuiApplication::layoutDirection();
    const auto sizes = RowFrame::of(theme);
    const auto room = std::max(40, width - sizes.textLeft - sizes.textRight);
    const auto detailWidth = m_detailLabel.width(theme);
    const auto boardWidth = theme.scaled(kBoardIconSize) + kBoardIconGap + boardColumn;
    const int beside =
        2 * RowFrame::kGap + detailWidth + (detailWidth > 0 ? RowFrame::kGap : 0) + boardWidth;
    const auto [isBeside, textWidth, textHeight] =
        arrangeText(*m_text, room, beside, BesideText::goesBelow);

    const auto line = QFontMetrics(theme.font()).lineSpacing();
    const auto firstLine = std::max(line, sizes.signSize);
    const auto top = theme.rowDistance() / 2;
    const auto lineTop = top + RowFrame::kPadding;
    m_textRect = QRect(sizes.textLeft, lineTop + (firstLine - line) / 2, textWidth, textHeight);
    m_circle = QRect(RowFrame::kBoxMargin + RowFrame::kGap,
                     lineTop + (firstLine - sizes.signSize) / 2, sizes.signSize, sizes.signSize);
    auto bottom = std::max(m_textRect.bottom() + 1, lineTop + firstLine);
    if (isBeside) {
        placeBeside(lineTop, firstLine, theme);
    } else {
        bottom = placeBelow(bottom + 1, room, theme);
    }
    m_height = bottom + RowFrame::kPadding + theme.rowDistance() - top;
    m_box = QRect(RowFrame::kBoxMargin, top, width - 2 * RowFrame::kBoxMargin,
                  m_height - theme.rowDistance());
    for (auto* const place : {&m_circle, &m_textRect, &m_detail, &m_boardIcon, &m_boardNameRect}) {
        *place = mirrored(*place, width);
    }
}

/// The names of boards stand in one column, the details at its left.
void TodoRowLayout::placeBeside(int firstLineTop, int firstLineHeight, const Theme& theme) {
    const auto sizes = RowFrame::of(theme);
    const auto line = QFontMetrics(theme.smallFont()).lineSpacing();
    const auto top = firstLineTop + (firstLineHeight - line) / 2;
    const auto icon = theme.scaled(kBoardIconSize) + kBoardIconGap;
    const auto left = m_width - sizes.textRight - m_boardColumn - icon;
    setBoard({left, top}, line, m_boardColumn, theme);
    if (!m_detailLabel.isEmpty()) {
        const auto width = m_detailLabel.width(theme);
        m_detail = QRect(left - RowFrame::kGap - width, top, width, line);
    }
}

int TodoRowLayout::placeBelow(int top, int room, const Theme& theme) {
    const auto sizes = RowFrame::of(theme);
    const QFontMetrics metrics(theme.smallFont());
    const auto line = metrics.lineSpacing();
    const auto icon = theme.scaled(kBoardIconSize) + kBoardIconGap;
    const auto detailWidth = std::min(m_detailLabel.width(theme), room);
    const int nameWidth =
        std::min(metrics.horizontalAdvance(m_boardText) + 1, std::max(0, room - icon));
    const auto leftOf = [&](int offset, int width) {
        return m_isTurned ? sizes.textLeft + room - offset - width : sizes.textLeft + offset;
    };
    int offset = 0;
    if (!m_detailLabel.isEmpty()) {
        const auto height = m_detailLabel.height(room, theme);
        m_detail = QRect(leftOf(0, detailWidth), top, detailWidth, height);
        offset = detailWidth + RowFrame::kGap;
        if (!m_boardText.isEmpty() && offset + icon + nameWidth > room) {
            offset = 0;
            top += height;
        }
    }
    setBoard({leftOf(offset, icon + nameWidth), top}, line, nameWidth, theme);
    return top + line;
}

void TodoRowLayout::setBoard(const QPoint& topLeft, int lineHeight, int nameWidth,
                             const Theme& theme) {
    if (m_boardText.isEmpty()) {
        return;
    }
    const auto icon = theme.scaled(kBoardIconSize);
    m_boardIcon = QRect(topLeft.x(), topLeft.y() + (lineHeight - icon) / 2, icon, icon);
    m_boardNameRect = QRect(topLeft.x() + icon + kBoardIconGap, topLeft.y(), nameWidth, lineHeight);
    m_boardText =
        QFontMetrics(theme.smallFont()).elidedText(m_boardText, Qt::ElideRight, nameWidth);
}

int TodoRowLayout::lowestHeight(const Theme& theme) {
    const auto sizes = RowFrame::of(theme);
    return std::max(QFontMetrics(theme.font()).lineSpacing(), sizes.signSize) +
           2 * RowFrame::kPadding + theme.rowDistance();
}

int TodoRowLayout::headingHeight(const Theme& theme) {
    return theme.scaled(kHeadingDistance) + QFontMetrics(theme.font()).lineSpacing() +
           theme.rowDistance() / 2;
}

int TodoRowLayout::boardColumn(const QStringList& names, int width, const Theme& theme) {
    const QFontMetrics metrics(theme.smallFont());
    int widest = 0;
    for (const auto& name : names) {
        widest = std::max(widest, metrics.horizontalAdvance(name) + 1);
    }
    return std::min({widest, static_cast<int>(width * kWidestColumn), theme.scaled(kWidestName)});
}

} // namespace korvex::ui
