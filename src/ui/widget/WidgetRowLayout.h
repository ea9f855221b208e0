#pragma once

#include "ui/kit/theme/Theme.h"
#include "ui/todos/DueLabel.h"

#include <QRect>
#include <QString>
#include <QTextLayout>

#include <memory>

namespace korvex::ui {

/// What one row of a widget shows, laid out for one width: as a todo's row on its board, but with
/// no more than a few lines of its text. Rectangles count from the row's top left corner.
class WidgetRowLayout {
public:
    static constexpr int kMostLines = 3;

    WidgetRowLayout(const QString& text, const DueLabel& due, int width, const Theme& theme);

    int width() const { return m_width; }
    int height() const { return m_height; }
    /// All of them take about the same memory.
    static int cost() { return 1; }
    /// The ground of the row, which shows hover and selection.
    QRect box() const { return m_box; }
    QRect circle() const { return m_circle; }
    QRect text() const { return m_textRect; }
    const QTextLayout& textLayout() const { return *m_text; }
    /// The place of due label and bell; empty without them.
    QRect due() const { return m_due; }
    const DueLabel& dueLabel() const { return m_dueLabel; }

    /// The height of a row whose text needs one line.
    static int lowestHeight(const Theme& theme);

private:
    int m_width;
    int m_height = 0;
    QRect m_box;
    QRect m_circle;
    QRect m_textRect;
    QRect m_due;
    std::unique_ptr<QTextLayout> m_text;
    DueLabel m_dueLabel;
};

} // namespace korvex::ui
