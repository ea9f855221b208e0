#pragma once

#include "storage/Work.h"
#include "ui/kit/theme/Theme.h"

#include <QWidget>

class QProgressBar;
class QPushButton;

namespace korvex::ui {

class SettingsRow;

/// A row of the settings that says what is under way and how far it is, with a button that cancels
/// it. Hidden while nothing is. Main thread.
class WorkRow final : public QWidget {
    Q_OBJECT

public:
    WorkRow(const Theme& theme, QWidget* parent);

    /// What cannot be cancelled holds the windows up, so it is drawn at once.
    void show(const QString& doing, const storage::Progress& progress);

Q_SIGNALS:
    void cancelled();

private:
    QProgressBar* m_bar;
    QPushButton* m_cancel;
    SettingsRow* m_row;
};

} // namespace korvex::ui
