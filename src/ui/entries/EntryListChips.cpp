#include "ui/entries/EntryListView.h"

namespace korvex::ui {

// The attachments under the texts of the rows.

std::optional<EntryListView::Chips> EntryListView::chipsOf(int row) const {
    if (row < 0 || !m_model.entry(row)) {
        return std::nullopt;
    }
    const auto rect = visualRect(m_model.index(row, 0));
    const auto& laidOut = m_delegate->layout(row, rect.width());
    if (!laidOut.chips()) {
        return std::nullopt;
    }
    // Under an editor they stand at the foot of the row, however high that is.
    const int above = row == editedRow() ? rect.height() - laidOut.height() : 0;
    return Chips{laidOut.chips(), rect.topLeft() + laidOut.chipsTopLeft() + QPoint(0, above)};
}

std::optional<EntryListView::Chip> EntryListView::chipAt(const QPoint& position) const {
    const int row = indexAt(position).row();
    const auto shown = chipsOf(row);
    if (!shown) {
        return std::nullopt;
    }
    const int index = shown->chips->chipAt(position - shown->topLeft);
    if (index < 0) {
        return std::nullopt;
    }
    return Chip{m_model.entry(row), shown->chips->idOf(index),
                shown->chips->rect(index).translated(shown->topLeft)};
}

void EntryListView::setMarks(const AttachmentMarks& marks) {
    if (m_delegate->marks() != marks) {
        m_delegate->setMarks(marks);
        viewport()->update();
    }
}

void EntryListView::setDragScrolling(bool scrolls) {
    if (scrolls) {
        startAutoScroll();
    } else {
        stopAutoScroll();
    }
}

int EntryListView::chipsExtent(int row) const {
    return m_model.entry(row) ? m_delegate->layout(row, viewport()->width()).chipsExtent() : 0;
}

} // namespace korvex::ui
