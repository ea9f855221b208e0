#pragma once

#include "model/SchemaVersions.h"
#include "services/BoardService.h"
#include "services/EntryOrder.h"
#include "services/EntryService.h"
#include "store/ModelContainer.h"
#include "support/RecordingLog.h"
#include "support/TemporaryFolder.h"

#include <SQLiteCpp/SQLiteCpp.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace korvex::tests {

/// Counts what the services ask for, and may act on it.
class RecordingReminders final : public services::ReminderReconciling {
public:
    void requestReconcile() override {
        ++reconciles;
        asked("reconcile");
    }
    void removePending(std::span<const base::Uuid> entryIDs) override {
        removed.insert(removed.end(), entryIDs.begin(), entryIDs.end());
        asked("remove");
    }
    std::function<void(std::string)> asked = [](const auto&) {};
    int reconciles = 0;
    std::vector<base::Uuid> removed;
};

class RecordingWidgets final : public services::WidgetReloading {
public:
    void reloadTodoWidgets() override { ++reloads; }
    int reloads = 0;
};

/// Services over a real store file, which can be made to fail, with one board.
class ServiceFixture : public ::testing::Test {
protected:
    static constexpr base::Instant kNow{1000};

    void SetUp() override {
        container = openContainer();
        context = std::make_unique<store::ModelContext>(*container);
        entries = std::make_unique<services::EntryService>(*context, reminders, widgets, log);
        boards = std::make_unique<services::BoardService>(*context, reminders, widgets, log);
        board = &boards->createBoard("Home", kNow);
    }

    std::unique_ptr<store::ModelContainer> openContainer(bool allowsSave = true) {
        return store::ModelContainer::open(model::currentSchema(),
                                           {.file = storeFile(), .allowsSave = allowsSave}, log);
    }

    /// Makes every save fail until `mendSaves`.
    void breakSaves() {
        SQLite::Database(storeFile(), SQLite::OPEN_READWRITE)
            .exec("CREATE TRIGGER fault BEFORE INSERT ON ChangeLog "
                  "BEGIN SELECT RAISE(ABORT, 'the disk'); END");
    }
    void mendSaves() {
        SQLite::Database(storeFile(), SQLite::OPEN_READWRITE).exec("DROP TRIGGER fault");
    }

    std::vector<model::Entry*> add(std::vector<std::string> contents) {
        return entries->createTodos(
            {.contents = std::move(contents), .board = *board, .now = kNow});
    }

    static std::vector<std::string> texts(const std::vector<model::Entry*>& list) {
        std::vector<std::string> result;
        for (const model::Entry* entry : list) {
            result.push_back(entry->content());
        }
        return result;
    }

    /// Active entries then completed ones by their stored order, which must be 0, 1, 2, …
    std::vector<std::string> storedOrder(const model::Board& of) {
        store::ModelContext fresh(*container);
        auto all = fresh.find<model::Board>(of.id())->entries();
        std::sort(all.begin(), all.end(), [](const model::Entry* left, const model::Entry* right) {
            return services::ordered(*left, *right);
        });
        for (std::size_t i = 0; i < all.size(); ++i) {
            EXPECT_EQ(all[i]->sortOrder(), static_cast<std::int64_t>(i)) << "order is not dense";
        }
        return texts(all);
    }

    template <typename Work>
    std::optional<model::EntryServiceErrorCase> entryRefusal(Work&& work) {
        try {
            work();
        } catch (const model::EntryServiceError& error) {
            EXPECT_FALSE(context->hasChanges());
            return error.which();
        }
        return std::nullopt;
    }

    template <typename Work>
    std::optional<model::BoardServiceErrorCase> boardRefusal(Work&& work) {
        try {
            work();
        } catch (const model::BoardServiceError& error) {
            EXPECT_FALSE(context->hasChanges());
            return error.which();
        }
        return std::nullopt;
    }

    std::string storeFile() const { return (folder.path() / "Primary.store").string(); }

    RecordingLog log;
    TemporaryFolder folder;
    RecordingReminders reminders;
    RecordingWidgets widgets;
    std::unique_ptr<store::ModelContainer> container;
    std::unique_ptr<store::ModelContext> context;
    std::unique_ptr<services::EntryService> entries;
    std::unique_ptr<services::BoardService> boards;
    model::Board* board = nullptr;
};

} // namespace korvex::tests
