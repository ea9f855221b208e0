#pragma once

#include "ui/kit/theme/Theme.h"

#include <QWidget>

class QHBoxLayout;
class QLabel;
class QPushButton;

namespace korvex::ui {

class WordsAndButton;

/// A quiet line over a page that says something lasting about it, with a button that does something
/// about it where there is something to do. Hidden until it is shown.
class NoticeLine final : public QWidget {
    Q_OBJECT

public:
    struct Words {
        /// Its name in the set.
        QString icon;
        QString text;
        /// Empty for no button.
        QString action;
    };
    NoticeLine(const Words& words, const Theme& theme, QWidget* parent = nullptr);

    void setActionEnabled(bool enabled);

Q_SIGNALS:
    void pressed();

private:
    void applyTheme();

    const Theme& m_theme;
    QString m_iconName;
    QHBoxLayout* m_row;
    QLabel* m_icon;
    QLabel* m_text;
    /// Null where there is nothing to do.
    QPushButton* m_button = nullptr;
    WordsAndButton* m_words = nullptr;
};

} // namespace korvex::ui
