#pragma once

#include "app/AppPreferences.h"
#include "app/FileUserDefaults.h"
#include "model/SchemaVersions.h"
#include "services/EntryOrder.h"
#include "support/FakeClock.h"
#include "support/FakeReminderCenter.h"
#include "support/FakeRunLoop.h"
#include "support/RecordingLog.h"
#include "support/ScriptedHotkey.h"
#include "support/TemporaryFolder.h"
#include "support/UsedBefore.h"
#include "ui/kit/theme/Theme.h"
#include "ui/kit/words/Text.h"
#include "ui/workspace/WorkspaceOwner.h"

#include <QApplication>
#include <QTest>

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace korvex::tests {

/// One process's view of a store.
struct StoreClient {
    StoreClient(const std::filesystem::path& file, base::LogSink& log, bool allowsSave = true)
        : container(store::ModelContainer::open(model::currentSchema(),
                                                {.file = file, .allowsSave = allowsSave}, log)),
          context(*container),
          entries(context, reminders, widgets, log, &undo),
          boards(context, reminders, widgets, log) {}

    services::NoReminders reminders;
    services::NoWidgets widgets;
    std::unique_ptr<store::ModelContainer> container;
    store::ModelContext context;
    base::SystemClock clock;
    services::UndoManager undo{clock};
    services::EntryService entries;
    services::BoardService boards;
};

/// All that the windows work with, over a real store file, and a second client of the same store
/// that stands for another program.
class WindowFixture : public ::testing::Test {
protected:
    /// 2025-03-10 08:00 UTC, a Monday.
    static constexpr base::Instant kNow{763286400};
    /// Seconds for which a tick is seen before its row leaves.
    static constexpr double kTickShown = 0.5;

    WindowFixture() {
        own.boards.initializeDefaultBoards(kNow);
        inbox = own.boards.inboxBoard();
    }

    std::vector<model::Entry*> add(std::vector<std::string> contents) {
        return own.entries.createTodos(
            {.contents = std::move(contents), .board = *inbox, .now = clock.now()});
    }

    /// A todo with files of 1,536 bytes each.
    model::Entry& withFiles(const char* text, const std::vector<std::string>& names) {
        auto& entry = *add({text}).front();
        clock.advance(1);
        std::vector<model::EntryAttachment> files;
        for (const auto& name : names) {
            files.push_back(
                {.id = base::Uuid::random(), .filename = name, .data = base::Bytes(1536)});
        }
        own.entries.attach(std::move(files), entry, clock.now());
        return entry;
    }

    /// What another program does, with its own records; seen here after the refresh.
    template <typename Work>
    void elsewhere(Work&& work) {
        if (!other) {
            other = std::make_unique<StoreClient>(folder / "Primary.store", log);
        }
        other->context.refresh();
        work(*other);
        own.context.refresh();
    }
    static model::Entry& theirs(StoreClient& client, const model::Entry& entry) {
        return *client.context.find<model::Entry>(entry.id());
    }

    std::vector<std::string> storedTexts(const model::Board& board) const {
        store::ModelContext fresh(*own.container);
        std::vector<std::string> result;
        for (const auto* const entry :
             services::activeEntries(*fresh.find<model::Board>(board.id()))) {
            result.push_back(entry->content());
        }
        return result;
    }

    /// What windows over this store are made with.
    ui::WorkspaceOwner::Surroundings around(store::ModelContainer& store) {
        return around(store, preferences, defaults);
    }
    ui::WorkspaceOwner::Surroundings around(store::ModelContainer& store,
                                            app::AppPreferences& settings,
                                            app::UserDefaults& settingsFile) {
        return {.container = store,
                .preferences = settings,
                .defaults = settingsFile,
                .clock = clock,
                .runLoop = runLoop,
                .threads = threads,
                .log = log,
                .reminders = &reminders,
                .quickEntry = &quickEntry.setup,
                .timeZone = base::TimeZone::utc,
                .copies = folder / "copies",
                .patience = std::chrono::milliseconds(0)};
    }

    RecordingLog log;
    TemporaryFolder folder;
    FakeClock clock{kNow};
    FakeRunLoop runLoop;
    /// It has not said yet whether notifications can be shown.
    FakeReminderCenter reminders;
    storage::BackgroundThreads threads;
    app::FileUserDefaults defaults{folder / "settings.json"};
    UsedBefore usedBefore{defaults, kNow + -86'400.0};
    app::AppPreferences preferences{defaults, log};
    ui::Theme theme{preferences};
    /// Of which nothing is asked for yet.
    ScriptedQuickEntry quickEntry{folder.path()};
    std::unique_ptr<store::ModelContainer> container = store::ModelContainer::open(
        model::currentSchema(), {.file = folder / "Primary.store"}, log);
    /// Without an engine: code stays uncoloured.
    ui::WorkspaceOwner owner{around(*container)};
    const ui::Workspace& workspace = owner.workspace();
    /// What the windows work with, under the names of a client.
    struct {
        store::ModelContainer* container;
        store::ModelContext& context;
        services::UndoManager& undo;
        services::EntryService& entries;
        services::BoardService& boards;
    } own{container.get(), workspace.context, workspace.undo, workspace.entries, workspace.boards};
    std::unique_ptr<StoreClient> other;
    model::Board* inbox = nullptr;
};

} // namespace korvex::tests
