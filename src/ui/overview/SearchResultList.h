#pragma once

#include "ui/kit/LazyListView.h"
#include "ui/kit/Theme.h"
#include "ui/overview/SearchListModel.h"

#include <QPersistentModelIndex>

namespace korvex::ui {

class SearchResultDelegate;

/// The list of what was found: an icon, the line with what was searched marked in it, and under it
/// where it stands and when it is due. Boards are set apart. Changes nothing itself.
class SearchResultList final : public LazyListView {
    Q_OBJECT

public:
    SearchResultList(SearchListModel& model, const Theme& theme, QWidget* parent = nullptr);

    void setCurrentRow(int row);
    int currentRow() const { return currentIndex().row(); }
    /// As the arrow and page keys in the list itself.
    void walk(int key);

Q_SIGNALS:
    void openRequested(int row);
    /// The circle of a todo was pressed.
    void toggleRequested(int row);

protected:
    int measuredHeight(int row) override { return heightOf(row); }
    int estimatedHeight(int row) const override { return heightOf(row); }
    void currentChanged(const QModelIndex& current, const QModelIndex& previous) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void leaveEvent(QEvent* event) override;

private:
    int heightOf(int row) const;
    bool isOnCircle(const QModelIndex& index, const QPoint& position) const;
    void setHoveredRow(int row);
    void applyTheme();

    SearchListModel& m_model;
    const Theme& m_theme;
    SearchResultDelegate* m_delegate;
    int m_rowHeight = 0;
    QPersistentModelIndex m_pressed;
};

} // namespace korvex::ui
