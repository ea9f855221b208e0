#pragma once

#include "ui/kit/theme/Theme.h"

#include <QLineEdit>

namespace korvex::ui {

/// A field for words to search for. The keys that mean nothing to a line of text walk through
/// what was found, open it, or give up.
class SearchField final : public QLineEdit {
    Q_OBJECT

public:
    explicit SearchField(const Theme& theme, QWidget* parent = nullptr);

    /// The most characters that can be typed; a search for more would find nothing.
    static constexpr int kMaximumLength = 500;

Q_SIGNALS:
    /// The field has the keyboard: soon there will be something to search for.
    void focused();
    /// An arrow or page key was pressed.
    void walked(int key);
    void openRequested();
    void escaped();

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    void applyTheme();

    const Theme& m_theme;
    QAction* m_icon;
};

} // namespace korvex::ui
