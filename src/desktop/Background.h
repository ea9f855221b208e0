#pragma once

#include "app/QuickEntrySetup.h"
#include "ui/windows/MainWindow.h"

#include <QObject>

namespace korvex::desktop {

/// Whether the program goes on while nothing of it is to be seen: it does where a press of the
/// shortcut brings Quick Entry, unless the user wants it to end. Main thread; all that it is made
/// with outlives it.
class Background final : public QObject {
    Q_OBJECT

public:
    /// From now on the program ends only by this object, or when it is told to. Without a setup,
    /// whenever its last window closes.
    Background(ui::MainWindow& window, const app::AppPreferences& preferences,
               const app::QuickEntrySetup* setup);

    /// Whether the program ends when its last window closes.
    bool mayEnd() const;
    /// For windows that Qt does not count, such as panels: one was closed.
    void windowClosed();

private:
    /// Whether a way leads back to a program without windows.
    bool isReachable() const { return m_setup && m_setup->hotkey.isReady(); }

    const app::AppPreferences& m_preferences;
    const app::QuickEntrySetup* m_setup;
};

} // namespace korvex::desktop
