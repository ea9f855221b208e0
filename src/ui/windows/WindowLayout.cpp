#include "ui/windows/WindowLayout.h"

#include "ui/windows/SidebarPlace.h"

#include <QWidget>

namespace korvex::ui {

namespace {

constexpr const char* kGeometryKey = "mainWindowGeometry";
constexpr const char* kSidebarWidthKey = "mainWindowSidebarWidth";
constexpr const char* kSidebarHiddenKey = "mainWindowSidebarHidden";
constexpr QSize kFirstSize(960, 640);

base::Bytes toBytes(const QByteArray& bytes) {
    return {bytes.begin(), bytes.end()};
}

QByteArray toByteArray(const base::Bytes& bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), static_cast<qsizetype>(bytes.size())};
}

} // namespace

WindowLayout::WindowLayout(QWidget& window, SidebarPlace& sidebar, app::UserDefaults& defaults)
    : m_window(window), m_sidebar(sidebar), m_defaults(defaults) {
    for (const auto* const key : {kGeometryKey, kSidebarWidthKey, kSidebarHiddenKey}) {
        defaults.mayWait(key);
    }
}

void WindowLayout::restore() {
    m_window.resize(kFirstSize);
    if (const auto width = m_defaults.integer(kSidebarWidthKey)) {
        m_sidebar.setWidth(static_cast<int>(*width));
    }
    m_sidebar.setWanted(!m_defaults.boolean(kSidebarHiddenKey).value_or(false));
    if (const auto geometry = m_defaults.bytes(kGeometryKey)) {
        m_window.restoreGeometry(toByteArray(*geometry));
    }
}

void WindowLayout::save() {
    m_defaults.setBytes(kGeometryKey, toBytes(m_window.saveGeometry()));
    m_defaults.setInteger(kSidebarWidthKey, m_sidebar.width());
    m_defaults.setBoolean(kSidebarHiddenKey, !m_sidebar.isWanted());
}

} // namespace korvex::ui
