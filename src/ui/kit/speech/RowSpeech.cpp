#include "ui/kit/speech/RowSpeech.h"

#include <QAbstractItemView>
#include <QTimer>

namespace korvex::ui {

void RowAnnouncer::currentChanged() {
    m_wasChecked = isChecked();
    if (m_view.hasFocus()) {
        tell(QAccessible::Focus, m_view.currentIndex().row());
    }
}

void RowAnnouncer::focused() {
    if (QAccessible::isActive()) {
        QTimer::singleShot(0, &m_view, [this] {
            if (m_view.hasFocus()) {
                tell(QAccessible::Focus, m_view.currentIndex().row());
            }
        });
    }
}

void RowAnnouncer::selected(int row) {
    tell(QAccessible::Selection, row);
}

void RowAnnouncer::changed(int first, int last) {
    const auto row = m_view.currentIndex().row();
    if (row < first || row > last || isChecked() == m_wasChecked) {
        return;
    }
    m_wasChecked = isChecked();
    if (QAccessible::isActive()) {
        QAccessible::State state;
        state.checked = true;
        QAccessibleStateChangeEvent event(&m_view, state);
        event.setChild(row);
        QAccessible::updateAccessibility(&event);
    }
}

void RowAnnouncer::tell(QAccessible::Event what, int row) {
    if (QAccessible::isActive() && row >= 0) {
        QAccessibleEvent event(&m_view, what);
        event.setChild(row);
        QAccessible::updateAccessibility(&event);
    }
}

bool RowAnnouncer::isChecked() const {
    return m_view.currentIndex().data(Qt::CheckStateRole).toInt() == Qt::Checked;
}

} // namespace korvex::ui
