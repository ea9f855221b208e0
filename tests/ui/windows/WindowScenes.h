#pragma once

#include "support/ScriptedHotkey.h"
#include "ui/windows/CaptureScenes.h"
#include "ui/workspace/Workspace.h"

#include <Qt>

#include <functional>
#include <string>
#include <vector>

class QAction;
class QWidget;

namespace korvex::ui {
class BoardPage;
class MainWindow;
class Navigation;
class SettingsWindow;
} // namespace korvex::ui

namespace korvex::tests {

class FakeReminderCenter;

/// The ways of a user to every page and panel of a main window, for whoever looks at all of them:
/// by ear, for its contrasts, or with a person's eyes.
class WindowScenes {
public:
    struct Scene {
        /// As in the name of a file.
        std::string name;
        std::function<void()> open;
        /// What a screen reader finds there, among other things.
        std::string shows;
    };

    /// Of the window's store as it is now: what it holds nothing for is left out. A store with
    /// something for every scene has a board beside the Inbox and an archived one, and in the Inbox
    /// a text, an open todo and a completed one.
    /// Where there is a system for shortcuts, its answers are scenes too.
    WindowScenes(ui::MainWindow& window, const ui::Workspace& workspace, const ui::Theme& theme,
                 ScriptedHotkeySystem* hotkeys = nullptr);

    const std::vector<Scene>& all() const { return m_scenes; }
    /// Leads there from wherever the window is. Throws where the way is not found.
    void open(const Scene& scene);
    void open(const std::string& name);
    /// The window that the scene is in.
    QWidget& shown();
    /// Whether the settings have looked at all that they tell of.
    bool isSettled();
    /// Gives up what the scene has opened.
    void close();
    /// Opens the editor of an entry of the Inbox.
    void edit(const model::Entry& entry);
    /// Presses a key where the keyboard is.
    void key(Qt::Key which, Qt::KeyboardModifiers modifiers = {});

private:
    void addBoardScenes();
    void addEditingScenes();
    void addPanelScenes();
    void addMenuScenes();
    void addBarScenes();
    void addPageScenes();
    void addSettingsScenes();
    void addHotkeyScenes(ScriptedHotkeySystem& hotkeys);
    void addCaptureScenes();
    /// Of Quick Entry, which opens for it.
    void addCapture(const char* name, std::function<void(CaptureScenes&)> open, std::string shows);
    void addReminderScenes();
    /// Opens the settings on that pane.
    void openSettings(int pane);
    void add(const char* name, std::function<void()> open, std::string shows = {});
    ui::BoardPage& page() const;
    ui::Navigation& navigation() const;
    /// Null until it was opened.
    static ui::SettingsWindow* settings();
    /// Gives the keyboard to this entry's row.
    void choose(const model::Entry& entry);
    void type(const char* text);
    /// The one in sight of this accessible name; null for none.
    template <typename Kind>
    Kind* widget(const char* name) const;
    void press(const char* button);
    QAction& barAction(const char* name) const;
    void focus(const char* field);
    /// Chooses an entry of the menu that is open.
    static void chooseInMenu(const char* text);

    ui::MainWindow& m_window;
    const ui::Workspace& m_workspace;
    CaptureScenes m_capture;
    /// Null where the test has none of its own.
    FakeReminderCenter* m_reminders = nullptr;
    model::Board* m_inbox = nullptr;
    model::Board* m_other = nullptr;
    model::Board* m_archived = nullptr;
    model::Entry* m_todo = nullptr;
    model::Entry* m_text = nullptr;
    /// With a picture attached to it.
    model::Entry* m_pictured = nullptr;
    std::vector<Scene> m_scenes;
};

} // namespace korvex::tests
