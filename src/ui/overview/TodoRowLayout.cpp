#include "ui/overview/TodoRowLayout.h"

#include "ui/boards/BoardLabel.h"
#include "ui/kit/theme/Direction.h"
#include "ui/todos/RowText.h"

#include <QFontMetrics>

#include <algorithm>

namespace korvex::ui {

namespace {

/// A board's name takes no more of the row than this, beside a text.
constexpr double kWidestColumn = 0.22;
/// In pixels, at the standard font size.
constexpr int kWidestName = 160;

/// The width of a board's icon, with its distance from the name.
int iconWidth(const Theme& theme) {
    return theme.extent(Extent::smallIcon) + theme.space(Space::small);
}

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
    const auto frame = RowFrame::of(theme);
    const auto detailWidth = m_detailLabel.width(theme);
    const int beside = 2 * frame.gap + detailWidth + (detailWidth > 0 ? frame.gap : 0) +
                       iconWidth(theme) + boardColumn;
    const auto arranged = arrangeText(*m_text, width, beside, BesideText::goesBelow, theme);
    m_circle = arranged.sign;
    m_textRect = arranged.text;
    auto bottom = arranged.bottom;
    if (arranged.isBeside) {
        placeBeside(arranged.firstLine.topOf(theme.smallFont()), theme);
    } else {
        bottom = placeBelow(bottom + theme.space(Space::hair), frame.room(width), theme);
    }
    m_height = frame.heightFor(bottom);
    m_box = frame.box({width, m_height});
    for (auto* const place : {&m_circle, &m_textRect, &m_detail, &m_boardIcon, &m_boardNameRect}) {
        *place = mirrored(*place, width);
    }
}

/// The names of boards stand in one column, the details at its left.
void TodoRowLayout::placeBeside(int top, const Theme& theme) {
    const auto frame = RowFrame::of(theme);
    const auto left = m_width - frame.side - m_boardColumn - iconWidth(theme);
    setBoard({left, top}, m_boardColumn, theme);
    if (!m_detailLabel.isEmpty()) {
        const auto width = m_detailLabel.width(theme);
        m_detail =
            QRect(left - frame.gap - width, top, width, QFontMetrics(theme.smallFont()).height());
    }
}

int TodoRowLayout::placeBelow(int top, int room, const Theme& theme) {
    const auto frame = RowFrame::of(theme);
    const QFontMetrics metrics(theme.smallFont());
    const auto icon = iconWidth(theme);
    const auto detailWidth = std::min(m_detailLabel.width(theme), room);
    const int nameWidth =
        std::min(metrics.horizontalAdvance(m_boardText) + 1, std::max(0, room - icon));
    const auto leftOf = [&](int offset, int width) {
        return m_isTurned ? frame.textLeft + room - offset - width : frame.textLeft + offset;
    };
    int offset = 0;
    if (!m_detailLabel.isEmpty()) {
        const auto height = m_detailLabel.height(room, theme);
        m_detail = QRect(leftOf(0, detailWidth), top, detailWidth, height);
        offset = detailWidth + frame.gap;
        if (!m_boardText.isEmpty() && offset + icon + nameWidth > room) {
            offset = 0;
            top += height + theme.space(Space::hair);
        }
    }
    setBoard({leftOf(offset, icon + nameWidth), top}, nameWidth, theme);
    return top + metrics.height();
}

void TodoRowLayout::setBoard(const QPoint& topLeft, int nameWidth, const Theme& theme) {
    if (m_boardText.isEmpty()) {
        return;
    }
    const QFontMetrics metrics(theme.smallFont());
    const auto icon = theme.extent(Extent::smallIcon);
    m_boardIcon = QRect(topLeft.x(), topLeft.y() + topOfSign(metrics, icon), icon, icon);
    m_boardNameRect =
        QRect(topLeft.x() + iconWidth(theme), topLeft.y(), nameWidth, metrics.height());
    m_boardText = metrics.elidedText(m_boardText, Qt::ElideRight, nameWidth);
}

int TodoRowLayout::lowestHeight(const Theme& theme) {
    const auto frame = RowFrame::of(theme);
    return frame.heightFor(frame.top() +
                           std::max(QFontMetrics(theme.font()).lineSpacing(), frame.signSize));
}

int TodoRowLayout::headingHeight(const Theme& theme) {
    return theme.space(Space::wide) + QFontMetrics(theme.sectionFont()).height() +
           theme.space(Space::small);
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
