#include "agent/ReminderTable.h"
#include "NothingCanGrow.h"
#include "agent/TableNotificationClient.h"
#include "store/StoreError.h"
#include "support/RecordingLog.h"
#include "support/SilentLog.h"
#include "support/TemporaryFolder.h"

#include <SQLiteCpp/SQLiteCpp.h>
#include <gmock/gmock.h>

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>
#include <iterator>
#include <random>

namespace korvex::agent {
namespace {

using base::Instant;
using base::Uuid;
using schedule::ReminderRequest;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using State = ReminderState;

constexpr Instant kNow{1000};
const ShownNotification kShown{7, "bus :1.4"};

/// The same ones in every process.
Uuid entry(int number) {
    Uuid id;
    id.bytes.back() = static_cast<std::uint8_t>(number);
    return id;
}

ReminderRequest request(int number, double due, std::string body = "Buy milk") {
    return {.entryID = entry(number), .date = {due}, .body = std::move(body)};
}

std::string contents(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

class ReminderTableTest : public ::testing::Test {
protected:
    ReminderTable& open() {
        table.reset();
        return table.emplace(file, log);
    }
    std::vector<ReminderRequest> standing(Instant after) {
        std::vector<ReminderRequest> requests;
        for (auto& each : table->standing(after)) {
            requests.push_back(std::move(each.request));
        }
        return requests;
    }
    State stateOf(int number) {
        for (const auto& row : table->rows(100).read) {
            if (row.request.entryID == entry(number)) {
                return row.state;
            }
        }
        throw std::out_of_range("no such row");
    }

    tests::TemporaryFolder folder;
    std::filesystem::path file = folder / "state" / "korvex" / "reminders.sqlite";
    tests::RecordingLog log;
    std::optional<ReminderTable> table;
};

TEST_F(ReminderTableTest, ARequestWaitsIsShownAndIsRemembered) {
    open().put(request(1, 10));
    table->put(request(2, 20, ""));
    table->put(request(2, 30, "Пора"));
    EXPECT_THAT(standing({10}), ElementsAre(request(2, 30, "Пора")));
    EXPECT_THAT(table->due({30}, 5), ElementsAre(request(1, 10), request(2, 30, "Пора")));
    EXPECT_THAT(table->due({30}, 1), ElementsAre(request(1, 10)));
    EXPECT_EQ(table->nextDue({10}), Instant{30});
    EXPECT_EQ(table->nextDue({30}), std::nullopt);

    table->setPosted(entry(1), {10}, kShown);
    table->setWatchedUntil({11});
    open();
    EXPECT_EQ(table->watchedUntil(), Instant{11});
    EXPECT_EQ(table->entryOf(kShown), entry(1));
    EXPECT_EQ(table->entryOf({kShown.id, "bus :1.5"}), std::nullopt);
    EXPECT_THAT(table->due({30}, 5), ElementsAre(request(2, 30, "Пора")));
    table->setClosed({kShown.id, "bus :1.5"});
    EXPECT_EQ(stateOf(1), State::posted);
    table->setClosed(kShown);
    EXPECT_EQ(stateOf(1), State::gone);
    EXPECT_THAT(table->withdrawals(), IsEmpty());
}

TEST_F(ReminderTableTest, WhatWasShownIsNotShownAgainAtTheSameMoment) {
    open().put(request(1, 10));
    table->setPosted(entry(1), {10}, kShown);
    // The clock is set back, the todo's words change: a reconcile cancels it and asks for it anew.
    EXPECT_THAT(standing({5}), ElementsAre(request(1, 10)));
    table->withdraw(entry(1));
    EXPECT_THAT(table->withdrawals(), ElementsAre(kShown));
    EXPECT_THAT(standing({5}), IsEmpty());
    table->put(request(1, 10, "other words"));
    EXPECT_THAT(standing({5}), ElementsAre(request(1, 10, "other words")));
    EXPECT_THAT(table->due({10}, 5), IsEmpty());
    // Another moment is another reminder.
    table->put(request(1, 11));
    EXPECT_THAT(table->due({11}, 5), ElementsAre(request(1, 11)));
    table->withdraw(entry(1));
    EXPECT_THAT(table->rows(5).read, IsEmpty());
}

TEST_F(ReminderTableTest, AnAnswerThatComesTooLateIsWithdrawn) {
    open().put(request(1, 10));
    table->withdraw(entry(1));
    table->setPosted(entry(1), {10}, kShown);
    // Asked for again, as after the clock was set back: it was shown.
    table->put(request(1, 10));
    EXPECT_THAT(table->due({10}, 5), IsEmpty());
    table->put(request(2, 20));
    table->put(request(2, 30));
    table->setPosted(entry(2), {20}, {8, kShown.daemon});
    EXPECT_THAT(table->withdrawals(),
                testing::UnorderedElementsAre(kShown, ShownNotification{8, kShown.daemon}));
    EXPECT_EQ(stateOf(2), State::pending);
    // The daemon gives a number that it has used before.
    table->setPosted(entry(2), {30}, kShown);
    EXPECT_EQ(table->entryOf(kShown), entry(2));
    EXPECT_THAT(table->withdrawals(), ElementsAre(ShownNotification{8, kShown.daemon}));
}

TEST_F(ReminderTableTest, OfShownOnesOnlyTheNewestAreRememberedAndWithoutTheirWords) {
    constexpr int kMany = static_cast<int>(ReminderTable::kMaximumRemembered) + 50;
    open().changeTogether([&] {
        for (int i = 0; i < kMany; ++i) {
            const auto id = Uuid::random();
            table->put({id, {double(i)}, "words"});
            table->setPosted(id, {double(i)}, kShown);
            table->setClosed(kShown);
        }
        table->put(request(1, 1));
    });
    const auto rows = table->rows(2 * kMany).read;
    ASSERT_THAT(rows, SizeIs(ReminderTable::kMaximumRemembered + 1));
    EXPECT_EQ(rows.front().request, request(1, 1)) << "what waits is never forgotten";
    EXPECT_EQ(rows[1].request.date, Instant{kMany - 1});
    EXPECT_EQ(rows[1].request.body, "");
}

TEST_F(ReminderTableTest, OfManyTheSoonestAreReadAndThoseShownLast) {
    open().changeTogether([&] {
        for (int i = 0; i < 10; ++i) {
            const auto shown = Uuid::random();
            table->put({shown, {double(i)}, "words"});
            table->setPosted(shown, {double(i)}, kShown);
            table->setClosed(kShown);
            table->put(request(i, 100 + i));
        }
    });
    const auto read = [&](std::size_t atMost, std::size_t more) {
        const auto rows = table->rows(atMost);
        EXPECT_EQ(rows.more, more);
        std::vector<double> dues;
        for (const auto& row : rows.read) {
            dues.push_back(row.request.date.seconds);
        }
        return dues;
    };
    EXPECT_THAT(read(6, 14), ElementsAre(100, 101, 102, 9, 8, 7));
    EXPECT_THAT(read(20, 0), SizeIs(20));
    for (int i = 2; i < 10; ++i) {
        table->withdraw(entry(i));
    }
    EXPECT_THAT(read(6, 6), ElementsAre(100, 101, 9, 8, 7, 6)) << "all room is used";
}

TEST_F(ReminderTableTest, OneProcessHasIt) {
    open();
    try {
        ReminderTable second(file, log);
        FAIL() << "two agents would show each reminder twice";
    } catch (const store::StoreError& error) {
        EXPECT_EQ(error.which(), store::StoreErrorCase::busy);
    }
}

TEST_F(ReminderTableTest, AFileOfNoUseIsSetAside) {
    struct Case {
        std::string name;
        std::function<void()> spoil;
    };
    const auto run = [&](const std::string& sql) {
        SQLite::Database(file.string(), SQLite::OPEN_READWRITE).exec(sql);
    };
    const Case cases[] = {
        {"no database", [&] { std::ofstream(file) << std::string(10'000, 'x'); }},
        {"another program's", [&] { run("PRAGMA application_id = 1"); }},
        {"of a newer version", [&] { run("PRAGMA user_version = 2"); }},
        {"without a table", [&] { run("DROP TABLE Withdrawal"); }},
        {"cut short",
         [&] { std::filesystem::resize_file(file, std::filesystem::file_size(file) / 2); }},
        {"a page overwritten",
         [&] {
             std::fstream stream(file, std::ios::in | std::ios::out | std::ios::binary);
             stream.seekp(4096);
             stream << std::string(std::filesystem::file_size(file) - 4096, 'x');
         }},
        {"a state that there is not",
         [&] { run("PRAGMA ignore_check_constraints = 1; UPDATE Reminder SET state = 9"); }},
    };
    for (const auto& [name, spoil] : cases) {
        SCOPED_TRACE(name);
        open().put(request(1, 10));
        table.reset();
        spoil();
        const auto before = contents(file);
        const auto warnings = log.count("is set aside and begun anew: ");
        // What belongs to the former file must not get into the new one.
        std::ofstream(file.string() + "-journal") << "stale";
        EXPECT_THAT(open().rows(5).read, IsEmpty());
        EXPECT_EQ(table->watchedUntil(), std::nullopt);
        EXPECT_EQ(log.count("is set aside and begun anew: "), warnings + 1);
        EXPECT_EQ(contents(file.string() + ".aside"), before);
        EXPECT_FALSE(std::filesystem::exists(file.string() + "-journal"));
        table->put(request(2, 20));
        EXPECT_THAT(open().rows(5).read, SizeIs(1));
        table.reset();
        std::filesystem::remove(file);
    }
}

TEST_F(ReminderTableTest, OneThatTurnsOutToBeDamagedIsReconciledFromNothing) {
    open().changeTogether([&] {
        for (int i = 0; i < 5000; ++i) {
            table->put({Uuid::random(), {2000}, std::string(500, 'x')});
        }
    });
    open();
    std::filesystem::resize_file(file, 8192);
    TableNotificationClient client(*table);
    EXPECT_THAT(client.pending(kNow), IsEmpty());
    EXPECT_EQ(log.count("is set aside and begun anew: "), 1U);
    client.applyReconcile([&] { client.add(request(1, 2000)); });
    EXPECT_THAT(client.pending(kNow), ElementsAre(schedule::PendingReminder{request(1, 2000)}));
}

TEST_F(ReminderTableTest, WhatCannotBeWrittenNowIsNotThrownAway) {
    open().put(request(1, 2000));
    table->setPosted(entry(1), {2000}, kShown);
    const auto rows = table->rows(5).read;
    TableNotificationClient client(*table);
    const auto change = [&] { client.add(request(2, 2000)); };
    {
        const tests::NothingCanGrow disk;
        try {
            client.applyReconcile(change);
            FAIL() << "the disk takes nothing";
        } catch (const store::StoreError& error) {
            EXPECT_TRUE(ReminderFile::isDamage(error)) << "it may be";
        }
        EXPECT_EQ(table->rows(5).read, rows);
    }
    client.applyReconcile(change);
    EXPECT_THAT(open().rows(5).read, SizeIs(2));
    EXPECT_EQ(log.count("set aside"), 0U);
}

TEST_F(ReminderTableTest, OneThatCannotBeBegunAnewIsBegunWhenItCan) {
    open().changeTogether([&] {
        for (int i = 0; i < 5000; ++i) {
            table->put({Uuid::random(), {2000}, std::string(500, 'x')});
        }
    });
    open();
    std::filesystem::resize_file(file, 8192);
    TableNotificationClient client(*table);
    {
        const tests::NothingCanGrow disk;
        for (int i = 0; i < 3; ++i) {
            EXPECT_THROW(client.pending(kNow), store::StoreError);
            EXPECT_THROW(table->due({2000}, 5), store::StoreError);
            EXPECT_THROW(client.add(request(1, 2000)), store::StoreError);
        }
    }
    EXPECT_THAT(client.pending(kNow), IsEmpty());
    client.add(request(1, 2000));
    EXPECT_THAT(open().rows(5).read, SizeIs(1));
    EXPECT_EQ(log.count("is set aside and begun anew: "), 1U);
}

TEST_F(ReminderTableTest, AReconcileIsDoneWholeOrNotAtAll) {
    open().put(request(1, 2000));
    TableNotificationClient client(*table);
    const auto rows = table->rows(5).read;
    EXPECT_THROW(client.applyReconcile([&] {
        const std::string stale[] = {schedule::ReminderNotification::identifier(entry(1)),
                                     "another-notification"};
        client.cancel(stale);
        client.add(request(2, 2000));
        throw store::StoreError(store::StoreErrorCase::full);
    }),
                 store::StoreError);
    EXPECT_EQ(table->rows(5).read, rows);
}

/// What a program may do to the table; the same again for the same number.
void change(ReminderTable& table, unsigned number) {
    std::mt19937 random(number);
    const auto pick = [&](int below) { return static_cast<int>(random() % unsigned(below)); };
    const auto which = pick(12);
    const ShownNotification shown{static_cast<std::uint32_t>(pick(6)),
                                  pick(4) == 0 ? "bus :1.5" : "bus :1.4"};
    switch (pick(8)) {
    case 0:
    case 1:
    case 2:
        return table.put(request(which, pick(4), std::string(std::size_t(pick(3000)), 'x')));
    case 3:
    case 4:
        return table.setPosted(entry(which), {double(pick(4))}, shown);
    case 5:
        return pick(2) == 0 ? table.withdraw(entry(which)) : table.setClosed(shown);
    case 6:
        return pick(2) == 0 ? table.postAllAgain(shown.daemon)
                            : table.postOthersAgain(shown.daemon);
    default:
        return table.changeTogether([&] {
            for (int i = 0; i < 5; ++i) {
                change(table, static_cast<unsigned>(random()));
            }
            table.setWatchedUntil({double(number)});
        });
    }
}

TEST_F(ReminderTableTest, KilledAtAnyMomentItHasAllThatWasDone) {
    std::mt19937 random(5);
    ReminderTable model({}, log);
    unsigned done = 0;
    const auto isEqual = [&] {
        return table->rows(100).read == model.rows(100).read &&
               table->withdrawals() == model.withdrawals() &&
               table->watchedUntil() == model.watchedUntil();
    };
    for (int round = 0; round < 40; ++round) {
        int pipes[2];
        ASSERT_EQ(::pipe(pipes), 0);
        const auto child = ::fork();
        if (child == 0) {
            tests::SilentLog silent;
            ReminderTable mine(file, silent);
            for (auto number = done; ::write(pipes[1], "", 1) == 1; ++number) {
                change(mine, number);
            }
            ::_exit(1);
        }
        ::close(pipes[1]);
        unsigned begun = 0;
        char byte = 0;
        for (auto alive = random() % 100; begun < alive && ::read(pipes[0], &byte, 1) == 1;) {
            ++begun;
        }
        ::usleep(static_cast<useconds_t>(random() % 500));
        ::kill(child, SIGKILL);
        ::waitpid(child, nullptr, 0);
        while (::read(pipes[0], &byte, 1) == 1) {
            ++begun;
        }
        ::close(pipes[0]);
        // All but the last were done; that one is, or is not.
        for (unsigned i = 0; i + 1 < begun; ++i) {
            change(model, done++);
        }
        open();
        if (begun > 0 && !isEqual()) {
            change(model, done++);
        }
        ASSERT_TRUE(isEqual()) << "round " << round << ", after " << done << " changes";
        table.reset();
    }
    EXPECT_GT(done, 1000U);
    EXPECT_EQ(log.count("is set aside"), 0U);
}

} // namespace
} // namespace korvex::agent
