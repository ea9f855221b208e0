#pragma once

#include "app/QuickEntrySetup.h"
#include "base/Log.h"
#include "base/RunLoop.h"

#include <functional>
#include <memory>

namespace korvex::desktop {

/// The shortcut of Quick Entry and what else has it at hand from anywhere. Main thread; all that
/// it is made with must outlive it.
class Hotkey final {
public:
    /// Asks nobody for anything yet.
    Hotkey(app::AppPreferences& preferences, base::RunLoop& runLoop, base::LogSink& log);

    app::QuickEntrySetup& setup() { return m_setup; }
    /// Registers the shortcut of the preferences from now on; only the first call counts.
    void start(std::function<void(const app::HotkeyPress&)> onPress);
    bool isStarted() const { return m_isStarted; }

private:
    app::AppPreferences& m_preferences;
    std::unique_ptr<app::HotkeyBackend> m_backend;
    app::GlobalHotkeyManager m_manager;
    app::QuickEntrySetup m_setup;
    bool m_isStarted = false;
};

} // namespace korvex::desktop
