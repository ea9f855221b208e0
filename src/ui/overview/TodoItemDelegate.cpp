#include "ui/overview/TodoItemDelegate.h"

#include "ui/boards/BoardColors.h"
#include "ui/boards/BoardIcons.h"
#include "ui/kit/lists/RowGround.h"
#include "ui/kit/theme/Direction.h"
#include "ui/kit/theme/IconSet.h"
#include "ui/todos/RowFrame.h"
#include "ui/todos/TodoPainting.h"

#include <QLocale>
#include <QPainter>

namespace korvex::ui {

TodoItemDelegate::TodoItemDelegate(const TodoListModel& model, const Theme& theme, QObject* parent)
    : QStyledItemDelegate(parent), m_model(model), m_theme(theme) {}

void TodoItemDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                             const QModelIndex& index) const {
    const auto row = index.row();
    painter->save();
    painter->setClipRect(option.rect);
    painter->translate(option.rect.topLeft());
    painter->setRenderHint(QPainter::Antialiasing);
    if (m_model.isHeading(row)) {
        paintHeading(*painter, QRect(QPoint(), option.rect.size()), row);
        painter->restore();
        return;
    }
    const auto& colors = m_theme.colors();
    const auto& laidOut = layout(row, option.rect.width());
    const auto& entry = *m_model.entry(row);
    paintRowGround(*painter, laidOut.box(), quietWithoutKeyboard(option.state), m_theme);

    Shapes::paintCheckCircle(*painter, laidOut.circle(),
                             TodoPainting::circleOf(entry, option.state), colors);
    painter->setPen(entry.isCompleted() ? colors.secondaryText : colors.text);
    laidOut.textLayout().draw(painter, laidOut.text().topLeft());
    if (!laidOut.detail().isEmpty()) {
        const auto isUrgent = laidOut.detailLabel().isOverdue && !entry.isCompleted();
        TodoPainting::drawDueLabel(*painter, laidOut.detail(), laidOut.detailLabel(),
                                   isUrgent ? colors.danger : colors.secondaryText, m_theme);
    }
    paintBoard(*painter, laidOut, entry);
    painter->restore();
}

void TodoItemDelegate::paintHeading(QPainter& painter, const QRect& rect, int row) const {
    const auto& colors = m_theme.colors();
    const auto& heading = m_model.heading(row);
    const auto frame = RowFrame::of(m_theme);
    const QFontMetrics metrics(m_theme.sectionFont());
    const QFontMetrics small(m_theme.smallFont());
    const auto line = metrics.height();
    const QRect place(frame.side, rect.bottom() + 1 - m_theme.space(Space::small) - line,
                      rect.width() - 2 * frame.side, line);
    painter.setFont(m_theme.sectionFont());
    painter.setPen(heading.isUrgent ? colors.danger : colors.text);
    painter.drawText(place, Qt::AlignLeft | Qt::AlignTop, isolated(heading.title));
    painter.setFont(m_theme.smallFont());
    painter.setPen(colors.secondaryText);
    const auto behind =
        place.adjusted(metrics.horizontalAdvance(heading.title) + m_theme.space(Space::medium),
                       metrics.ascent() - small.ascent(), 0, 0);
    painter.drawText(mirrored(behind, place), Qt::AlignLeft | Qt::AlignTop,
                     QLocale().toString(heading.count));
}

void TodoItemDelegate::paintBoard(QPainter& painter, const TodoRowLayout& laidOut,
                                  const model::Entry& entry) const {
    const auto* const board = entry.board();
    if (!board || laidOut.boardIcon().isEmpty()) {
        return;
    }
    const auto& colors = m_theme.colors();
    if (board->isArchived()) {
        // A mark that stays where there is no room for the word.
        IconSet::draw(painter, QStringLiteral("archive"), colors.secondaryText,
                      laidOut.boardIcon());
    } else {
        IconSet::draw(painter, boardIconName(board->iconSystemName()), iconColorOf(*board, colors),
                      laidOut.boardIcon());
    }
    painter.setFont(m_theme.smallFont());
    painter.setPen(colors.secondaryText);
    painter.drawText(laidOut.boardName(), Qt::AlignLeft | Qt::AlignTop,
                     isolated(laidOut.boardText()));
}

QSize TodoItemDelegate::sizeHint(const QStyleOptionViewItem& option,
                                 const QModelIndex& index) const {
    return {option.rect.width(), height(index.row(), option.rect.width())};
}

int TodoItemDelegate::height(int row, int width) const {
    return m_model.isHeading(row) ? TodoRowLayout::headingHeight(m_theme)
                                  : layout(row, width).height();
}

const TodoRowLayout& TodoItemDelegate::layout(int row, int width) const {
    return m_layouts.at(m_model.entry(row), width, [&](const auto&) {
        if (m_columnFor != width) {
            m_columnFor = width;
            m_column = TodoRowLayout::boardColumn(m_boardNames, width, m_theme);
        }
        return std::make_unique<TodoRowLayout>(m_model, row, width, m_column, m_theme);
    });
}

void TodoItemDelegate::forgetAll() const {
    m_layouts.forgetAll();
    m_columnFor = -1;
}

bool TodoItemDelegate::setBoardNames(QStringList names) {
    if (m_boardNames == names) {
        return false;
    }
    m_boardNames = std::move(names);
    forgetAll();
    return true;
}

} // namespace korvex::ui
