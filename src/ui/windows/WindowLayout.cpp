#include "ui/windows/WindowLayout.h"

#include "ui/windows/SidebarPlace.h"

namespace korvex::ui {

namespace {

constexpr const char* kGeometryKey = "mainWindowGeometry";
constexpr const char* kSidebarWidthKey = "mainWindowSidebarWidth";
constexpr const char* kSidebarHiddenKey = "mainWindowSidebarHidden";
constexpr QSize kFirstSize(960, 640);

} // namespace

WindowLayout::WindowLayout(QWidget& window, SidebarPlace& sidebar, app::UserDefaults& defaults)
    : m_place(window, defaults, kGeometryKey), m_sidebar(sidebar), m_defaults(defaults) {
    for (const auto* const key : {kSidebarWidthKey, kSidebarHiddenKey}) {
        defaults.mayWait(key);
    }
}

void WindowLayout::restore() {
    if (const auto width = m_defaults.integer(kSidebarWidthKey)) {
        m_sidebar.setWidth(static_cast<int>(*width));
    }
    m_sidebar.setWanted(!m_defaults.boolean(kSidebarHiddenKey).value_or(false));
    m_place.restore(kFirstSize);
}

void WindowLayout::save() {
    m_place.save();
    m_defaults.setInteger(kSidebarWidthKey, m_sidebar.width());
    m_defaults.setBoolean(kSidebarHiddenKey, !m_sidebar.isWanted());
}

} // namespace korvex::ui
