#pragma once

#include "app/UserDefaults.h"
#include "ui/settings/SettingsPane.h"

#include <QWidget>

#include <vector>

class QBoxLayout;
class QComboBox;
class QStackedWidget;

namespace korvex::ui {

class NoticeLine;
class SidebarRow;

/// The settings: a list of panes, and beside it the one that is chosen; in a narrow window the list
/// is a choice above the pane. Every change holds at once. Escape and Ctrl+W close the window,
/// which remembers its place; what a pane is doing goes on. Main thread.
class SettingsWindow final : public QWidget {
    Q_OBJECT

public:
    /// A pane is made when it is first looked at.
    SettingsWindow(std::vector<SettingsPaneMaker> panes, app::UserDefaults& defaults,
                   const Theme& theme);
    ~SettingsWindow() override;

    void comeForward();
    /// As if it were chosen in the list.
    void showPane(int index);
    /// Takes what is being typed, as far as it says something.
    void takeTyped();
    /// The same, as the window is about to go: false where something cannot be read. Then its
    /// reason is in sight; the next call gives it up.
    bool leave();

Q_SIGNALS:
    /// The user wants to end the program.
    void quitRequested();

protected:
    void resizeEvent(QResizeEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    void addRows();
    /// Gives the keyboard to what the panes are chosen by.
    void focusList();
    void arrange();
    void applyTheme();
    void savePlace();
    void addShortcut(const QKeySequence& keys, void (SettingsWindow::*act)());
    void closeByKey();
    /// Says while settings cannot be kept.
    void showKept();

    std::vector<SettingsPaneMaker> m_panes;
    app::UserDefaults& m_defaults;
    const Theme& m_theme;
    QBoxLayout* m_layout;
    QWidget* m_side;
    QWidget* m_list;
    std::vector<SidebarRow*> m_rows;
    QComboBox* m_choice;
    QStackedWidget* m_stack;
    NoticeLine* m_unkept;
    base::Subscription m_keptChanges;
};

} // namespace korvex::ui
