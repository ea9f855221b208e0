#pragma once

#include "app/QuickEntrySetup.h"

namespace korvex::desktop {

/// Whether the program goes on while nothing of it is to be seen: it does where a press of the
/// shortcut brings Quick Entry, unless the user wants it to end. Main thread; all that it is made
/// with outlives it.
class Background final {
public:
    /// Without a setup it never does.
    Background(const app::AppPreferences& preferences, const app::QuickEntrySetup* setup)
        : m_preferences(preferences), m_setup(setup) {}

    bool stays() const {
        return m_setup && m_setup->hotkey.isReady() &&
               m_preferences.whenClosed() != app::AppPreferences::WhenClosed::ends;
    }

private:
    const app::AppPreferences& m_preferences;
    const app::QuickEntrySetup* m_setup;
};

} // namespace korvex::desktop
