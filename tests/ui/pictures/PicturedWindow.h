#pragma once

#include "app/AppPreferences.h"
#include "app/FileUserDefaults.h"
#include "base/Log.h"
#include "platform/javascriptcore/ScriptModule.h"
#include "platform/qt/QtRunLoop.h"
#include "store/ModelContainer.h"
#include "support/FakeClock.h"
#include "support/FakeReminderCenter.h"
#include "support/ScriptedHotkey.h"
#include "support/TemporaryFolder.h"
#include "support/UsedBefore.h"
#include "ui/kit/style/QuietStyle.h"
#include "ui/kit/theme/Theme.h"
#include "ui/windows/MainWindow.h"
#include "ui/windows/WindowScenes.h"
#include "ui/workspace/WorkspaceOwner.h"

#include <QImage>
#include <QPixmap>
#include <QSize>

#include <memory>

namespace korvex::tests {

/// How a window is to be looked at.
struct Variant {
    enum class Fill { empty, usual, full };

    const char* name;
    app::AppPreferences::Appearance appearance = app::AppPreferences::Appearance::light;
    ui::Theme::SystemContrast contrast = ui::Theme::SystemContrast::usual;
    int fontSize = app::AppPreferences::kStandardFontSize;
    QSize size{960, 640};
    Qt::LayoutDirection direction = Qt::LeftToRight;
    Fill fill = Fill::usual;
    /// Of the screen; it is the same for all windows of a process.
    int scale = 1;
};

/// A main window over a store of its own, as a variant wants it, in which nothing moves. One at a
/// time.
class PicturedWindow {
public:
    explicit PicturedWindow(const Variant& variant);

    const ui::Theme& theme() const { return m_theme; }
    WindowScenes& scenes() { return *m_scenes; }
    /// With the menu that is open over it.
    QImage picture();
    /// A widget over the same store.
    QImage widget();
    /// All controls in all states, in the same look; empty where the build has no gallery.
    QImage gallery();
    /// The formatted text of the Inbox, for other programs.
    void writeNote(const QString& file) const;

private:
    void backUp(const ui::Workspace& workspace);
    QPixmap stillWindow();

    TemporaryFolder m_folder;
    base::StandardErrorLog m_log{base::LogLevel::warning};
    /// A Monday morning in March 2025, so that no day changes what is to be seen.
    FakeClock m_clock{base::Instant{763286400}};
    platform::qt::QtRunLoop m_runLoop;
    FakeReminderCenter m_reminders;
    storage::BackgroundThreads m_threads;
    app::FileUserDefaults m_defaults{m_folder / "settings.json"};
    UsedBefore m_usedBefore{m_defaults, m_clock.now() + -7 * 86'400.0};
    app::AppPreferences m_preferences{m_defaults, m_log};
    ui::Theme m_theme{m_preferences};
    ui::InstalledStyle m_style{m_theme};
    ScriptedQuickEntry m_quickEntry{m_folder.path()};
    platform::javascriptcore::ScriptModule m_script{
        platform::javascriptcore::ScriptModule::defaultFile(), m_log};
    std::unique_ptr<store::ModelContainer> m_container;
    std::unique_ptr<ui::WorkspaceOwner> m_owner;
    std::unique_ptr<ui::MainWindow> m_window;
    std::unique_ptr<WindowScenes> m_scenes;
};

} // namespace korvex::tests
