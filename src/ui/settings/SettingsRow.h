#pragma once

#include "ui/settings/SettingsLabel.h"

#include <QWidget>

class QVBoxLayout;

namespace korvex::ui {

class WordsAndButton;

/// A line of the settings: a name, behind it what sets or tells the value, and under both what is
/// to be known of it. Where there is no room beside the name, the control stands below. Main
/// thread.
class SettingsRow final : public QWidget {
    Q_OBJECT

public:
    /// Takes the control over, and names it to screen readers where it has no words of its own.
    /// Null where there are words only.
    SettingsRow(const QString& name, QWidget* control, const Theme& theme,
                QWidget* parent = nullptr);

    void setName(const QString& name);
    /// What came of it, in place of a name and read out as soon as it is said; empty for nothing.
    void setAnswer(const QString& answer);
    /// Said quietly; empty for nothing.
    void setNote(const QString& note);
    /// Why what was asked for here was not done; empty for nothing.
    void setRefusal(const QString& refusal);
    /// Takes the widget over, under the name and above the note.
    void addBelow(QWidget* widget);

private:
    void applyTheme();
    /// Tells screen readers of the control what stands under it.
    void describe();

    const Theme& m_theme;
    QWidget* m_control;
    SettingsLabel* m_name;
    SettingsLabel* m_note;
    SettingsLabel* m_refusal;
    QVBoxLayout* m_lines;
    /// Null without a control.
    WordsAndButton* m_words = nullptr;
};

/// What a row only tells.
SettingsLabel* settingsValue(const Theme& theme);
/// Buttons side by side, for the end of a row that is about `name`.
QWidget* settingsButtons(const QString& name, std::initializer_list<QWidget*> buttons,
                         const Theme& theme);

} // namespace korvex::ui
