#include "ui/overview/TodoListView.h"

#include "ui/todos/RowFrame.h"

#include <QMouseEvent>

namespace korvex::ui {

TodoListView::TodoListView(TodoListModel& model, const Theme& theme, QWidget* parent)
    : RowListView(theme, parent),
      m_model(model),
      m_delegate(new TodoItemDelegate(model, theme, this)),
      m_leaving(*this, [&model](const model::Entry& entry) { return model.rowOf(entry); }) {
    setItemDelegate(m_delegate);
    setModel(&model);
    applyTheme();
}

void TodoListView::setCurrentRow(int row) {
    const auto index = m_model.index(row, 0);
    selectionModel()->setCurrentIndex(index, QItemSelectionModel::ClearAndSelect);
    if (row == 1) {
        scrollTo(m_model.index(0, 0));
    }
    scrollTo(index);
}

int TodoListView::nearestTodo(int row) const {
    for (int below = std::max(row, 0); below < m_model.rowCount(); ++below) {
        if (!m_model.isHeading(below)) {
            return below;
        }
    }
    for (int above = std::min(row, m_model.rowCount()) - 1; above >= 0; --above) {
        if (!m_model.isHeading(above)) {
            return above;
        }
    }
    return -1;
}

QRect TodoListView::scheduleAnchor(int row) const {
    const auto rect = visualRect(m_model.index(row, 0));
    const auto& laidOut = m_delegate->layout(row, rect.width());
    const auto local = laidOut.detail().isEmpty() ? laidOut.text() : laidOut.detail();
    return globalRect(RowFrame::of(theme()).anchorOf(local.translated(rect.topLeft()), rect));
}

void TodoListView::setBoardNames(const QStringList& names) {
    if (m_delegate->setBoardNames(names)) {
        measureAllAgain();
    }
}

void TodoListView::entriesChanged(const std::unordered_set<base::Uuid>& ids) {
    for (const auto row : measuredRows()) {
        const auto* const entry = m_model.entry(row);
        if (entry && ids.contains(entry->id())) {
            m_model.touch(row);
        }
    }
}

int TodoListView::measuredHeight(int row) {
    return m_leaving.height(m_model.entry(row), m_delegate->height(row, column().width));
}

int TodoListView::estimatedHeight(int row) const {
    // Without a look at the todo: most texts need one line, and a list may be very long.
    return m_model.isHeading(row) ? TodoRowLayout::headingHeight(theme())
                                  : TodoRowLayout::lowestHeight(theme());
}

double TodoListView::opacityOf(const QModelIndex& index) const {
    return m_leaving.opacity(m_model.entry(index.row())) * RowListView::opacityOf(index);
}

QModelIndex TodoListView::moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers) {
    const auto wanted = RowListView::moveCursor(action, modifiers);
    if (!wanted.isValid() || !m_model.isHeading(wanted.row())) {
        return wanted;
    }
    const auto isUpwards = wanted.row() < currentRow();
    for (int row = wanted.row() - 1; isUpwards && row >= 0; --row) {
        if (!m_model.isHeading(row)) {
            return m_model.index(row, 0);
        }
    }
    return m_model.index(nearestTodo(wanted.row()), 0);
}

void TodoListView::keyPressEvent(QKeyEvent* event) {
    const auto modifiers = event->modifiers() & ~Qt::KeypadModifier;
    const auto row = currentRow();
    if (row < 0 || m_model.isHeading(row)) {
        RowListView::keyPressEvent(event);
        return;
    }
    switch (event->key()) {
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
    case Qt::Key_Delete:
        Q_EMIT deletionRequested(row);
        return;
    case Qt::Key_D:
        if (modifiers == Qt::ControlModifier) {
            Q_EMIT scheduleRequested(row);
            return;
        }
        break;
    default:
        break;
    }
    RowListView::keyPressEvent(event);
}

void TodoListView::clicked(int row, RowPart part, const QMouseEvent&) {
    if (part == RowPart::sign) {
        Q_EMIT toggleRequested(row);
    } else if (part == RowPart::label) {
        Q_EMIT scheduleRequested(row);
    }
}

void TodoListView::focusInEvent(QFocusEvent* event) {
    RowListView::focusInEvent(event);
    const auto hasCurrent = currentIndex().isValid() && !m_model.isHeading(currentRow());
    const auto row = hasCurrent        ? currentRow()
                     : isByTab(*event) ? nearestTodo(visibleRows().first)
                                       : -1;
    if (row >= 0) {
        setCurrentRow(row);
    }
    viewport()->update();
}

QAccessible::Role TodoListView::roleOf(int row) const {
    return m_model.isHeading(row) ? QAccessible::Heading : QAccessible::ListItem;
}

std::vector<RowSpeech::Action> TodoListView::actionsOf(int row) {
    const auto* const todo = m_model.entry(row);
    if (!todo) {
        return {};
    }
    std::vector<Action> actions{
        {todo->isCompleted() ? tr("Restore") : tr("Complete"),
         [this, row] { Q_EMIT toggleRequested(row); }},
        {tr("Go to entry"), [this, row] { Q_EMIT openRequested(row); }},
    };
    if (!todo->isCompleted()) {
        actions.push_back({tr("Schedule"), [this, row] { Q_EMIT scheduleRequested(row); }});
    }
    return actions;
}

RowListView::Tip TodoListView::tipAt(int row, const QPoint& position) const {
    if (m_model.isHeading(row)) {
        return {};
    }
    const auto rect = visualRect(m_model.index(row, 0));
    const auto& laidOut = m_delegate->layout(row, rect.width());
    const auto place = laidOut.detail().translated(rect.topLeft());
    return isOn(place, position) ? Tip{laidOut.detailLabel().reminder, place} : Tip();
}

RowPart TodoListView::partAt(int row, const QPoint& position) const {
    const auto rect = visualRect(m_model.index(row, 0));
    const auto& laidOut = m_delegate->layout(row, rect.width());
    const auto local = position - rect.topLeft();
    if (isOn(laidOut.circle(), local)) {
        return RowPart::sign;
    }
    const auto isSchedule = m_model.detail() == TodoListModel::Detail::due;
    return isSchedule && isOn(laidOut.detail(), local) ? RowPart::label : RowPart::body;
}

} // namespace korvex::ui
