#pragma once

#include "ui/kit/theme/Theme.h"
#include "ui/windows/MainWindow.h"
#include "ui/workspace/Workspace.h"

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace korvex::desktop {

/// The main window, made when it is first wanted: a start for Quick Entry alone pays for none.
/// Main thread; all that it is given outlives it.
class MainWindowOwner final {
public:
    MainWindowOwner(const ui::Workspace& workspace, const ui::Theme& theme)
        : m_workspace(workspace), m_theme(theme) {}

    /// What is done with the window once it is there.
    void setWhenMade(std::function<void(ui::MainWindow&)> whenMade) {
        m_whenMade = std::move(whenMade);
    }
    /// What the user should know of the start, as soon as there is a window to say it.
    void setNotices(std::vector<std::string> notices) { m_notices = std::move(notices); }

    ui::MainWindow& window();
    /// Null where nobody has wanted it yet.
    ui::MainWindow* windowIfMade() { return m_window.get(); }

private:
    const ui::Workspace& m_workspace;
    const ui::Theme& m_theme;
    std::function<void(ui::MainWindow&)> m_whenMade;
    std::vector<std::string> m_notices;
    std::unique_ptr<ui::MainWindow> m_window;
};

} // namespace korvex::desktop
