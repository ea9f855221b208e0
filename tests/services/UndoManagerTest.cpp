#include "services/UndoManager.h"

#include "model/ServiceErrors.h"
#include "store/StoreError.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

namespace korvex::tests {

namespace {

const base::SystemClock kClock{};

/// A row of letters; every change of it registers its inverse.
struct Letters {
    services::UndoManager undo{kClock};
    std::string text;
    char refused = '-';
    /// What the store cannot take now, and what it cannot add.
    char kept = '-';
    char lost = '-';

    void add(char letter) {
        if (letter == lost) {
            throw store::StoreError(store::StoreErrorCase::full);
        }
        text += letter;
        undo.registerUndo(std::string(1, letter), 1, [this, letter](auto) { take(letter); });
    }
    void take(char letter) {
        if (letter == refused) {
            throw model::EntryServiceError(model::EntryServiceErrorCase::entryUnavailable);
        }
        if (letter == kept) {
            throw store::StoreError(store::StoreErrorCase::full);
        }
        text.pop_back();
        undo.registerUndo("again", 1, [this, letter](auto) { add(letter); });
    }
};

} // namespace

TEST(UndoManager, WhatAGroupHoldsIsOneStep) {
    using Group = services::UndoManager::Group;
    Letters letters;
    auto& undo = letters.undo;
    int changes = 0;
    const auto subscription = undo.didChange().connect([&] { ++changes; });
    letters.add('a');
    {
        const Group outer(undo, "outer");
        letters.add('b');
        const Group inner(undo, "inner");
        letters.add('c');
        undo.undo();
        EXPECT_EQ(letters.text, "abc") << "it is not finished yet";
    }
    { const Group empty(undo, "empty"); }
    EXPECT_EQ(changes, 2);
    undo.withdraw(undo.nextUndo()->id);
    EXPECT_EQ(undo.undoActionName(), "outer") << "it has more to take back";
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(undo.undoActionName(), "outer");
        undo.undo();
        EXPECT_EQ(letters.text, "a");
        EXPECT_EQ(undo.redoActionName(), "outer");
        undo.redo();
        EXPECT_EQ(letters.text, "abc");
    }
    EXPECT_THROW(
        {
            const Group failing(undo);
            letters.add('d');
            throw std::runtime_error("the second part");
        },
        std::runtime_error);
    EXPECT_EQ(undo.undoActionName(), "d") << "what was done can be undone";
    EXPECT_FALSE(undo.canRedo());
}

TEST(UndoManager, AStepIsTakenBackFromAmongOthers) {
    services::UndoManager undo(kClock);
    std::string undone;
    for (const char letter : {'a', 'b', 'c'}) {
        undo.registerUndo(std::string(1, letter), 1, [&undone, letter](auto) { undone += letter; });
    }
    const auto latest = undo.nextUndo()->id;
    undo.undo();
    EXPECT_FALSE(undo.findUndo(latest));
    const auto middle = undo.nextUndo()->id;
    undo.registerUndo("d", 1, [&](auto) { undone += 'd'; });
    undo.undo(middle);
    undo.undo(middle);
    EXPECT_EQ(undone, "cb") << "once";
    EXPECT_EQ(undo.undoActionName(), "d");
}

TEST(UndoManager, AStepThatIsRefusedInTheMiddleIsDoneAgain) {
    Letters letters;
    {
        const services::UndoManager::Group group(letters.undo, "abc");
        for (const char letter : {'a', 'b', 'c'}) {
            letters.add(letter);
        }
    }
    letters.refused = 'a';
    EXPECT_THROW(letters.undo.undo(), model::EntryServiceError);
    EXPECT_EQ(letters.text, "abc");
    EXPECT_FALSE(letters.undo.canUndo());
    EXPECT_FALSE(letters.undo.canRedo());
}

TEST(UndoManager, WhatCannotBeDoneAgainWhollyIsNotForgottenEither) {
    Letters letters;
    {
        const services::UndoManager::Group group(letters.undo, "abc");
        for (const char letter : {'a', 'b', 'c'}) {
            letters.add(letter);
        }
    }
    letters.kept = 'a';
    letters.lost = 'c';
    EXPECT_THROW(letters.undo.undo(), store::StoreError);
    EXPECT_EQ(letters.text, "ab");
    letters.kept = letters.lost = '-';
    letters.undo.undo();
    EXPECT_EQ(letters.text, "");
    letters.undo.redo();
    EXPECT_EQ(letters.text, "ab");
    letters.undo.redo();
    EXPECT_EQ(letters.text, "abc");
}

TEST(UndoManager, KeepsTheLatestWithinItsBounds) {
    services::UndoManager undo(kClock);
    std::vector<int> undone;
    for (int i = 0; i < 600; ++i) {
        undo.registerUndo("small", 1, [&undone, i](auto) { undone.push_back(i); });
    }
    undo.registerUndo("large", services::UndoManager::kMaximumCost,
                      [&](auto) { undone.push_back(-1); });
    undo.undo();
    EXPECT_FALSE(undo.canUndo());
    undo.registerUndo("larger", services::UndoManager::kMaximumCost * 2,
                      [&](auto) { undone.push_back(-2); });
    undo.undo();
    EXPECT_EQ(undone, (std::vector{-1, -2}));

    for (int i = 0; i < 600; ++i) {
        undo.registerUndo("small", 1, [](auto) {});
    }
    std::size_t count = 0;
    for (; undo.canUndo(); ++count) {
        undo.undo();
    }
    EXPECT_EQ(count, services::UndoManager::kMaximumActions);

    for (int i = 0; i < 2; ++i) {
        undo.registerUndo("large when undone", 1, [&](auto) {
            undo.registerUndo("again", services::UndoManager::kMaximumCost, [](auto) {});
        });
    }
    undo.undo();
    undo.undo();
    undo.redo();
    EXPECT_FALSE(undo.canRedo());
}

} // namespace korvex::tests
