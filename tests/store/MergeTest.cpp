#include "StoreFixture.h"

#include <map>
#include <random>

namespace korvex::tests {

using model::Board;
using model::Entry;
using store::ModelContext;

namespace {

/// What the store should hold: for each field of each entry the last saved change of it.
struct ModelEntry {
    std::string content;
    std::int64_t sortOrder = 0;
    bool isCompleted = false;
    std::optional<double> dueDate;

    bool operator==(const ModelEntry&) const = default;
};

ModelEntry read(const Entry& entry) {
    return {.content = entry.content(),
            .sortOrder = entry.sortOrder(),
            .isCompleted = entry.isCompleted(),
            .dueDate = entry.dueDate() ? std::optional(entry.dueDate()->seconds) : std::nullopt};
}

/// One program's side of the game.
struct Player {
    std::unique_ptr<store::ModelContainer> container;
    std::unique_ptr<ModelContext> context;
};

} // namespace

class RandomInterleavings : public StoreFixture, public testing::WithParamInterface<unsigned> {};

TEST_P(RandomInterleavings, EveryFieldEndsAsItsLastSaverLeftIt) {
    std::mt19937 random(GetParam());
    const auto pick = [&](int below) {
        return std::uniform_int_distribution<int>(0, below - 1)(random);
    };
    std::vector<Player> players(2);
    for (Player& player : players) {
        player.container = open();
        player.context = std::make_unique<ModelContext>(*player.container);
    }
    std::map<base::Uuid, ModelEntry> stored;
    std::vector<base::Uuid> ids;
    {
        Board& board = addBoard(*players[0].context, "Home");
        for (int i = 0; i < 4; ++i) {
            Entry& entry = addTodo(*players[0].context, board, "start", i);
            ids.push_back(entry.id());
            stored[entry.id()] = read(entry);
        }
        players[0].context->save();
        players[1].context->refresh();
    }
    for (int step = 0; step < 400; ++step) {
        Player& player = players[static_cast<std::size_t>(pick(2))];
        const auto action = pick(10);
        if (action < 7) {
            const base::Uuid id = ids[static_cast<std::size_t>(pick(4))];
            Entry& entry = *player.context->find<Entry>(id);
            const int field = pick(4);
            switch (field) {
            case 0:
                entry.setContent(std::to_string(step));
                break;
            case 1:
                entry.setSortOrder(step);
                break;
            case 2:
                entry.setIsCompleted(!entry.isCompleted());
                break;
            default:
                entry.setSchedule(model::TodoSchedule::dueAt({double(step)}));
                break;
            }
            continue;
        }
        if (action == 7) {
            player.context->refresh();
        } else if (action == 8) {
            player.context->rollback();
        } else {
            // What differs from the stored value in a changed field is what this save must store.
            for (const store::Record* record : player.context->changedRecords()) {
                const auto& entry = static_cast<const Entry&>(*record);
                ModelEntry& expected = stored[entry.id()];
                const ModelEntry mine = read(entry);
                if (entry.isChanged(Entry::contentField)) {
                    expected.content = mine.content;
                }
                if (entry.isChanged(Entry::sortOrderField)) {
                    expected.sortOrder = mine.sortOrder;
                }
                if (entry.isChanged(Entry::isCompletedField)) {
                    expected.isCompleted = mine.isCompleted;
                }
                if (entry.isChanged(Entry::dueDateField)) {
                    expected.dueDate = mine.dueDate;
                }
            }
            player.context->save();
            ASSERT_FALSE(player.context->hasChanges());
        }
        if (action >= 8) {
            ModelContext fresh(*player.container);
            for (const base::Uuid& id : ids) {
                ASSERT_EQ(read(*fresh.find<Entry>(id)), stored[id]) << "step " << step;
            }
        }
        if (!player.context->hasChanges()) {
            player.context->refresh();
            for (const base::Uuid& id : ids) {
                ASSERT_EQ(read(*player.context->find<Entry>(id)), stored[id]) << "step " << step;
            }
        }
    }
    EXPECT_TRUE(players[0].container->check().problems.empty());
    for (Player& player : players) {
        player.context.reset();
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomInterleavings, testing::Range(1U, 21U));

} // namespace korvex::tests
