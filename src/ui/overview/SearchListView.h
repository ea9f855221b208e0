#pragma once

#include "ui/kit/lists/RowListView.h"
#include "ui/overview/SearchListModel.h"

namespace korvex::ui {

class SearchResultDelegate;

/// The list of what was found: an icon, the line with what was searched marked in it, and under it
/// where it stands and when it is due. Boards are set apart. Changes nothing itself.
class SearchListView final : public RowListView {
    Q_OBJECT

public:
    SearchListView(SearchListModel& model, const Theme& theme, QWidget* parent = nullptr);

    /// Does what this arrow or page key does in the list itself.
    void walk(int key);

Q_SIGNALS:
    void openRequested(int row);
    /// The circle of a todo was pressed.
    void toggleRequested(int row);

protected:
    int measuredHeight(int row) override { return heightOf(row); }
    int estimatedHeight(int row) const override { return heightOf(row); }
    std::vector<Action> actionsOf(int row) override;
    RowPart partAt(int row, const QPoint& position) const override;
    Tip tipAt(int row, const QPoint& position) const override;
    void clicked(int row, RowPart part, const QMouseEvent& event) override;
    void forgetLayouts() override;
    void currentChanged(const QModelIndex& current, const QModelIndex& previous) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    int heightOf(int row) const;

    SearchListModel& m_model;
    SearchResultDelegate* m_delegate;
    /// The height of a row with nothing above it.
    int m_rowHeight = 0;
};

} // namespace korvex::ui
