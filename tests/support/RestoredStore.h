#pragma once

#include "model/Board.h"
#include "model/Entry.h"
#include "store/ModelContext.h"

#include <algorithm>
#include <memory>
#include <utility>
#include <vector>

namespace korvex::tests {

/// A new record with the fields of another, on no board.
template <typename Record>
std::unique_ptr<Record> copyOf(const Record& record) {
    auto copy = std::make_unique<Record>();
    const auto& type = Record::recordType();
    for (std::size_t field = 0; field < type.fields.size(); ++field) {
        if (field != type.ownerField) {
            copy->setValue(field, record.value(field));
        }
    }
    return copy;
}

/// What restoring a backup does to a store: in one save everything goes and comes back as it was,
/// in other rows.
inline void restoreEverything(store::ModelContext& context) {
    const store::LockedStep step(context);
    std::vector<std::unique_ptr<model::Board>> boards;
    std::vector<std::pair<std::unique_ptr<model::Entry>, base::Uuid>> entries;
    for (const auto* const entry : context.fetch<model::Entry>()) {
        entries.emplace_back(copyOf(*entry), entry->boardID().value());
    }
    for (auto* const board : context.fetch<model::Board>()) {
        boards.push_back(copyOf(*board));
        context.remove(*board);
    }
    std::reverse(boards.begin(), boards.end());
    for (auto& board : boards) {
        context.insert(std::move(board));
    }
    std::reverse(entries.begin(), entries.end());
    for (auto& [entry, board] : entries) {
        entry->setBoard(context.find<model::Board>(board));
        context.insert(std::move(entry));
    }
    context.save();
}

} // namespace korvex::tests
