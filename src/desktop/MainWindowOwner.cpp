#include "desktop/MainWindowOwner.h"

namespace korvex::desktop {

ui::MainWindow& MainWindowOwner::window() {
    if (!m_window) {
        m_window = std::make_unique<ui::MainWindow>(m_workspace, m_theme);
        if (m_whenMade) {
            m_whenMade(*m_window);
        }
        m_window->showNotices(m_notices);
    }
    return *m_window;
}

} // namespace korvex::desktop
