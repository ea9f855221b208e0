#pragma once

#include "ui/kit/theme/Theme.h"

#include <QAbstractButton>
#include <QColor>
#include <QPoint>
#include <QString>

class QToolButton;

namespace korvex::ui {

/// The board of a widget: pressed it opens the board in the app, dragged it moves the widget.
class WidgetBoardButton final : public QAbstractButton {
    Q_OBJECT

public:
    struct Shown {
        QString name;
        /// In the set of icons; empty for none.
        QString icon;
        QColor color;
        int openCount = 0;
    };

    explicit WidgetBoardButton(const Theme& theme, QWidget* parent = nullptr);

    void show(const Shown& shown);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

Q_SIGNALS:
    void dragged(const QPoint& globalPosition);

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void enterEvent(QEnterEvent* event) override;
    void leaveEvent(QEvent* event) override;

private:
    const Theme& m_theme;
    Shown m_shown;
    QPoint m_pressedAt;
    bool m_isDragged = false;
};

/// The top of a widget: its board, and the ways to choose another one and to the menu.
class WidgetHeader final : public QWidget {
    Q_OBJECT

public:
    explicit WidgetHeader(const Theme& theme, QWidget* parent = nullptr);

    WidgetBoardButton& board() { return *m_board; }
    /// Where the menu opens; in global coordinates.
    QRect menuAnchor() const;
    /// Whether there are boards to choose from.
    void setHasChoice(bool hasChoice);
    const QWidget& choiceButton() const;

Q_SIGNALS:
    void choiceRequested();
    void menuRequested();

private:
    void applyTheme();

    const Theme& m_theme;
    WidgetBoardButton* m_board;
    QToolButton* m_choice;
    QToolButton* m_menu;
};

} // namespace korvex::ui
