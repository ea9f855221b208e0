#pragma once

#include "ui/kit/theme/Theme.h"

#include <QWidget>

class QLabel;

namespace korvex::ui {

class WordsAndButton;

/// The top of a page: its title, and beside it something short that is said quietly; below it where
/// the title would not be whole.
class PageHeader final : public QWidget {
    Q_OBJECT

public:
    PageHeader(const QString& title, const Theme& theme, QWidget* parent = nullptr);

    QString title() const;
    /// May be empty.
    void setNote(const QString& note);

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    void applyTheme();

    const Theme& m_theme;
    QLabel* m_title;
    QLabel* m_note;
    WordsAndButton* m_words;
};

} // namespace korvex::ui
