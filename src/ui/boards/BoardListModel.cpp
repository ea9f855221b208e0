#include "ui/boards/BoardListModel.h"

#include "model/Entry.h"
#include "services/OpenTodos.h"
#include "store/ModelContainer.h"
#include "ui/kit/lists/RowDiff.h"
#include "ui/kit/words/Text.h"

#include <algorithm>

namespace korvex::ui {

BoardListModel::BoardListModel(const services::BoardService& boards, store::ModelContext& context,
                               QObject* parent)
    : RowModel(parent), m_service(boards), m_context(context) {}

QVariant BoardListModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || index.row() >= rowCount()) {
        return {};
    }
    switch (role) {
    case Qt::DisplayRole:
    case Qt::EditRole:
    case Qt::AccessibleTextRole:
        return toQString(board(index.row())->name());
    case Qt::AccessibleDescriptionRole:
        return tr("%Ln open todo(s)", nullptr, openTodoCount(index.row()));
    default:
        return {};
    }
}

Qt::ItemFlags BoardListModel::flags(const QModelIndex& index) const {
    const auto flags = QAbstractListModel::flags(index);
    return m_context.container().allowsSave()
               ? flags | Qt::ItemIsEditable | Qt::ItemIsDragEnabled | Qt::ItemIsDropEnabled
               : flags;
}

void BoardListModel::refresh() {
    const auto visible = m_service.boards();
    m_archived.clear();
    std::copy_if(visible.begin(), visible.end(), std::back_inserter(m_archived),
                 [](const model::Board* board) { return board->isArchived(); });
    const auto wanted = services::BoardService::activeBoards(visible);
    applySteps(rowSteps(keysOf(rows()), keysOf(wanted)), wanted);
    // Few and cheap to draw: names, icons and colours need no comparison.
    Q_EMIT dataChanged(index(0, 0), index(rowCount() - 1, 0));
}

void BoardListModel::countTodos() {
    for (const auto* const each : rows()) {
        setOpenTodoCount(*each, static_cast<int>(services::openTodoCount(m_context, *each)));
    }
}

void BoardListModel::setOpenTodoCount(const model::Board& board, int count) {
    if (std::exchange(m_counts[&board], count) != count) {
        touch(rowOf(board));
    }
}

int BoardListModel::rowOf(const model::Board& board) const {
    return firstRow([&](const model::Board* shown) { return shown == &board; });
}

int BoardListModel::openTodoCount(int row) const {
    const auto known = m_counts.find(board(row));
    return known == m_counts.end() ? 0 : known->second;
}

bool BoardListModel::canTake(const base::Uuid& entry, int row) const {
    const auto* const found = m_context.find<model::Entry>(entry);
    return found && found->boardID() != board(row)->id();
}

} // namespace korvex::ui
