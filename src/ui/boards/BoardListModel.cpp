#include "ui/boards/BoardListModel.h"

#include "model/Entry.h"
#include "ui/kit/RowDiff.h"
#include "ui/kit/Text.h"

#include <algorithm>

namespace korvex::ui {

namespace {

std::vector<RowKey> keys(const std::vector<model::Board*>& boards) {
    std::vector<RowKey> result;
    result.reserve(boards.size());
    for (const auto* const board : boards) {
        result.push_back({0, board});
    }
    return result;
}

std::size_t countOpenTodos(store::ModelContext& context, const model::Board& board) {
    using store::Condition;
    using Comparison = Condition::Comparison;
    return context.count<model::Entry>(
        Condition::compare(model::Entry::boardField, Comparison::equal, board.id()) &&
        Condition::compare(model::Entry::isCompletedField, Comparison::equal, false) &&
        Condition::compare(model::Entry::typeRawValueField, Comparison::equal,
                           std::string(model::rawValue(model::EntryType::todo))));
}

} // namespace

BoardListModel::BoardListModel(const services::BoardService& boards, store::ModelContext& context,
                               QObject* parent)
    : QAbstractListModel(parent), m_service(boards), m_context(context) {}

int BoardListModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(m_boards.size());
}

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
        return tr("%n open todo(s)", nullptr, openTodoCount(index.row()));
    default:
        return {};
    }
}

Qt::ItemFlags BoardListModel::flags(const QModelIndex& index) const {
    return QAbstractListModel::flags(index) | Qt::ItemIsEditable | Qt::ItemIsDragEnabled |
           Qt::ItemIsDropEnabled;
}

void BoardListModel::refresh() {
    const auto visible = m_service.boards();
    m_archived.clear();
    std::copy_if(visible.begin(), visible.end(), std::back_inserter(m_archived),
                 [](const model::Board* board) { return board->isArchived(); });
    const auto wanted = services::BoardService::activeBoards(visible);
    for (const auto& step : rowSteps(keys(m_boards), keys(wanted))) {
        switch (step.kind) {
        case RowStep::Kind::remove:
            beginRemoveRows({}, step.first, step.first + step.count - 1);
            applyStep(step, m_boards, wanted);
            endRemoveRows();
            break;
        case RowStep::Kind::insert:
            beginInsertRows({}, step.first, step.first + step.count - 1);
            applyStep(step, m_boards, wanted);
            endInsertRows();
            break;
        case RowStep::Kind::move:
            beginMoveRows({}, step.first, step.first + step.count - 1, {}, step.destination);
            applyStep(step, m_boards, wanted);
            endMoveRows();
            break;
        }
    }
    // Few and cheap to draw: names, icons and colours need no comparison.
    Q_EMIT dataChanged(index(0, 0), index(rowCount() - 1, 0));
}

void BoardListModel::countTodos() {
    for (const auto* const each : m_boards) {
        setOpenTodoCount(*each, static_cast<int>(countOpenTodos(m_context, *each)));
    }
}

void BoardListModel::setOpenTodoCount(const model::Board& board, int count) {
    if (std::exchange(m_counts[&board], count) != count) {
        const auto row = rowOf(board);
        Q_EMIT dataChanged(index(row, 0), index(row, 0));
    }
}

model::Board* BoardListModel::board(int row) const {
    return m_boards[static_cast<std::size_t>(row)];
}

int BoardListModel::rowOf(const model::Board& board) const {
    const auto found = std::find(m_boards.begin(), m_boards.end(), &board);
    return found == m_boards.end() ? -1 : static_cast<int>(found - m_boards.begin());
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
