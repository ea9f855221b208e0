#pragma once

#include "ui/kit/theme/Theme.h"

#include <QWidget>

class QHBoxLayout;
class QLabel;
class QPushButton;

namespace korvex::ui {

class WordsAndButton;

/// A quiet line over a page that says something lasting about it, with a button that does something
/// about it where there is something to do. Hidden until that holds.
class NoticeLine : public QWidget {
    Q_OBJECT

public:
    struct Words {
        /// Its name in the set.
        QString icon;
        QString text;
        /// Empty for no button.
        QString action;
    };
    /// Whether there is anything above it that keeps it from the edge of the window.
    enum class Place { underHeader, atTop };
    NoticeLine(const Words& words, const Theme& theme, Place place = Place::underHeader);

    /// Whether what it says is so: it is shown, and read out once, as soon as its user is in this
    /// window and it is in sight.
    void setHolds(bool holds);
    /// Another text that is shown already is read out too.
    void setText(const QString& text);
    void setActionEnabled(bool enabled);

Q_SIGNALS:
    void pressed();

protected:
    void showEvent(QShowEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void applyTheme();
    void sayInSight();

    const Theme& m_theme;
    Place m_place;
    QString m_iconName;
    QHBoxLayout* m_row;
    QLabel* m_icon;
    QLabel* m_text;
    /// Null where there is nothing to do.
    QPushButton* m_button = nullptr;
    WordsAndButton* m_words = nullptr;
    bool m_isUnsaid = false;
};

} // namespace korvex::ui
