#pragma once

#include "ui/kit/lists/RowLayouts.h"
#include "ui/overview/TodoRowLayout.h"

#include <QStyledItemDelegate>

namespace korvex::ui {

/// Draws headings and todos of all boards.
class TodoItemDelegate final : public QStyledItemDelegate {
    Q_OBJECT

public:
    TodoItemDelegate(const TodoListModel& model, const Theme& theme, QObject* parent = nullptr);

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;

    int height(int row, int width) const;
    /// The layout of a row that is no heading. Valid until the next call of any function of this
    /// class.
    const TodoRowLayout& layout(int row, int width) const;
    void forget(int row) const { m_layouts.forget(m_model.entry(row)); }
    void forgetAll() const;

    /// The names of the boards that rows show. True when rows may look different now.
    bool setBoardNames(QStringList names);

private:
    void paintHeading(QPainter& painter, const QRect& rect, int row) const;
    void paintBoard(QPainter& painter, const TodoRowLayout& laidOut,
                    const model::Entry& entry) const;

    const TodoListModel& m_model;
    const Theme& m_theme;
    QStringList m_boardNames;
    /// The width for which the column of boards was reckoned last, and how wide it is.
    mutable int m_columnFor = -1;
    mutable int m_column = 0;
    mutable RowLayouts<TodoRowLayout> m_layouts;
};

} // namespace korvex::ui
