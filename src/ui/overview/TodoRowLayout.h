#pragma once

#include "ui/kit/theme/Theme.h"
#include "ui/overview/TodoListModel.h"
#include "ui/todos/DueLabel.h"

#include <QRect>
#include <QTextLayout>

#include <memory>

namespace korvex::ui {

/// What one row of a page with todos of all boards shows, laid out for one width: as a todo's row
/// on its board, with the board's name at the side. Rectangles count from the row's top left
/// corner.
class TodoRowLayout {
public:
    /// `boardColumn` is the width for the names of boards, where they stand beside the text.
    TodoRowLayout(const TodoListModel& model, int row, int width, int boardColumn,
                  const Theme& theme);

    int width() const { return m_width; }
    int height() const { return m_height; }
    /// All of them take about the same memory.
    static int cost() { return 1; }
    /// The ground of the row, which shows hover and selection.
    QRect box() const { return m_box; }
    QRect circle() const { return m_circle; }
    QRect text() const { return m_textRect; }
    const QTextLayout& textLayout() const { return *m_text; }
    /// The place of due label and bell, or of the time of completion.
    QRect detail() const { return m_detail; }
    const DueLabel& detailLabel() const { return m_detailLabel; }
    /// The places of the board's icon and name; empty without a board.
    QRect boardIcon() const { return m_boardIcon; }
    QRect boardName() const { return m_boardNameRect; }
    const QString& boardText() const { return m_boardText; }

    /// The height of a row whose text needs one line.
    static int lowestHeight(const Theme& theme);
    static int headingHeight(const Theme& theme);
    /// The width that the widest of these names takes, but no more than a part of the row.
    static int boardColumn(const QStringList& names, int width, const Theme& theme);

private:
    void placeBeside(int top, const Theme& theme);
    /// Puts label and board under the text and returns where they end.
    int placeBelow(int top, int room, const Theme& theme);
    void setBoard(const QPoint& topLeft, int nameWidth, const Theme& theme);

    int m_width;
    int m_boardColumn;
    int m_height = 0;
    QRect m_box;
    QRect m_circle;
    QRect m_textRect;
    QRect m_detail;
    QRect m_boardIcon;
    QRect m_boardNameRect;
    QString m_boardText;
    /// The text begins at the other side than the row does.
    bool m_isTurned = false;
    std::unique_ptr<QTextLayout> m_text;
    DueLabel m_detailLabel;
};

} // namespace korvex::ui
