#include "ui/entries/EntryChips.h"

#include "ui/entries/EntryListView.h"

namespace korvex::ui {

bool EntryChips::hasAny(int row) const {
    return row >= 0 && m_model.entry(row) && !m_model.attachments(row).isEmpty();
}

std::optional<EntryChips::OfRow> EntryChips::of(int row) const {
    if (!hasAny(row)) {
        return std::nullopt;
    }
    const auto rect = m_list.visualRect(m_model.index(row, 0));
    const auto& laidOut = m_delegate.layout(row);
    if (!laidOut.chips()) {
        return std::nullopt; // the layout is older than the attachments
    }
    // Under an editor they stand at the foot of the row, however high that is.
    const auto above = row == m_list.editedRow() ? rect.height() - laidOut.height() : 0;
    return OfRow{laidOut.chips(), rect.topLeft() + laidOut.chipsTopLeft() + QPoint(0, above)};
}

std::optional<EntryChips::Chip> EntryChips::at(const QPoint& position) const {
    const auto row = m_list.indexAt(position).row();
    const auto shown = of(row);
    if (!shown) {
        return std::nullopt;
    }
    const auto index = shown->chips->chipAt(position - shown->topLeft);
    if (index < 0) {
        return std::nullopt;
    }
    return Chip{m_model.entry(row), shown->chips->idOf(index),
                shown->chips->rect(index).translated(shown->topLeft)};
}

int EntryChips::extent(int row) const {
    return hasAny(row) ? m_delegate.layout(row).chipsExtent() : 0;
}

void EntryChips::setMarks(const AttachmentMarks& marks) {
    if (m_delegate.marks() != marks) {
        m_delegate.setMarks(marks);
        m_list.viewport()->update();
    }
}

} // namespace korvex::ui
