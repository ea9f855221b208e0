#include "ui/todos/LeavingRows.h"

#include <algorithm>
#include <cmath>

namespace korvex::ui {

namespace {

/// A row fades for so much of its way; then nothing is left to be cut when its place closes.
constexpr double kFading = 0.4;

/// Slowly at both ends.
double eased(double part) {
    return part * part * (3 - 2 * part);
}

} // namespace

void LeavingRows::leave(const model::Entry& entry, double part) {
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
    if (part == m_parts.end() || part->second <= kFading) {
        return fullHeight;
    }
    const auto closed = eased((part->second - kFading) / (1 - kFading));
    return static_cast<int>(std::floor(fullHeight * (1 - closed)));
}

double LeavingRows::opacity(const model::Entry* entry) const {
    const auto part = m_parts.find(entry);
    return part == m_parts.end() ? 1 : std::max(0.0, 1 - part->second / kFading);
}

void LeavingRows::measure(const model::Entry& entry) {
    if (const auto row = m_rowOf(entry); row >= 0) {
        m_list.measureAgain(row);
    }
}

} // namespace korvex::ui
