#pragma once

#include "storage/Work.h"
#include "ui/kit/theme/Theme.h"

#include <QPointer>
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
    /// Enables a control that what is under way needs to itself, or disables it. The keyboard goes
    /// from one that is disabled to Cancel, so this is to be shown before.
    void setFree(QWidget& control, bool isFree);
    /// Nothing is under way any more: the keyboard goes back to where it came from, now or as soon
    /// as that is free.
    void end();

Q_SIGNALS:
    void cancelled();

private:
    bool hasKeyboard() const;
    /// To what it came from, or near that while that cannot take it.
    void giveKeyboard();

    QProgressBar* m_bar;
    QPushButton* m_cancel;
    SettingsRow* m_row;
    /// What the keyboard was taken from, and what has it until that is free again.
    QPointer<QWidget> m_before;
    QPointer<QWidget> m_standIn;
};

} // namespace korvex::ui
