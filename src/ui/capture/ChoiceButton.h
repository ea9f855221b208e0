#pragma once

#include "ui/kit/theme/Theme.h"

#include <QColor>
#include <QPushButton>

namespace korvex::ui {

/// A button that says what is chosen, with an icon before its words. They are shortened where they
/// are long or room is short; its name is for whoever needs all of them. Main thread.
class ChoiceButton final : public QPushButton {
    Q_OBJECT

public:
    ChoiceButton(const Theme& theme, QWidget* parent);

    /// Without an icon where that has no name.
    void show(const QString& icon, const QColor& color, const QString& words);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    /// Of the icon and what keeps it from the words.
    int iconRoom() const;
    int widthFor(int words) const;

    const Theme& m_theme;
    QString m_icon;
    QColor m_color;
    QString m_words;
};

} // namespace korvex::ui
