#include "ui/overview/SearchListView.h"

#include "ui/overview/SearchResultDelegate.h"

#include <QAccessible>
#include <QKeyEvent>

namespace korvex::ui {

SearchListView::SearchListView(SearchListModel& model, const Theme& theme, QWidget* parent)
    : RowListView(theme, parent),
      m_model(model),
      m_delegate(new SearchResultDelegate(model, theme, this)) {
    setItemDelegate(m_delegate);
    setModel(&model);
    setAccessibleName(tr("Results"));
    applyTheme();
}

void SearchListView::walk(int key) {
    QKeyEvent event(QEvent::KeyPress, key, Qt::NoModifier);
    keyPressEvent(&event);
}

int SearchListView::heightOf(int row) const {
    return m_rowHeight + m_delegate->distanceAbove(row);
}

void SearchListView::forgetLayouts() {
    m_rowHeight = m_delegate->plainHeight();
}

void SearchListView::currentChanged(const QModelIndex& current, const QModelIndex& previous) {
    RowListView::currentChanged(current, previous);
    // The keys may be the search field's; a screen reader is told where they have come to.
    if (QAccessible::isActive() && current.isValid() && !hasFocus()) {
        QAccessibleEvent event(this, QAccessible::Focus);
        event.setChild(current.row());
        QAccessible::updateAccessibility(&event);
    }
}

void SearchListView::keyPressEvent(QKeyEvent* event) {
    switch (event->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
        if (currentIndex().isValid()) {
            Q_EMIT openRequested(currentRow());
        }
        return;
    case Qt::Key_Space:
        if (currentIndex().isValid() && isTick(*event)) {
            Q_EMIT toggleRequested(currentRow());
        }
        return;
    default:
        break;
    }
    RowListView::keyPressEvent(event);
}

void SearchListView::clicked(int row, RowPart part, const QMouseEvent&) {
    if (part == RowPart::sign) {
        Q_EMIT toggleRequested(row);
    } else {
        Q_EMIT openRequested(row);
    }
}

std::vector<RowSpeech::Action> SearchListView::actionsOf(int row) {
    std::vector<Action> actions{{tr("Open"), [this, row] { Q_EMIT openRequested(row); }}};
    if (m_model.isTickable(row)) {
        actions.push_back({m_model.row(row).isCompleted ? tr("Restore") : tr("Complete"),
                           [this, row] { Q_EMIT toggleRequested(row); }});
    }
    return actions;
}

RowListView::Tip SearchListView::tipAt(int row, const QPoint&) const {
    return {m_model.row(row).due.reminder, visualRect(m_model.index(row, 0))};
}

/// Only the circle of a todo that can be ticked is a part of its own.
RowPart SearchListView::partAt(int row, const QPoint& position) const {
    const auto sign = m_delegate->signRect(row, column().width);
    const auto isTickable = m_model.isTickable(row);
    const auto local = position - visualRect(m_model.index(row, 0)).topLeft();
    return isTickable && isOn(sign, local) ? RowPart::sign : RowPart::body;
}

} // namespace korvex::ui
