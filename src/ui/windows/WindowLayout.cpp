#include "ui/windows/WindowLayout.h"

#include "ui/windows/SidebarPlace.h"

#include <QSplitter>

namespace korvex::ui {

namespace {

constexpr const char* kGeometryKey = "mainWindowGeometry";
constexpr const char* kSplitterKey = "mainWindowSplitter";
constexpr const char* kSidebarHiddenKey = "mainWindowSidebarHidden";
constexpr QSize kFirstSize(960, 640);
constexpr int kFirstSidebarWidth = 220;
constexpr int kHandleWidth = 1;

base::Bytes toBytes(const QByteArray& bytes) {
    return {bytes.begin(), bytes.end()};
}

QByteArray toByteArray(const base::Bytes& bytes) {
    return {reinterpret_cast<const char*>(bytes.data()), static_cast<qsizetype>(bytes.size())};
}

} // namespace

WindowLayout::WindowLayout(QWidget& window, QSplitter& splitter, SidebarPlace& sidebar,
                           app::UserDefaults& defaults)
    : m_window(window), m_splitter(splitter), m_sidebar(sidebar), m_defaults(defaults) {}

void WindowLayout::restore() {
    m_window.resize(kFirstSize);
    m_splitter.setSizes({kFirstSidebarWidth, kFirstSize.width() - kFirstSidebarWidth});
    if (const auto sizes = m_defaults.bytes(kSplitterKey)) {
        m_splitter.restoreState(toByteArray(*sizes));
    }
    m_splitter.setHandleWidth(kHandleWidth); // what was saved holds a width of its own
    m_sidebar.setWanted(!m_defaults.boolean(kSidebarHiddenKey).value_or(false));
    // A narrow window folds the sidebar away, which is in its place until then.
    if (const auto geometry = m_defaults.bytes(kGeometryKey)) {
        m_window.restoreGeometry(toByteArray(*geometry));
    }
}

void WindowLayout::save() {
    m_defaults.setBytes(kGeometryKey, toBytes(m_window.saveGeometry()));
    if (m_splitter.count() > 1) {
        m_defaults.setBytes(kSplitterKey, toBytes(m_splitter.saveState()));
    }
    m_defaults.setBoolean(kSidebarHiddenKey, !m_sidebar.isWanted());
}

} // namespace korvex::ui
