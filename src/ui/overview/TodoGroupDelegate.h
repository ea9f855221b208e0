#pragma once

#include "ui/overview/TodoGroupRow.h"

#include <QCache>
#include <QStyledItemDelegate>

namespace korvex::ui {

/// Draws headings and todos of all boards. Keeps the layouts of the rows that were drawn last and
/// no others.
class TodoGroupDelegate final : public QStyledItemDelegate {
    Q_OBJECT

public:
    TodoGroupDelegate(const TodoGroupModel& model, const Workspace& workspace, const Theme& theme,
                      QObject* parent = nullptr);

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;

    int height(int row, int width) const;
    /// Of a row that is no heading; valid until the next call of any function of this class.
    const TodoGroupRow& layout(int row, int width) const;
    void forget(int row) const { m_layouts.remove(m_model.entry(row)); }
    void forgetAll() const;
    int layoutCount() const { return static_cast<int>(m_layouts.count()); }

    /// The names of boards that rows may show. True when rows may look different now.
    bool setBoardNames(QStringList names);
    /// The row under the pointer, -1 for none.
    void setHoveredRow(int row) { m_hoveredRow = row; }
    int hoveredRow() const { return m_hoveredRow; }

private:
    void paintHeading(QPainter& painter, const QRect& rect, int row) const;
    void paintBoard(QPainter& painter, const TodoGroupRow& laidOut,
                    const model::Entry& entry) const;

    const TodoGroupModel& m_model;
    const Workspace& m_workspace;
    const Theme& m_theme;
    QStringList m_boardNames;
    /// For which width the column of boards was reckoned last, and how wide it is.
    mutable int m_columnFor = -1;
    mutable int m_column = 0;
    int m_hoveredRow = -1;
    mutable QCache<const model::Entry*, TodoGroupRow> m_layouts;
};

} // namespace korvex::ui
