#include "ui/entries/EntryHits.h"

namespace korvex::ui {

bool EntryHits::isText(int row) const {
    return m_model.kind(row) == EntryRowKind::entry && !m_model.entry(row)->isTodo();
}

QRect EntryHits::signOf(int row) const {
    const auto place = placeOf(row);
    return m_delegate.layout(row).sign().translated(place.topLeft());
}

QRect EntryHits::scheduleOf(int row) const {
    const auto place = placeOf(row);
    const auto& laidOut = m_delegate.layout(row);
    const auto local = laidOut.due().isEmpty() ? laidOut.scheduleButton() : laidOut.due();
    return local.translated(place.topLeft());
}

int EntryHits::caretAt(int row, const QPoint& position) const {
    const auto place = placeOf(row);
    return m_delegate.layout(row).cursorAt(position - place.topLeft());
}

QString EntryHits::linkAt(const QPoint& position) const {
    const auto index = m_list.indexAt(position);
    if (!index.isValid() || !isText(index.row())) {
        return {};
    }
    const auto place = m_list.visualRect(index);
    return m_delegate.layout(index.row()).linkAt(position - place.topLeft());
}

} // namespace korvex::ui
