#include "TextFixture.h"

#include "services/AttachmentList.h"
#include "store/StoreError.h"

#include <gmock/gmock.h>

#include <fstream>
#include <functional>
#include <random>

namespace korvex::tests {

using model::AttachmentError;
using model::AttachmentErrorCase;
using model::Entry;
using model::EntryAttachment;
using model::EntryPlacement;
using model::EntryServiceErrorCase;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class EntryAttachmentsTest : public TextFixture {
protected:
    std::filesystem::path file(const std::string& name, std::string_view text = "content") {
        const auto path = folder / name;
        std::ofstream(path, std::ios::binary) << text;
        return path;
    }

    static EntryAttachment attachment(std::string filename, std::size_t size = 3) {
        return {.id = base::Uuid::random(),
                .filename = std::move(filename),
                .data = base::Bytes(size, std::uint8_t{'x'})};
    }

    Entry& todo() { return *add({"todo"}).front(); }
    Entry& heading() {
        return entries->createText({.rich = richtext::RichTextSerializer::applyingHeading(
                                        richtext::HeadingLevel::level1, plain("heading")),
                                    .board = *board,
                                    .now = kNow});
    }

    void attach(Entry& entry, const std::vector<std::string>& names) {
        std::vector<EntryAttachment> attachments;
        for (const auto& name : names) {
            attachments.push_back(attachment(name));
        }
        entries->attach(std::move(attachments), entry, kNow);
    }

    /// What the store has, read by another context.
    std::vector<EntryAttachment> stored(const Entry& entry) {
        store::ModelContext fresh(*container);
        return EntryAttachment::decode(fresh.find<Entry>(entry.id())->attachmentData());
    }
    std::vector<std::string> names(const Entry& entry) {
        std::vector<std::string> result;
        for (const auto& each : stored(entry)) {
            result.push_back(each.filename);
        }
        return result;
    }
    base::Uuid idOf(const Entry& entry, const std::string& name) {
        for (const auto& each : stored(entry)) {
            if (each.filename == name) {
                return each.id;
            }
        }
        ADD_FAILURE() << name;
        return {};
    }

    /// What no service writes.
    void storeData(Entry& entry, base::Bytes data) {
        entry.setAttachmentData(std::move(data));
        context->save();
    }

    template <typename Work>
    std::optional<AttachmentErrorCase> attachmentRefusal(Work&& work) {
        const auto before = storedBoard();
        const auto reconciles = reminders.reconciles;
        try {
            work();
        } catch (const AttachmentError& error) {
            EXPECT_FALSE(context->hasChanges());
            EXPECT_EQ(storedBoard(), before);
            EXPECT_EQ(reminders.reconciles, reconciles);
            return error.which();
        }
        return std::nullopt;
    }
};

TEST_F(EntryAttachmentsTest, FilesAreAppendedInOrder) {
    auto& entry = todo();
    const std::vector files{file("b.txt", "bytes of b"), file("a.txt")};
    entries->attachFiles(files, entry, kLater);
    const std::vector more{file("c.txt")};
    entries->attachFiles(more, entry, kLater);
    EXPECT_THAT(names(entry), ElementsAre("b.txt", "a.txt", "c.txt"));
    EXPECT_EQ(stored(entry).front().data,
              (base::Bytes{'b', 'y', 't', 'e', 's', ' ', 'o', 'f', ' ', 'b'}));
    EXPECT_EQ(entry.updatedAt(), kLater);

    const std::vector fourth{file("d.txt")};
    EXPECT_EQ(attachmentRefusal([&] { entries->attachFiles(fourth, entry, kNow); }),
              AttachmentErrorCase::tooLarge);
}

TEST_F(EntryAttachmentsTest, OneBadFileOfSeveralAttachesNone) {
    auto& entry = todo();
    const std::vector files{file("good.txt"), folder / "missing", file("other.txt")};
    EXPECT_EQ(attachmentRefusal([&] { entries->attachFiles(files, entry, kLater); }),
              AttachmentErrorCase::invalidFile);
    EXPECT_THAT(names(entry), IsEmpty());
    // The entry is looked at first, its attachments after the files.
    int reads = 0;
    const auto read = [&](std::span<const std::filesystem::path>) {
        ++reads;
        return std::vector<EntryAttachment>{attachment("new")};
    };
    auto& title = heading();
    EXPECT_EQ(entryRefusal([&] { entries->attachFiles(files, title, kLater, read); }),
              EntryServiceErrorCase::headingAttachments);
    EXPECT_EQ(reads, 0);
    storeData(entry, {1, 2, 3});
    EXPECT_EQ(attachmentRefusal([&] { entries->attachFiles(files, entry, kLater, read); }),
              AttachmentErrorCase::invalidData);
    EXPECT_EQ(reads, 1);
}

TEST_F(EntryAttachmentsTest, ThreeFullFilesFit) {
    auto& entry = todo();
    for (const auto* name : {"a", "b", "c"}) {
        file(name);
        std::filesystem::resize_file(folder / name, EntryAttachment::kMaximumBytes);
        const std::vector files{folder / name};
        entries->attachFiles(files, entry, kLater);
    }
    const auto list = services::attachmentsOf(entry);
    ASSERT_EQ(list.attachments.size(), 3U);
    EXPECT_EQ(list.attachments.back().size, EntryAttachment::kMaximumBytes);
    const auto second = services::attachment(entry, list.attachments[1].id);
    ASSERT_TRUE(second);
    EXPECT_EQ(second->filename, "b");
    EXPECT_EQ(services::attachment(entry, base::Uuid::random()), std::nullopt);
}

TEST_F(EntryAttachmentsTest, RemovingTheLastLeavesNoData) {
    auto& entry = note("text");
    attach(entry, {"a", "b"});
    entries->removeAttachment(base::Uuid::random(), entry, kLater);
    EXPECT_EQ(entry.updatedAt(), kNow) << "nothing to remove";
    entries->removeAttachment(idOf(entry, "a"), entry, kLater);
    EXPECT_THAT(names(entry), ElementsAre("b"));
    EXPECT_EQ(entry.updatedAt(), kLater);
    entries->removeAttachment(idOf(entry, "b"), entry, kLater);
    store::ModelContext fresh(*container);
    EXPECT_EQ(fresh.find<Entry>(entry.id())->attachmentData(), std::nullopt);
}

TEST_F(EntryAttachmentsTest, AHeadingKeepsWhatItHasAndGetsNothingNew) {
    auto& entry = note("to become a heading");
    attach(entry, {"a", "b"});
    entries->updateText(entry,
                        richtext::RichTextSerializer::applyingHeading(
                            richtext::HeadingLevel::level2, plain("a heading now")),
                        kNow);
    auto& other = todo();
    attach(other, {"c"});
    EXPECT_EQ(entryRefusal([&] { attach(entry, {"d"}); }),
              EntryServiceErrorCase::headingAttachments);
    EXPECT_EQ(entryRefusal([&] {
                  entries->moveAttachment(idOf(other, "c"), other, entry, std::nullopt,
                                          EntryPlacement::after, kLater);
              }),
              EntryServiceErrorCase::headingAttachments);
    entries->moveAttachment(idOf(entry, "b"), entry, entry, idOf(entry, "a"),
                            EntryPlacement::before, kLater);
    EXPECT_THAT(names(entry), ElementsAre("b", "a"));
    entries->moveAttachment(idOf(entry, "a"), entry, other, idOf(other, "c"),
                            EntryPlacement::before, kLater);
    EXPECT_THAT(names(other), ElementsAre("a", "c"));
    entries->removeAttachment(idOf(entry, "b"), entry, kLater);
    EXPECT_THAT(names(entry), IsEmpty());
}

TEST_F(EntryAttachmentsTest, MovesToWhereItIsTold) {
    struct Case {
        const char* moved;
        const char* relativeTo;
        EntryPlacement placement;
        bool isWithin;
        std::vector<std::string> from;
        std::vector<std::string> to;
    };
    using enum EntryPlacement;
    const std::vector<std::string> abc{"a", "b", "c"};
    for (const auto& each : {
             Case{"b", "x", before, false, {"a", "c"}, {"b", "x", "y"}},
             Case{"b", "x", after, false, {"a", "c"}, {"x", "b", "y"}},
             Case{"a", "y", after, false, {"b", "c"}, {"x", "y", "a"}},
             Case{"a", nullptr, before, false, {"b", "c"}, {"x", "y", "a"}},
             Case{"a", "elsewhere", before, false, {"b", "c"}, {"x", "y", "a"}},
             Case{"a", "c", after, true, {"b", "c", "a"}, {"x", "y"}},
             Case{"c", "a", before, true, {"c", "a", "b"}, {"x", "y"}},
             Case{"a", "elsewhere", before, true, {"b", "c", "a"}, {"x", "y"}},
             Case{"a", "b", before, true, abc, {"x", "y"}},
             Case{"a", "a", after, true, abc, {"x", "y"}},
         }) {
        auto& from = todo();
        auto& to = note("text");
        attach(from, abc);
        attach(to, {"x", "y"});
        auto& target = each.isWithin ? from : to;
        std::optional<base::Uuid> relativeTo;
        if (each.relativeTo) {
            relativeTo = each.relativeTo == std::string("elsewhere")
                             ? base::Uuid::random()
                             : idOf(target, each.relativeTo);
        }
        const auto moved = idOf(from, each.moved);
        entries->moveAttachment(moved, from, target, relativeTo, each.placement, kLater);
        EXPECT_EQ(names(from), each.from) << each.moved;
        EXPECT_EQ(names(to), each.to) << each.moved;
        EXPECT_EQ(from.updatedAt(), names(from) == abc ? kNow : kLater);
        EXPECT_EQ(to.updatedAt(), each.isWithin ? kNow : kLater);
        EXPECT_EQ(idOf(target, each.moved), moved);
    }
}

TEST_F(EntryAttachmentsTest, AMoveThatIsRefusedChangesNeitherEntry) {
    auto& from = todo();
    auto& full = note("text");
    auto& damaged = todo();
    attach(from, {"a"});
    attach(full, {"x", "y", "z"});
    storeData(damaged, {1, 2, 3});
    const auto move = [&](Entry& source, Entry& target) {
        return attachmentRefusal([&] {
            entries->moveAttachment(idOf(from, "a"), source, target, std::nullopt,
                                    EntryPlacement::after, kLater);
        });
    };
    EXPECT_EQ(move(from, full), AttachmentErrorCase::tooLarge);
    EXPECT_EQ(move(from, damaged), AttachmentErrorCase::invalidData);
    EXPECT_EQ(move(damaged, from), AttachmentErrorCase::invalidData);
    EXPECT_EQ(move(full, from), std::nullopt) << "no such attachment there";
    EXPECT_THAT(names(from), ElementsAre("a"));
    EXPECT_THAT(names(full), ElementsAre("x", "y", "z"));
}

TEST_F(EntryAttachmentsTest, DamagedDataIsShownAsNoneAndStaysAsItIs) {
    auto& entry = todo();
    const base::Bytes damaged{'b', 'p', 'l', 'i', 's', 't'};
    storeData(entry, damaged);
    EXPECT_EQ(services::attachmentsOf(entry), (services::AttachmentList{.isDamaged = true}));
    EXPECT_THROW(services::attachment(entry, base::Uuid::random()), AttachmentError);
    EXPECT_EQ(attachmentRefusal([&] { attach(entry, {"a"}); }), AttachmentErrorCase::invalidData);
    EXPECT_EQ(
        attachmentRefusal([&] { entries->removeAttachment(base::Uuid::random(), entry, kLater); }),
        AttachmentErrorCase::invalidData);
    entries->updateTodo(entry, "edited", kLater);
    store::ModelContext fresh(*container);
    EXPECT_EQ(fresh.find<Entry>(entry.id())->attachmentData(), damaged);
}

TEST_F(EntryAttachmentsTest, CreationChecksAttachmentsAfterTheTextAndBeforeTheBoard) {
    auto& gone = boards->createBoard("Gone", kNow);
    boards->deleteBoard(gone);
    const auto one = [] { return std::vector{attachment("a")}; };
    const auto four = [] {
        return std::vector{attachment("a"), attachment("b"), attachment("c"), attachment("d")};
    };
    const auto todos = [&](std::vector<std::string> contents, model::Board& on,
                           std::vector<EntryAttachment> attachments) {
        entries->createTodos({.contents = std::move(contents),
                              .board = on,
                              .now = kNow,
                              .attachments = std::move(attachments)});
    };
    const auto text = [&](richtext::AttributedString rich, model::Board& on,
                          std::vector<EntryAttachment> attachments) {
        entries->createText({.rich = std::move(rich),
                             .board = on,
                             .now = kNow,
                             .attachments = std::move(attachments)});
    };
    const auto title = [&](richtext::AttributedString rich) {
        return richtext::RichTextSerializer::applyingHeading(richtext::HeadingLevel::level1,
                                                             std::move(rich));
    };
    EXPECT_EQ(attachmentRefusal([&] {
                  todos({"a", "b"}, gone, one());
              }),
              AttachmentErrorCase::multipleTodos);
    EXPECT_EQ(attachmentRefusal([&] { todos({"a"}, gone, four()); }),
              AttachmentErrorCase::tooLarge);
    EXPECT_EQ(entryRefusal([&] {
                  todos({"a", " "}, gone, one());
              }),
              EntryServiceErrorCase::emptyContent);
    EXPECT_EQ(entryRefusal([&] { todos({"a"}, gone, one()); }),
              EntryServiceErrorCase::entryUnavailable);
    EXPECT_EQ(entryRefusal([&] { text(title(plain("a")), gone, four()); }),
              EntryServiceErrorCase::headingAttachments);
    EXPECT_EQ(entryRefusal([&] { text(title(plain(" ")), gone, one()); }),
              EntryServiceErrorCase::emptyContent);
    EXPECT_EQ(attachmentRefusal([&] { text(plain("a"), gone, four()); }),
              AttachmentErrorCase::tooLarge);
    EXPECT_EQ(entryRefusal([&] { text(tooLongWhenEncoded(), gone, four()); }),
              EntryServiceErrorCase::contentTooLong);
    EXPECT_TRUE(board->entries().empty());

    todos({"a"}, *board, {attachment("1"), attachment("2"), attachment("3")});
    text(plain("b"), *board, one());
    text(title(plain("c")), *board, {});
    const auto created = services::activeEntries(*board);
    ASSERT_EQ(created.size(), 3U);
    EXPECT_THAT(names(*created[0]), ElementsAre("1", "2", "3"));
    EXPECT_THAT(names(*created[1]), ElementsAre("a"));
}

TEST_F(EntryAttachmentsTest, AFailedSaveLeavesEverythingAsItWas) {
    auto& from = todo();
    auto& to = note("text");
    attach(from, {"a", "b"});
    attach(to, {"x"});
    const auto a = idOf(from, "a");
    const auto before = storedBoard();
    const std::vector<std::function<void()>> operations{
        [&] { attach(from, {"c"}); },
        [&] { entries->removeAttachment(a, from, kLater); },
        [&] { entries->moveAttachment(a, from, to, std::nullopt, EntryPlacement::after, kLater); },
        [&] {
            entries->createTodos({.contents = {"new"},
                                  .board = *board,
                                  .now = kLater,
                                  .attachments = {attachment("c")}});
        },
    };
    log.expectError("Entry persistence failed");
    for (const auto& operation : operations) {
        breakSaves();
        EXPECT_THROW(operation(), store::StoreError);
        mendSaves();
        EXPECT_FALSE(context->hasChanges());
        EXPECT_EQ(storedBoard(), before);
        EXPECT_THAT(names(from), ElementsAre("a", "b"));
        EXPECT_THAT(names(to), ElementsAre("x"));
        EXPECT_EQ(services::attachmentsOf(from).attachments.size(), 2U);
    }
}

TEST_F(EntryAttachmentsTest, AReadOnlyStoreAndAnEntryThatIsGoneAreRefused) {
    auto& entry = todo();
    attach(entry, {"a"});
    const auto id = idOf(entry, "a");
    {
        const auto readOnly = openContainer(false);
        store::ModelContext reading(*readOnly);
        services::EntryService service(reading, reminders, widgets, log);
        auto& same = *reading.find<Entry>(entry.id());
        EXPECT_EQ(services::attachmentsOf(same).attachments.size(), 1U);
        EXPECT_EQ(entryRefusal([&] { service.removeAttachment(id, same, kLater); }),
                  EntryServiceErrorCase::readOnlyStore);
        EXPECT_EQ(entryRefusal([&] { service.attach({attachment("b")}, same, kLater); }),
                  EntryServiceErrorCase::readOnlyStore);
    }
    // Another program deletes it.
    {
        const auto other = openContainer();
        store::ModelContext theirs(*other);
        services::EntryService(theirs, reminders, widgets, log)
            .deleteEntry(*theirs.find<Entry>(entry.id()));
    }
    int reads = 0;
    const auto read = [&](std::span<const std::filesystem::path>) {
        ++reads;
        return std::vector<EntryAttachment>();
    };
    EXPECT_EQ(entryRefusal([&] { entries->attachFiles({}, entry, kLater, read); }),
              EntryServiceErrorCase::entryUnavailable);
    EXPECT_EQ(reads, 0);
    EXPECT_EQ(entryRefusal([&] { entries->removeAttachment(id, entry, kLater); }),
              EntryServiceErrorCase::entryUnavailable);
}

TEST_F(EntryAttachmentsTest, WhatAnotherProgramAttachesIsKept) {
    auto& entry = todo();
    const auto other = openContainer();
    store::ModelContext theirs(*other);
    services::EntryService service(theirs, reminders, widgets, log);
    // They know that there are none, until they look again.
    const auto& same = *theirs.find<Entry>(entry.id());
    EXPECT_TRUE(services::attachmentsOf(same).attachments.empty());
    attach(entry, {"mine"});
    theirs.refresh();
    EXPECT_EQ(services::attachmentsOf(same).attachments.size(), 1U);
    ASSERT_TRUE(entry.attachmentData());
    service.attach({attachment("theirs")}, *theirs.find<Entry>(entry.id()), kLater);
    attach(entry, {"mine again"});
    EXPECT_THAT(names(entry), ElementsAre("mine", "theirs", "mine again"));
    service.removeAttachment(idOf(entry, "mine"), *theirs.find<Entry>(entry.id()), kLater);
    EXPECT_EQ(attachmentRefusal([&] { attach(entry, {"1", "2"}); }), AttachmentErrorCase::tooLarge);
    attach(entry, {"last"});
    EXPECT_THAT(names(entry), ElementsAre("theirs", "mine again", "last"));
}

TEST_F(EntryAttachmentsTest, NoOperationLeavesTheirBytesInMemory) {
    const std::function<void(Entry&, Entry&)> operations[]{
        [](Entry& from, Entry&) { services::attachmentsOf(from); },
        [this](Entry& from, Entry&) { services::attachment(from, idOf(from, "a")); },
        [this](Entry& from, Entry&) { entries->removeAttachment(idOf(from, "a"), from, kLater); },
        [this](Entry& from, Entry&) {
            entries->moveAttachment(idOf(from, "b"), from, from, idOf(from, "a"),
                                    EntryPlacement::before, kLater);
        },
        [this](Entry& from, Entry& to) {
            entries->moveAttachment(idOf(from, "a"), from, to, std::nullopt, EntryPlacement::after,
                                    kLater);
        },
    };
    for (const auto& operation : operations) {
        auto& from = todo();
        auto& to = todo();
        attach(from, {"a", "b"});
        attach(to, {"x"});
        operation(from, to);
        // Underneath, so that only what is read anew is seen to be damaged.
        SQLite::Database((folder / "Primary.store").string(), SQLite::OPEN_READWRITE)
            .exec("UPDATE \"Entry.attachmentData\" SET bytes = x'00'");
        for (const auto* const entry : {&from, &to}) {
            EXPECT_TRUE(services::attachmentsOf(*entry).isDamaged) << &operation - operations;
        }
    }
}

TEST_F(EntryAttachmentsTest, RandomOperationsAgreeWithListsInMemory) {
    std::mt19937 random(4);
    const auto pick = [&](std::size_t below) { return random() % below; };
    std::vector<Entry*> list = add({"1", "2", "3"});
    std::vector<std::vector<EntryAttachment>> expected(list.size());
    for (int round = 0; round < 400; ++round) {
        const auto at = pick(list.size());
        const auto to = pick(list.size());
        auto& own = expected[at];
        const auto action = pick(3);
        if (action == 0) {
            std::vector<EntryAttachment> added(pick(3));
            for (auto& each : added) {
                each = attachment(std::to_string(round), pick(5000));
            }
            auto combined = own;
            combined.insert(combined.end(), added.begin(), added.end());
            const bool fits = combined.size() <= EntryAttachment::kMaximumCount;
            EXPECT_EQ(attachmentRefusal([&] { entries->attach(added, *list[at], kLater); }),
                      fits ? std::nullopt : std::optional(AttachmentErrorCase::tooLarge));
            if (fits) {
                own = combined;
            }
        } else if (!own.empty() && action == 1) {
            const auto index = static_cast<std::ptrdiff_t>(pick(own.size()));
            entries->removeAttachment(own[static_cast<std::size_t>(index)].id, *list[at], kLater);
            own.erase(own.begin() + index);
        } else if (!own.empty()) {
            const auto index = static_cast<std::ptrdiff_t>(pick(own.size()));
            const auto moved = own[static_cast<std::size_t>(index)];
            auto source = own;
            source.erase(source.begin() + index);
            auto target = at == to ? source : expected[to];
            auto place = pick(target.size() + 1);
            std::optional<base::Uuid> relativeTo;
            auto placement = EntryPlacement::after;
            if (place < target.size()) {
                relativeTo = target[place].id;
                placement = EntryPlacement::before;
            }
            target.insert(target.begin() + static_cast<std::ptrdiff_t>(place), moved);
            const bool fits = target.size() <= EntryAttachment::kMaximumCount;
            EXPECT_EQ(attachmentRefusal([&] {
                          entries->moveAttachment(moved.id, *list[at], *list[to], relativeTo,
                                                  placement, kLater);
                      }),
                      fits ? std::nullopt : std::optional(AttachmentErrorCase::tooLarge));
            if (fits) {
                own = source;
                expected[to] = target;
            }
        }
        for (std::size_t i = 0; i < list.size(); ++i) {
            ASSERT_EQ(stored(*list[i]), expected[i]) << round;
        }
    }
}

} // namespace korvex::tests
