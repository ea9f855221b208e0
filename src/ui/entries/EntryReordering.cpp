#include "ui/entries/EntryReordering.h"

#include "ui/boards/RowDragTypes.h"
#include "ui/kit/lists/RowDrag.h"
#include "ui/text/RichTextClipboard.h"

#include <QDrag>
#include <QDropEvent>
#include <QMimeData>
#include <QPainter>

namespace korvex::ui {

void EntryReordering::drag(int row, const QPixmap& picture, const QPoint& place) {
    auto* const drag = new QDrag(&m_list);
    drag->setMimeData(rowDrag(kEntryDragType, m_model.entry(row)->id()));
    drag->setPixmap(picture);
    drag->setHotSpot(m_list.viewport()->mapFromGlobal(QCursor::pos()) - place);
    drag->exec(Qt::MoveAction);
    leave();
}

bool EntryReordering::take(QDropEvent& event) {
    if (isRowDrag(*event.mimeData(), kEntryDragType)) {
        event.acceptProposedAction();
        return true;
    }
    return hasText(*event.mimeData()) && acceptAsCopy(event);
}

void EntryReordering::follow(QDropEvent& event) {
    const auto drop = at(event);
    mark(drop ? drop->place : std::nullopt);
    if (!drop || !take(event)) {
        event.ignore();
    }
}

std::optional<EntryReordering::Drop> EntryReordering::drop(QDropEvent& event) {
    const auto drop = at(event);
    leave();
    return drop && take(event) ? drop : std::nullopt;
}

std::optional<EntryReordering::Drop> EntryReordering::at(const QDropEvent& event) const {
    const auto place = placeAt(event.position().toPoint());
    if (isRowDrag(*event.mimeData(), kEntryDragType)) {
        const auto entry = draggedRow(*event.mimeData(), kEntryDragType);
        return entry && place ? std::optional(Drop{entry, place}) : std::nullopt;
    }
    const auto canBeText = !m_model.isReadOnly() && hasText(*event.mimeData());
    return canBeText ? std::optional(Drop{std::nullopt, place}) : std::nullopt;
}

void EntryReordering::paint() const {
    if (m_place) {
        QPainter painter(m_list.viewport());
        const auto isBefore = m_place->placement == model::EntryPlacement::before;
        paintDropLine(painter, m_list.visualRect(m_model.index(m_place->row, 0)),
                      isBefore ? Qt::TopEdge : Qt::BottomEdge, m_theme.space(Space::wide), m_theme);
    }
}

std::optional<EntryReordering::Place> EntryReordering::placeAt(const QPoint& position) const {
    if (m_model.isReadOnly()) {
        return std::nullopt;
    }
    const auto index = m_list.indexBeside(position.y());
    if (!index.isValid() || m_model.kind(index.row()) != EntryRowKind::entry) {
        // Below the entries: after the last of them.
        auto last = m_model.rowOf(EntryRowKind::newTodo) - 1;
        while (last >= 0 && m_model.kind(last) != EntryRowKind::entry) {
            --last;
        }
        return last < 0 ? std::nullopt : std::optional(Place{last, model::EntryPlacement::after});
    }
    const auto isAbove = position.y() < m_list.visualRect(index).center().y();
    return Place{index.row(),
                 isAbove ? model::EntryPlacement::before : model::EntryPlacement::after};
}

void EntryReordering::mark(std::optional<Place> place) {
    m_place = place;
    m_list.viewport()->update();
}

} // namespace korvex::ui
