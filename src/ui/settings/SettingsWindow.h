#pragma once

#include "app/UserDefaults.h"
#include "ui/settings/SettingsPane.h"
#include "ui/workspace/WindowPlace.h"

#include <QWidget>

#include <vector>

class QBoxLayout;
class QStackedWidget;

namespace korvex::ui {

class ListChoice;
class SidebarRow;

/// The settings: a list of panes, and beside it the one that is chosen; in a narrow window the list
/// is a choice above the pane. Tab comes to the list once, on the pane that is shown, and arrows
/// lead through it. Every change holds at once. Escape takes back what is being typed; else it
/// closes the window, as Ctrl+W does, which remembers its place and pane; what a pane is doing goes
/// on. Main thread.
class SettingsWindow final : public QWidget {
    Q_OBJECT

public:
    /// A pane is made when it is first looked at. `program` is how the title calls that.
    SettingsWindow(std::vector<SettingsPaneMaker> panes, const QString& program,
                   app::UserDefaults& defaults, const Theme& theme);
    ~SettingsWindow() override;

    /// When it opens, the keyboard is where the panes are chosen.
    void comeForward();
    /// As if it were chosen in the list.
    void showPane(int index);
    /// Takes what is being typed, as far as it says something.
    void takeTyped();
    /// The same, as the window is about to go: false where something cannot be read. Then its
    /// reason is in sight; the next call gives it up.
    bool leave();

    /// What panes are doing and comes to nothing if the window goes now, as its user is told; empty
    /// for nothing.
    QString loss() const;
    /// Ends that, soon; `workEnded` tells when.
    void cancelWork();

Q_SIGNALS:
    /// What a pane was doing has ended, and left nothing half done.
    void workEnded();
    /// The user wants to end the program.
    void quitRequested();

protected:
    void resizeEvent(QResizeEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    void addRows();
    /// The pane that was shown last.
    int lastPane() const;
    /// Gives the keyboard to what the panes are chosen by.
    void focusList();
    void arrange();
    void applyTheme();
    void savePlace();
    void addShortcut(const QKeySequence& keys, void (SettingsWindow::*act)());
    void closeByKey();

    std::vector<SettingsPaneMaker> m_panes;
    app::UserDefaults& m_defaults;
    WindowPlace m_place;
    const Theme& m_theme;
    QBoxLayout* m_layout;
    QWidget* m_side;
    QWidget* m_list;
    std::vector<SidebarRow*> m_rows;
    ListChoice* m_choice;
    QStackedWidget* m_stack;
};

} // namespace korvex::ui
