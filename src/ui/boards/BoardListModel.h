#pragma once

#include "model/Board.h"
#include "services/BoardService.h"
#include "ui/kit/lists/RowModel.h"

#include <unordered_map>
#include <vector>

namespace korvex::ui {

/// The sidebar's boards, in their order, with the number of their open todos.
class BoardListModel final : public RowModel<model::Board*> {
    Q_OBJECT

public:
    BoardListModel(const services::BoardService& boards, store::ModelContext& context,
                   QObject* parent = nullptr);

    QVariant data(const QModelIndex& index, int role) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;

    /// Takes in what the store's records say now; throws what the store throws. Counts follow with
    /// `countTodos`.
    void refresh();
    /// Asks the store for the number of open todos of every board.
    void countTodos();
    void setOpenTodoCount(const model::Board& board, int count);

    model::Board* board(int row) const { return at(row); }
    /// -1 when it is not in the sidebar.
    int rowOf(const model::Board& board) const;
    /// 0 while it is not known.
    int openTodoCount(int row) const;
    /// Whether an entry can be dropped on the board of a row: not on its own.
    bool canTake(const base::Uuid& entry, int row) const;
    const std::vector<model::Board*>& activeBoards() const { return rows(); }
    const std::vector<model::Board*>& archivedBoards() const { return m_archived; }

private:
    const services::BoardService& m_service;
    store::ModelContext& m_context;
    std::vector<model::Board*> m_archived;
    std::unordered_map<const model::Board*, int> m_counts;
};

} // namespace korvex::ui
