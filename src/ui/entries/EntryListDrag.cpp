#include "ui/entries/EntryListView.h"
#include "ui/kit/RowDrag.h"

#include <QDrag>
#include <QDragMoveEvent>
#include <QMimeData>
#include <QPainter>

namespace korvex::ui {

void EntryListView::startDrag(Qt::DropActions) {
    const int row = currentRow();
    if (row < 0 || m_model.kind(row) != EntryListModel::RowKind::entry || row == editedRow()) {
        return;
    }
    const auto rect = visualRect(currentIndex());
    QPixmap picture(rect.size() * devicePixelRatioF());
    picture.setDevicePixelRatio(devicePixelRatioF());
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    painter.setOpacity(0.85);
    QStyleOptionViewItem option;
    initViewItemOption(&option);
    option.rect = QRect(QPoint(), rect.size());
    option.state = QStyle::State_Enabled | QStyle::State_Selected;
    m_delegate->paint(&painter, option, currentIndex());
    painter.end();

    auto* const drag = new QDrag(this);
    drag->setMimeData(rowDrag(kEntryDragType, m_model.entry(row)->id()));
    drag->setPixmap(picture);
    drag->setHotSpot(viewport()->mapFromGlobal(QCursor::pos()) - rect.topLeft());
    drag->exec(Qt::MoveAction);
    setDropTarget(std::nullopt);
}

void EntryListView::dragEnterEvent(QDragEnterEvent* event) {
    if (isRowDrag(*event->mimeData(), kEntryDragType)) {
        setState(DraggingState);
        event->acceptProposedAction();
    } else {
        event->ignore();
    }
}

void EntryListView::dragMoveEvent(QDragMoveEvent* event) {
    const auto target = isRowDrag(*event->mimeData(), kEntryDragType)
                            ? dropTargetAt(event->position().toPoint())
                            : std::nullopt;
    setDropTarget(target);
    if (target) {
        event->acceptProposedAction();
        startAutoScroll();
    } else {
        event->ignore();
    }
}

void EntryListView::dragLeaveEvent(QDragLeaveEvent*) {
    setDropTarget(std::nullopt);
    stopAutoScroll();
    setState(NoState);
}

void EntryListView::dropEvent(QDropEvent* event) {
    const auto target = dropTargetAt(event->position().toPoint());
    const auto id = draggedRow(*event->mimeData(), kEntryDragType);
    setDropTarget(std::nullopt);
    stopAutoScroll();
    setState(NoState);
    if (id && target) {
        event->acceptProposedAction();
        Q_EMIT dropped(*id, target->row, target->placement);
    }
}

std::optional<EntryListView::DropTarget> EntryListView::dropTargetAt(const QPoint& position) const {
    if (m_model.isReadOnly()) {
        return std::nullopt;
    }
    auto index = indexAt(position);
    if (!index.isValid() || m_model.kind(index.row()) != EntryListModel::RowKind::entry) {
        // Below the entries: after the last of them.
        int last = m_model.rowOf(EntryListModel::RowKind::newTodo) - 1;
        while (last >= 0 && m_model.kind(last) != EntryListModel::RowKind::entry) {
            --last;
        }
        return last < 0 ? std::nullopt
                        : std::optional(DropTarget{last, model::EntryPlacement::after});
    }
    const auto rect = visualRect(index);
    return DropTarget{index.row(), position.y() < rect.center().y() ? model::EntryPlacement::before
                                                                    : model::EntryPlacement::after};
}

void EntryListView::setDropTarget(std::optional<DropTarget> target) {
    m_dropTarget = target;
    viewport()->update();
}

} // namespace korvex::ui
