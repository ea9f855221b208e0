#pragma once

#include "app/HotkeyBackend.h"
#include "app/Launch.h"
#include "base/RunLoop.h"
#include "base/Signal.h"
#include "platform/system/SingleInstance.h"
#include "ui/windows/MainWindow.h"

#include <memory>
#include <vector>

namespace korvex::desktop {

/// Shows a window to who has started the program again.
void bringForward(QWidget& window, const app::Launch& launch);

/// Keeps what later starts of the program ask for until there is a main window that can do it.
class EarlyLaunches final {
public:
    explicit EarlyLaunches(platform::system::SingleInstance& instance);

    /// The last thing.
    std::vector<app::Launch> take();

private:
    std::vector<app::Launch> m_launches;
    base::Subscription m_listening;
};

/// Does what later starts of the program, and other programs over the bus, ask the app for. Main
/// thread; the window and the run loop must outlive it.
class Launches final {
public:
    Launches(ui::MainWindow& window, base::RunLoop& runLoop)
        : m_window(window), m_runLoop(runLoop) {}

    /// Soon, and not within who asks: what is done may take as long as the user thinks. An action
    /// brings the window forward and no more: there is none yet.
    void take(const app::Launch& launch);
    /// The user has pressed the shortcut: the window comes forward.
    void take(const app::HotkeyPress& press);
    /// Shows what is linked to, without bringing the window forward.
    void openLinks(const app::Launch& launch);

private:
    void carryOut(const app::Launch& launch);

    ui::MainWindow& m_window;
    base::RunLoop& m_runLoop;
    std::shared_ptr<const bool> m_life = std::make_shared<bool>(true);
};

} // namespace korvex::desktop
