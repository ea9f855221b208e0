#include "services/EntryConditions.h"

#include "model/Entry.h"

namespace korvex::services {

using model::Entry;
using store::Condition;
using store::FieldReference;

namespace {

Condition isTodo() {
    return FieldReference{Entry::typeRawValueField} ==
           store::Value(std::string(rawValue(model::EntryType::todo)));
}

} // namespace

Condition EntryConditions::onBoard(const base::Uuid& boardID) {
    return FieldReference{Entry::boardField} == store::Value(boardID);
}

Condition EntryConditions::openTodo() {
    return FieldReference{Entry::isCompletedField} == store::Value(std::int64_t{0}) && isTodo();
}

Condition EntryConditions::completedTodo() {
    return FieldReference{Entry::isCompletedField} == store::Value(std::int64_t{1}) && isTodo();
}

Condition EntryConditions::active() {
    return !completedTodo();
}

std::size_t openTodoCount(store::ModelContext& context, const model::Board& board) {
    return context.count<Entry>(EntryConditions::onBoard(board.id()) &&
                                EntryConditions::openTodo());
}

} // namespace korvex::services
