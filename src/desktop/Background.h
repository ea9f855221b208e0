#pragma once

#include "app/QuickEntrySetup.h"

namespace korvex::desktop {

/// Whether the program goes on while nothing of it is to be seen: it does where it was started to,
/// and where the user wants it and some keys may bring Quick Entry; unless the user wants it to
/// end. Main thread; all that it is made with outlives it.
class Background final {
public:
    /// A start for the background has said what is wanted, where nobody was asked yet.
    enum class StartedFor { windows, background };
    /// Without a setup it never does.
    Background(const app::AppPreferences& preferences, const app::QuickEntrySetup* setup,
               StartedFor startedFor)
        : m_preferences(preferences), m_setup(setup), m_startedFor(startedFor) {}

    bool stays() const {
        using WhenClosed = app::AppPreferences::WhenClosed;
        const auto whenClosed = m_preferences.whenClosed();
        return m_setup && whenClosed != WhenClosed::ends &&
               (m_startedFor == StartedFor::background ||
                (whenClosed == WhenClosed::staysReady && m_setup->hotkey.mayBeReady()));
    }

private:
    const app::AppPreferences& m_preferences;
    const app::QuickEntrySetup* m_setup;
    StartedFor m_startedFor;
};

} // namespace korvex::desktop
