#pragma once

#include "base/TextFolding.h"
#include "model/Board.h"
#include "model/Entry.h"
#include "model/SchemaVersions.h"
#include "services/FoldedTexts.h"
#include "store/ModelContainer.h"
#include "store/ModelContext.h"
#include "support/Moments.h"
#include "support/RecordingLog.h"

#include <filesystem>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace korvex::tests {

/// A store in memory, or in a file, whose records a test makes as it likes.
class TodoStore {
public:
    explicit TodoStore(const std::filesystem::path& file = {})
        : container(store::ModelContainer::open(model::currentSchema(), {.file = file}, log)),
          context(*container) {}

    model::Board& addBoard(std::int64_t sortOrder = 0, bool isArchived = false) {
        return context.insert(
            std::make_unique<model::Board>(model::BoardFields{.id = base::Uuid::random(),
                                                              .name = "Home",
                                                              .sortOrder = sortOrder,
                                                              .isArchived = isArchived}));
    }

    /// A todo, unless `fields` say otherwise by an empty type.
    model::Entry& add(model::EntryFields fields, model::Board* board) {
        if (fields.id == base::Uuid{}) {
            fields.id = base::Uuid::random();
        }
        fields.typeRawValue = fields.typeRawValue.empty() ? "text" : "todo";
        auto& entry = context.insert(std::make_unique<model::Entry>(std::move(fields)));
        entry.setBoard(board);
        return entry;
    }

    static model::EntryFields fields(const model::TodoSchedule& schedule) {
        return {.dueDay = schedule.dueDay,
                .dueDate = schedule.dueDate,
                .dueStartDate = schedule.dueStartDate,
                .reminderDate = schedule.reminderDate};
    }

    tests::RecordingLog log;
    std::unique_ptr<store::ModelContainer> container;
    store::ModelContext context;
    base::TextFolding folding{"en_US"};
    services::FoldedTexts texts{context, folding};
};

} // namespace korvex::tests
