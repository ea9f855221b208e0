#pragma once

#include "model/Board.h"
#include "ui/kit/theme/Theme.h"

#include <QWidget>

class QLabel;
class QToolButton;

namespace korvex::ui {

/// The top of a board's page: icon, name, how many todos are open, and the menu.
class BoardHeader final : public QWidget {
    Q_OBJECT

public:
    explicit BoardHeader(const Theme& theme, QWidget* parent = nullptr);

    void show(const model::Board& board, int openTodoCount);
    /// Whether the icon can be chosen.
    void setChangeable(bool changeable);

Q_SIGNALS:
    void iconRequested(const QRect& globalAnchor);
    void menuRequested(const QPoint& globalPosition);

protected:
    void contextMenuEvent(QContextMenuEvent* event) override;

private:
    QPoint menuPlace() const;
    void applyTheme();

    const Theme& m_theme;
    QToolButton* m_icon;
    QLabel* m_name;
    QLabel* m_count;
    QToolButton* m_menu;
    QString m_iconName;
    QColor m_iconColor;
};

} // namespace korvex::ui
