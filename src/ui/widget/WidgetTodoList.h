#pragma once

#include "base/Uuid.h"
#include "ui/kit/lists/RowLayouts.h"
#include "ui/kit/lists/RowListView.h"
#include "ui/todos/LeavingRows.h"
#include "ui/widget/WidgetRowLayout.h"
#include "ui/widget/WidgetTodoModel.h"

#include <QStyledItemDelegate>

#include <unordered_set>

namespace korvex::ui {

/// Draws the todos of a widget.
class WidgetTodoDelegate final : public QStyledItemDelegate {
    Q_OBJECT

public:
    WidgetTodoDelegate(const WidgetTodoModel& model, const Theme& theme, QObject* parent = nullptr);

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;

    /// Valid until the next call of any function of this class.
    const WidgetRowLayout& layout(int row, int width) const;
    void forget(int row) const { m_layouts.forget(&m_model.entry(row)); }
    void forgetAll() const { m_layouts.forgetAll(); }

private:
    const WidgetTodoModel& m_model;
    const Theme& m_theme;
    mutable RowLayouts<WidgetRowLayout> m_layouts;
};

/// The list of a widget: draws rows and turns pointer and keys into requests. It changes nothing
/// itself.
class WidgetTodoList final : public RowListView {
    Q_OBJECT

public:
    WidgetTodoList(WidgetTodoModel& model, const Theme& theme, QWidget* parent = nullptr);

    /// These records have changed: the rows of theirs that have been in sight are drawn anew.
    void entriesChanged(const std::unordered_set<base::Uuid>& ids);
    LeavingRows& leaving() { return m_leaving; }

Q_SIGNALS:
    void toggleRequested(int row);
    void openRequested(int row);

protected:
    int measuredHeight(int row) override;
    int estimatedHeight(int row) const override;
    double opacityOf(const QModelIndex& index) const override;
    RowPart partAt(int row, const QPoint& position) const override;
    Tip tipAt(int row, const QPoint& position) const override;
    void clicked(int row, RowPart part, const QMouseEvent& event) override;
    bool isPressable(const QPoint& position, Qt::KeyboardModifiers modifiers) const override;
    std::vector<Action> actionsOf(int row) override;
    void forgetLayout(int row) override { m_delegate->forget(row); }
    void forgetLayouts() override { m_delegate->forgetAll(); }
    void keyPressEvent(QKeyEvent* event) override;
    /// Nothing is dragged here, and a drag over the rows chooses none.
    bool isDragBegun(RowPart) const override { return false; }
    void focusInEvent(QFocusEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;

private:
    WidgetTodoModel& m_model;
    WidgetTodoDelegate* m_delegate;
    LeavingRows m_leaving;
};

} // namespace korvex::ui
