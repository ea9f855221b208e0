#pragma once

#include "ui/settings/SettingsGroup.h"

#include <QWidget>

#include <functional>
#include <string>
#include <vector>

class QVBoxLayout;

namespace korvex::ui {

class ColumnLayout;
class PanelScroll;

/// One subject of the settings: its title, and under it groups of rows, in a column that scrolls.
/// What is changed there holds at once, and what is changed elsewhere is shown while the pane is in
/// sight. Main thread.
class SettingsPane : public QWidget {
    Q_OBJECT

public:
    /// What comes to nothing if the pane ends now, as its user is told; empty for nothing.
    virtual QString loss() const { return {}; }
    /// Ends that, soon; `workEnded` tells when.
    virtual void cancelWork() {}

Q_SIGNALS:
    /// What was being done has ended, and left nothing half done.
    void workEnded();

protected:
    SettingsPane(const QString& title, const Theme& theme);

    /// Shows what it is about as that is now; called whenever the pane comes into sight.
    virtual void follow() = 0;
    /// Calls it once, soon, however often this is called before; not while nobody sees the pane.
    void followSoon();
    void showEvent(QShowEvent* event) override;

    /// Below what is there; the note stands between the heading and the rows. Both may be empty.
    SettingsGroup& addGroup(const QString& heading = {}, const QString& note = {});
    /// Scrolls to a part of the pane, once that has its place.
    void bringIntoSight(QWidget& part);

private:
    void applyTheme();

    const Theme& m_theme;
    QWidget* m_content;
    ColumnLayout* m_column;
    PanelScroll* m_scroll;
    /// Of each group, what stands above its rows and the rows.
    std::vector<QVBoxLayout*> m_sections;
    bool m_willFollow = false;
};

/// What the window of settings knows of a pane before it is looked at.
struct SettingsPaneMaker {
    /// In the settings, where it was shown last.
    std::string name;
    QString title;
    /// Its name in the set.
    QString icon;
    std::function<SettingsPane*()> make;
};

} // namespace korvex::ui
