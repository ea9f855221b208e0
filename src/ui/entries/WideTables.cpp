#include "ui/entries/WideTables.h"

#include <QWheelEvent>

namespace korvex::ui {

namespace {

/// What a key moves a table by, and one step of a wheel, in pixels at the standard font size.
constexpr int kTableStep = 48;
/// One step of a wheel, in the unit of wheels.
constexpr int kWheelStep = 120;

} // namespace

void WideTables::measured(const model::Entry* entry, const EntryRowLayout& laidOut) {
    if (laidOut.wholeWidth() > laidOut.width()) {
        m_wholeWidths.insert_or_assign(entry, laidOut.wholeWidth());
    } else {
        m_wholeWidths.erase(entry);
    }
}

int WideTables::wholeWidth(const model::Entry* entry) const {
    const auto whole = m_wholeWidths.find(entry);
    return whole == m_wholeWidths.end() ? 0 : whole->second;
}

void WideTables::step(int row, int direction) {
    scroll(row, direction * m_theme.scaled(kTableStep));
}

bool WideTables::follow(const QWheelEvent& event) {
    const auto isTurned = event.modifiers() == Qt::ShiftModifier;
    const auto pixels = isTurned ? event.pixelDelta().transposed() : event.pixelDelta();
    const auto steps = isTurned ? event.angleDelta().transposed() : event.angleDelta();
    const auto by =
        pixels.isNull() ? steps.x() * m_theme.scaled(kTableStep) / kWheelStep : pixels.x();
    const auto position = event.position().toPoint();
    const auto index = m_list.indexAt(position);
    return by != 0 && index.isValid() && scroll(index.row(), -by, position);
}

bool WideTables::scroll(int row, int by, std::optional<QPoint> under) {
    if (!m_hits.isText(row) || row == m_list.rowInEditing()) {
        return false;
    }
    const auto rect = m_list.visualRect(m_list.model()->index(row, 0));
    const auto local =
        under ? std::optional(QPointF(*under - rect.topLeft())) : std::optional<QPointF>();
    const auto hasMoved = m_delegate.scrollTables(row, by, local);
    if (hasMoved) {
        m_list.viewport()->update(rect);
    }
    return hasMoved;
}

} // namespace korvex::ui
