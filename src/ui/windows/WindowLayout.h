#pragma once

#include "app/UserDefaults.h"

class QSplitter;
class QWidget;

namespace korvex::ui {

/// Keeps where the main window stands and how it is divided, from one start to the next. Main
/// thread.
class WindowLayout {
public:
    /// The sidebar is the left part of the splitter, the window's whole content.
    WindowLayout(QWidget& window, QSplitter& splitter, QWidget& sidebar,
                 app::UserDefaults& defaults);

    /// Lays the window out as it was saved last; the first time in a size that suits most screens.
    void restore();
    void save();

private:
    QWidget& m_window;
    QSplitter& m_splitter;
    QWidget& m_sidebar;
    app::UserDefaults& m_defaults;
};

} // namespace korvex::ui
