#pragma once

#include "ui/workspace/WindowPlace.h"

class QWidget;

namespace korvex::ui {

class SidebarPlace;

/// Keeps where the main window stands and how it is divided, from one start to the next. Main
/// thread.
class WindowLayout {
public:
    WindowLayout(QWidget& window, SidebarPlace& sidebar, app::UserDefaults& defaults);

    /// Lays the window out as it was saved last; the first time in a size that suits most screens.
    void restore();
    void save();

private:
    WindowPlace m_place;
    SidebarPlace& m_sidebar;
    app::UserDefaults& m_defaults;
};

} // namespace korvex::ui
