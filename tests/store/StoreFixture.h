#pragma once

#include "model/Board.h"
#include "model/Entry.h"
#include "model/SchemaVersions.h"
#include "store/ModelContainer.h"
#include "store/ModelContext.h"
#include "store/StoreError.h"
#include "support/RecordingLog.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <optional>
#include <string>

namespace korvex::tests {

/// A real store file in a folder of its own, and records to put in it.
class StoreFixture : public ::testing::Test {
protected:
    std::filesystem::path storeFile() const { return m_folder.path() / "Primary.store"; }
    std::filesystem::path journalFile() const { return m_folder.path() / "Primary.store-wal"; }
    const std::filesystem::path& folder() const { return m_folder.path(); }

    static std::string bytesOf(const std::filesystem::path& file) {
        std::ifstream stream(file, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }

    std::unique_ptr<store::ModelContainer> open(store::ModelConfiguration configuration = {}) {
        if (configuration.file.empty()) {
            configuration.file = storeFile();
        }
        return store::ModelContainer::open(model::currentSchema(), configuration, log);
    }

    std::optional<store::StoreErrorCase> refusal(store::ModelConfiguration configuration = {}) {
        try {
            open(std::move(configuration));
        } catch (const store::StoreError& error) {
            return error.which();
        }
        return std::nullopt;
    }

    static model::Board& addBoard(store::ModelContext& context, const std::string& name) {
        return context.insert(std::make_unique<model::Board>(
            model::BoardFields{.id = base::Uuid::random(), .name = name}));
    }

    static model::Entry& addTodo(store::ModelContext& context, model::Board& board,
                                 const std::string& content, std::int64_t sortOrder = 0) {
        auto entry = std::make_unique<model::Entry>(model::EntryFields{.id = base::Uuid::random(),
                                                                       .typeRawValue = "todo",
                                                                       .content = content,
                                                                       .sortOrder = sortOrder});
        entry->setBoard(&board);
        return context.insert(std::move(entry));
    }

    RecordingLog log;

private:
    TemporaryFolder m_folder;
};

} // namespace korvex::tests
