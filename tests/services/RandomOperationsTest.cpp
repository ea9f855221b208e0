#include "services/RandomLife.h"
#include "services/ServiceFixture.h"
#include "services/StoreRules.h"

#include "backup/BackupFileIO.h"
#include "store/StoreError.h"
#include "support/FakeClock.h"
#include "support/RestoredStore.h"

#include <gmock/gmock.h>

namespace korvex::tests {

namespace {

/// One program with an undo manager, and a second one on the same store.
class RandomOperations : public ServiceFixture, public testing::WithParamInterface<unsigned> {
protected:
    void SetUp() override {
        ServiceFixture::SetUp();
        entries =
            std::make_unique<services::EntryService>(*context, reminders, widgets, log, &undo);
        office = &boards->createBoard("Office", kNow);
        // Another device has made an Inbox too.
        for (const double createdAt : {1, 2}) {
            auto& made = context->insert(
                std::make_unique<model::Board>(model::BoardFields{.id = base::Uuid::random(),
                                                                  .name = "Inbox",
                                                                  .createdAt = {createdAt},
                                                                  .isSystem = true,
                                                                  .systemIdentifier = "inbox"}));
            inbox = inbox ? inbox : &made;
        }
        context->save();
    }

    RandomLife life() {
        return {GetParam(),
                {*context, *entries, *boards, &undo},
                {board->id(), office->id()},
                folder.path()};
    }

    /// Without the moments of the last change: an undo is one too.
    std::string exportedBytes() {
        auto document = exported(*container);
        for (auto& entry : document.entries) {
            entry.updatedAt = {};
        }
        const auto bytes = backup::BackupFileIO::encode(document);
        return {bytes.begin(), bytes.end()};
    }

    void expectSound() { ASSERT_THAT(brokenRules(*container, inbox->id()), testing::IsEmpty()); }

    FakeClock clock{{9000}};
    services::UndoManager undo{clock};
    model::Board* office = nullptr;
    model::Board* inbox = nullptr;
};

} // namespace

TEST_P(RandomOperations, UndoneEverythingIsAsItWasAndRedoneAsItBecame) {
    auto own = life();
    for (int i = 0; i < 8; ++i) {
        own.create();
    }
    // These have no name and are not undone: this is what all undoing leads back to.
    const auto first = exportedBytes();
    for (int round = 0; round < 3; ++round) {
        for (int i = 0; i < 40; ++i) {
            own.step();
            expectSound();
        }
        const auto last = exportedBytes();
        while (undo.canUndo()) {
            undo.undo();
            expectSound();
        }
        EXPECT_EQ(exportedBytes(), first);
        while (undo.canRedo()) {
            undo.redo();
            expectSound();
        }
        EXPECT_EQ(exportedBytes(), last);
        // Not all the way: what follows builds on a state in the middle.
        for (int i = 0; i < 10 && undo.canUndo(); ++i) {
            undo.undo();
        }
    }
}

TEST_P(RandomOperations, AmongThoseOfAnotherProgramKeepTheStoreSound) {
    const auto otherContainer = openContainer();
    store::ModelContext theirs(*otherContainer);
    services::EntryService theirEntries(theirs, reminders, widgets, log);
    services::BoardService theirBoards(theirs, reminders, widgets, log);
    RandomLife other(GetParam() + 1000, {theirs, theirEntries, theirBoards},
                     {board->id(), office->id()}, folder.path());
    // The other program is as far behind as this one: each finds out in its own step.
    const auto interfere = [&] {
        switch (other.roll(6)) {
        case 0:
            other.create();
            break;
        case 1:
            other.changeBoards();
            break;
        case 2:
        case 3:
            other.step();
            break;
        case 4:
            if (other.roll(4) == 0) {
                restoreEverything(theirs);
            }
            break;
        default:
            break;
        }
    };
    // When reminders are to be planned anew, no program may hold the store's lock.
    RecordingReminders interfering;
    services::EntryService entriesHere(*context, interfering, widgets, log, &undo);
    services::BoardService boardsHere(*context, interfering, widgets, log);
    RandomLife own(GetParam(), {*context, entriesHere, boardsHere, &undo},
                   {board->id(), office->id()}, folder.path());
    interfering.asked = [&](const auto&) { interfere(); };
    own.whileReading = interfere;
    const auto takeBack = [&](auto&& work) {
        try {
            work();
        } catch (const store::StoreError&) {
            throw;
        } catch (const base::Error& error) {
            // Someone was faster: refused, and logged.
            log.expectError(error.errorDescription());
        }
    };
    own.create();
    for (int i = 0; i < 200; ++i) {
        interfere();
        switch (own.roll(9)) {
        case 0:
            own.create();
            break;
        case 1:
        case 2:
            takeBack([&] { undo.undo(); });
            break;
        case 3:
            takeBack([&] { undo.redo(); });
            break;
        case 4:
            own.changeBoards();
            break;
        case 5:
            own.roll(2) == 0 ? context->refresh() : own.look();
            break;
        default:
            own.step();
        }
        ASSERT_FALSE(context->hasChanges());
        expectSound();
    }
    EXPECT_THAT(container->check().problems, testing::IsEmpty());
    context->refresh();
    theirs.refresh();
    EXPECT_EQ(texts(context->fetch<model::Entry>({.order = {{model::Entry::idField}}})),
              texts(theirs.fetch<model::Entry>({.order = {{model::Entry::idField}}})));
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomOperations, testing::Range(1U, 13U));

} // namespace korvex::tests
