#pragma once

#include "app/HotkeyBackend.h"
#include "app/Launch.h"
#include "base/RunLoop.h"
#include "base/Signal.h"
#include "desktop/MainWindowOwner.h"
#include "desktop/QuickEntry.h"
#include "platform/system/SingleInstance.h"

#include <QWidget>

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
/// thread; the windows and the run loop must outlive it.
class Launches final {
public:
    Launches(MainWindowOwner& mainWindow, QuickEntry& quickEntry, base::RunLoop& runLoop)
        : m_mainWindow(mainWindow), m_quickEntry(quickEntry), m_runLoop(runLoop) {}

    /// Soon, and not within who asks: what is done may take as long as the user thinks. An action
    /// that nobody knows brings the main window forward and no more.
    void take(const app::Launch& launch);
    /// The user has pressed the shortcut.
    void take(const app::HotkeyPress& press);
    /// What this program was started for, at once.
    void begin(const app::Launch& launch);
    /// Brings the main window forward where nobody has asked for anything yet.
    void beginUnlessAsked();

private:
    /// In the run loop, unless this is gone by then.
    template <typename Work>
    void later(Work&& work);
    void carryOut(const app::Launch& launch);
    void openLinks(const app::Launch& launch);

    MainWindowOwner& m_mainWindow;
    QuickEntry& m_quickEntry;
    base::RunLoop& m_runLoop;
    bool m_wasAsked = false;
    std::shared_ptr<const bool> m_life = std::make_shared<bool>(true);
};

} // namespace korvex::desktop
