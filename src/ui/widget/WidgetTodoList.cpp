#include "ui/widget/WidgetTodoList.h"

#include "schedule/CompleteTodoIntent.h"
#include "ui/kit/lists/RowGround.h"
#include "ui/kit/theme/Shapes.h"
#include "ui/kit/words/Text.h"
#include "ui/todos/TodoPainting.h"

#include <QContextMenuEvent>
#include <QKeyEvent>
#include <QPainter>

namespace korvex::ui {

WidgetTodoDelegate::WidgetTodoDelegate(const WidgetTodoModel& model, const Theme& theme,
                                       QObject* parent)
    : QStyledItemDelegate(parent), m_model(model), m_theme(theme) {}

void WidgetTodoDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                               const QModelIndex& index) const {
    const auto& colors = m_theme.colors();
    const auto& laidOut = layout(index.row(), option.rect.width());
    const auto& entry = m_model.entry(index.row());
    painter->save();
    painter->setClipRect(option.rect);
    painter->translate(option.rect.topLeft());
    painter->setRenderHint(QPainter::Antialiasing);
    paintRowGround(*painter, laidOut.box(), quietWithoutKeyboard(option.state), m_theme);
    Shapes::paintCheckCircle(*painter, laidOut.circle(),
                             TodoPainting::circleOf(entry, option.state), colors);
    painter->setPen(entry.isCompleted() ? colors.secondaryText : colors.text);
    laidOut.textLayout().draw(painter, laidOut.text().topLeft());
    if (!laidOut.due().isEmpty()) {
        const auto isUrgent = laidOut.dueLabel().isOverdue && !entry.isCompleted();
        TodoPainting::drawDueLabel(*painter, laidOut.due(), laidOut.dueLabel(),
                                   isUrgent ? colors.danger : colors.secondaryText, m_theme);
    }
    painter->restore();
}

QSize WidgetTodoDelegate::sizeHint(const QStyleOptionViewItem& option,
                                   const QModelIndex& index) const {
    return {option.rect.width(), layout(index.row(), option.rect.width()).height()};
}

const WidgetRowLayout& WidgetTodoDelegate::layout(int row, int width) const {
    return m_layouts.at(&m_model.entry(row), width, [&](const auto&) {
        return std::make_unique<WidgetRowLayout>(m_model.text(row), m_model.dueLabel(row), width,
                                                 m_theme);
    });
}

WidgetTodoList::WidgetTodoList(WidgetTodoModel& model, const Theme& theme, QWidget* parent)
    : RowListView(theme, parent),
      m_model(model),
      m_delegate(new WidgetTodoDelegate(model, theme, this)),
      m_leaving(*this, [&model](const model::Entry& entry) { return model.rowOf(entry); }) {
    setItemDelegate(m_delegate);
    setModel(&model);
    setAccessibleName(tr("Open todos"));
    applyTheme();
}

void WidgetTodoList::entriesChanged(const std::unordered_set<base::Uuid>& ids) {
    for (const auto row : measuredRows()) {
        if (ids.contains(m_model.entry(row).id())) {
            m_model.touch(row);
        }
    }
}

int WidgetTodoList::measuredHeight(int row) {
    return m_leaving.height(&m_model.entry(row), m_delegate->layout(row, column().width).height());
}

int WidgetTodoList::estimatedHeight(int) const {
    return WidgetRowLayout::lowestHeight(theme());
}

double WidgetTodoList::opacityOf(const QModelIndex& index) const {
    return m_leaving.opacity(&m_model.entry(index.row())) * RowListView::opacityOf(index);
}

RowPart WidgetTodoList::partAt(int row, const QPoint& position) const {
    const auto rect = visualRect(m_model.index(row, 0));
    const auto& laidOut = m_delegate->layout(row, rect.width());
    return isOn(laidOut.circle(), position - rect.topLeft()) ? RowPart::sign : RowPart::body;
}

RowListView::Tip WidgetTodoList::tipAt(int row, const QPoint& position) const {
    const auto rect = visualRect(m_model.index(row, 0));
    const auto& laidOut = m_delegate->layout(row, rect.width());
    const auto place = laidOut.due().translated(rect.topLeft());
    return isOn(place, position) ? Tip{laidOut.dueLabel().reminder, place} : Tip();
}

bool WidgetTodoList::isPressable(const QPoint& position, Qt::KeyboardModifiers) const {
    return partUnder(position) != RowPart::none;
}

void WidgetTodoList::clicked(int row, RowPart part, const QMouseEvent&) {
    if (part == RowPart::sign) {
        Q_EMIT toggleRequested(row);
    } else if (part == RowPart::body) {
        Q_EMIT openRequested(row);
    }
}

std::vector<RowSpeech::Action> WidgetTodoList::actionsOf(int row) {
    return {{m_model.entry(row).isCompleted() ? tr("Restore")
                                              : translated(schedule::CompleteTodoIntent::kTitle),
             [this, row] { Q_EMIT toggleRequested(row); }},
            {tr("Go to entry"), [this, row] { Q_EMIT openRequested(row); }}};
}

void WidgetTodoList::keyPressEvent(QKeyEvent* event) {
    const auto modifiers = event->modifiers() & ~Qt::KeypadModifier;
    const auto row = currentRow();
    switch (row < 0 ? 0 : event->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
        if (modifiers == Qt::ControlModifier) {
            Q_EMIT toggleRequested(row);
        } else if (modifiers == Qt::NoModifier) {
            Q_EMIT openRequested(row);
        }
        return;
    case Qt::Key_Space:
        if (isTick(*event)) {
            Q_EMIT toggleRequested(row);
        }
        return;
    default:
        RowListView::keyPressEvent(event);
    }
}

void WidgetTodoList::focusInEvent(QFocusEvent* event) {
    RowListView::focusInEvent(event);
    if (m_model.rowCount() > 0 && (currentRow() >= 0 || isByTab(*event))) {
        setCurrentRow(currentRow() >= 0 ? currentRow() : std::max(0, visibleRows().first));
    }
    viewport()->update();
}

void WidgetTodoList::contextMenuEvent(QContextMenuEvent* event) {
    event->ignore(); // the widget has one menu, wherever it is asked for
}

} // namespace korvex::ui
