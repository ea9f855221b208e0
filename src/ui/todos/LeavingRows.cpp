#include "ui/todos/LeavingRows.h"

namespace korvex::ui {

void LeavingRows::shrink(const model::Entry& entry, double part) {
    m_parts[&entry] = part;
    measure(entry);
}

void LeavingRows::forget(const model::Entry& entry) {
    if (m_parts.erase(&entry) > 0) {
        measure(entry);
    }
}

int LeavingRows::height(const model::Entry* entry, int fullHeight) const {
    const auto part = m_parts.find(entry);
    return part == m_parts.end() ? fullHeight : static_cast<int>(fullHeight * part->second);
}

void LeavingRows::measure(const model::Entry& entry) {
    if (const auto row = m_rowOf(entry); row >= 0) {
        m_list.measureAgain(row);
    }
}

} // namespace korvex::ui
