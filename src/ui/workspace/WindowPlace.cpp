#include "ui/workspace/WindowPlace.h"

#include <QWidget>

namespace korvex::ui {

WindowPlace::WindowPlace(QWidget& window, app::UserDefaults& defaults, const char* key)
    : m_window(window), m_defaults(defaults), m_key(key) {
    defaults.mayWait(key);
}

void WindowPlace::restore(QSize first) {
    m_window.resize(first);
    if (const auto place = m_defaults.bytes(m_key)) {
        m_window.restoreGeometry(
            {reinterpret_cast<const char*>(place->data()), static_cast<qsizetype>(place->size())});
    }
}

void WindowPlace::save() {
    const auto place = m_window.saveGeometry();
    m_defaults.setBytes(m_key, {place.begin(), place.end()});
}

void bringForward(QWidget& window) {
    window.setWindowState(window.windowState() & ~Qt::WindowMinimized);
    window.show();
    window.raise();
    window.activateWindow();
}

} // namespace korvex::ui
