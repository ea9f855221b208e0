#include "StoreFixture.h"

#include "store/StoreFile.h"

#include <SQLiteCpp/SQLiteCpp.h>

#include <gmock/gmock.h>

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>
#include <functional>

namespace korvex::tests {

using model::Board;
using store::ModelConfiguration;
using store::ModelContext;
using store::StoreErrorCase;

class StoreFileTest : public StoreFixture {
protected:
    static void write(const std::filesystem::path& file, const std::string& content) {
        std::ofstream(file, std::ios::binary) << content;
    }

    /// A store with one board, its journal moved into the file and gone.
    void makeStore() {
        const auto container = open();
        ModelContext context(*container);
        addBoard(context, "Home");
        context.save();
        container->checkpoint();
    }
    void removeJournal() {
        std::filesystem::remove(journalFile());
        std::filesystem::remove(folder() / "Primary.store-shm");
    }

    /// Runs `work` in a child process that permission bits bind; its result is the exit status.
    int asNobody(const std::function<int()>& work) {
        ::chmod(folder().parent_path().c_str(), 0755);
        const pid_t child = ::fork();
        if (child == 0) {
            constexpr uid_t kNobody = 65534;
            if (::geteuid() == 0 && (::setgid(kNobody) != 0 || ::setuid(kNobody) != 0)) {
                ::_exit(99);
            }
            int status = 98;
            try {
                status = work();
            } catch (...) {
            }
            ::_exit(status);
        }
        int status = 0;
        ::waitpid(child, &status, 0);
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }
};

TEST_F(StoreFileTest, WhatIsNoStoreIsRefusedAndLeftAsItIs) {
    makeStore();
    const std::string good = bytesOf(storeFile());
    removeJournal();
    std::string otherProgram;
    {
        const auto file = folder() / "other.db";
        SQLite::Database database(file.string(), SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE);
        database.exec("CREATE TABLE notes(text)");
        otherProgram = bytesOf(file);
    }
    const struct {
        const char* name;
        std::string content;
    } cases[] = {
        {"empty", ""},
        {"one byte", "x"},
        {"text", std::string(5000, 'n')},
        {"header only", good.substr(0, 100)},
        {"first page only", good.substr(0, 4096)},
        {"cut in the middle", good.substr(0, good.size() / 2)},
        {"last byte missing", good.substr(0, good.size() - 1)},
        {"another program's database", otherProgram},
        {"zeroed header", std::string(4096, '\0') + good.substr(4096)},
    };
    for (const auto& each : cases) {
        std::filesystem::remove(folder() / "Primary.store.lock");
        write(storeFile(), each.content);
        EXPECT_EQ(refusal(), StoreErrorCase::notAStore) << each.name;
        EXPECT_EQ(refusal({.allowsSave = false}), StoreErrorCase::notAStore) << each.name;
        EXPECT_EQ(bytesOf(storeFile()), each.content) << each.name;
        removeJournal();
    }
}

TEST_F(StoreFileTest, VersionsThatThisBuildCannotReadAreRefused) {
    makeStore();
    const auto setVersion = [&](int number) {
        SQLite::Database(storeFile().string(), SQLite::OPEN_READWRITE)
            .exec("PRAGMA user_version = " + std::to_string(number));
    };
    setVersion(model::currentSchema().version.number + 1);
    EXPECT_EQ(refusal(), StoreErrorCase::newerVersion);
    EXPECT_EQ(refusal({.allowsSave = false}), StoreErrorCase::newerVersion);
    setVersion(160);
    EXPECT_EQ(refusal(), StoreErrorCase::needsUpgrade);
    // A number of no version: what the tables are says whether it was altered.
    setVersion(90);
    EXPECT_EQ(refusal({.whenOlder = ModelConfiguration::Older::upgrade}), StoreErrorCase::damaged);
    const auto rename = [&](const char* from, const char* to) {
        SQLite::Database(storeFile().string(), SQLite::OPEN_READWRITE)
            .exec(std::string("ALTER TABLE Entry RENAME COLUMN ") + from + " TO " + to);
    };
    rename("content", "words");
    EXPECT_EQ(refusal({.whenOlder = ModelConfiguration::Older::upgrade}),
              StoreErrorCase::olderVersion);
    rename("words", "content");
    setVersion(model::currentSchema().version.number);
    EXPECT_EQ(refusal(), std::nullopt);
}

TEST_F(StoreFileTest, AFolderInTheStoresPlaceIsRefused) {
    std::filesystem::create_directory(storeFile());
    EXPECT_EQ(refusal(), StoreErrorCase::notAStore);
}

/// Its journal would stand beside what it leads to.
TEST_F(StoreFileTest, ASymbolicLinkInTheStoresPlaceIsRefused) {
    makeStore();
    const auto link = folder() / "link" / "Primary.store";
    std::filesystem::create_directory(link.parent_path());
    for (const auto& target : {storeFile(), folder() / "nowhere"}) {
        std::filesystem::create_symlink(target, link);
        EXPECT_EQ(refusal({.file = link}), StoreErrorCase::symbolicLink);
        EXPECT_EQ(refusal({.file = link, .allowsSave = false}), StoreErrorCase::symbolicLink);
        std::filesystem::remove(link);
        EXPECT_TRUE(std::filesystem::is_empty(link.parent_path()));
    }
}

TEST_F(StoreFileTest, AMissingStoreIsCreatedOnlyWhereThatIsAskedFor) {
    EXPECT_EQ(refusal({.whenMissing = ModelConfiguration::Missing::refuse}),
              StoreErrorCase::missing);
    EXPECT_EQ(refusal({.allowsSave = false}), StoreErrorCase::missing);
    EXPECT_TRUE(std::filesystem::is_empty(folder()));
    EXPECT_EQ(refusal({.file = folder() / "a" / "b" / "Primary.store"}), std::nullopt);
}

TEST_F(StoreFileTest, AFolderThatCannotBeMadeIsNamedWithItsError) {
    std::ofstream(folder() / "file") << "no folder";
    std::filesystem::create_symlink(folder() / "nowhere" / "else", folder() / "dangling");
    for (const auto* name : {"file", "file/data", "dangling"}) {
        try {
            open({.file = folder() / name / "Primary.store"});
            ADD_FAILURE() << name;
        } catch (const store::StoreError& error) {
            EXPECT_EQ(error.which(), StoreErrorCase::noFolder) << name;
            EXPECT_THAT(error.errorDescription(),
                        testing::AllOf(testing::HasSubstr((folder() / name).string() + ": "),
                                       testing::Not(testing::EndsWith(": )"))));
        }
    }
    ::chmod(folder().c_str(), 0555);
    EXPECT_EQ(asNobody([&] {
                  return refusal({.file = folder() / "new" / "Primary.store"}) ==
                                 StoreErrorCase::noFolder
                             ? 0
                             : 1;
              }),
              0);
    ::chmod(folder().c_str(), 0755);
}

TEST_F(StoreFileTest, AStoreWhoseFileIsGoneIsNotStartedAnew) {
    makeStore();
    std::filesystem::rename(storeFile(), folder() / "elsewhere");
    EXPECT_EQ(refusal(), StoreErrorCase::incomplete);
    removeJournal();
    EXPECT_EQ(refusal(), StoreErrorCase::incomplete) << "the lock file knows";
    EXPECT_FALSE(std::filesystem::exists(storeFile()));
    std::filesystem::rename(folder() / "elsewhere", storeFile());
    const auto container = open();
    EXPECT_EQ(ModelContext(*container).count<Board>(), 1U);
}

TEST_F(StoreFileTest, WhatAnInterruptedCreationLeftIsRemoved) {
    write(folder() / ".Primary.store.new-1234", "half a store");
    write(folder() / ".Primary.store.new-1234-journal", "its journal");
    write(folder() / "unrelated", "stays");
    open();
    EXPECT_FALSE(std::filesystem::exists(folder() / ".Primary.store.new-1234"));
    EXPECT_FALSE(std::filesystem::exists(folder() / ".Primary.store.new-1234-journal"));
    EXPECT_TRUE(std::filesystem::exists(folder() / "unrelated"));
}

TEST_F(StoreFileTest, WhereAReplacementFailsTheStoreKeepsItsJournals) {
    makeStore();
    const store::StoreFile file(storeFile());
    write(journalFile(), "one");
    write(storeFile().string() + "-journal", "the other");
    const auto kept = folder() / "Primary.store.damaged-here";
    std::filesystem::create_directories(kept.string() + "-journal"); // nothing can be moved there
    EXPECT_THROW(file.replaceBy([](const auto& staging) { std::ofstream(staging) << "new"; }, kept),
                 store::StoreError);
    EXPECT_EQ(file.journalSize(), 3U);
    EXPECT_EQ(std::filesystem::file_size(storeFile().string() + "-journal"), 9U);
    EXPECT_FALSE(std::filesystem::exists(kept.string() + "-wal"));
}

TEST_F(StoreFileTest, AReadOnlyConfigurationReadsAndNeverWrites) {
    makeStore();
    const auto container = open({.allowsSave = false});
    ModelContext context(*container);
    ASSERT_EQ(context.fetch<Board>().size(), 1U);
    context.fetch<Board>()[0]->setName("Other");
    try {
        context.save();
        FAIL() << "saved into a store opened for reading";
    } catch (const store::StoreError& error) {
        EXPECT_EQ(error.which(), StoreErrorCase::readOnly);
    }
    EXPECT_TRUE(context.hasChanges());
    context.rollback();
    EXPECT_EQ(context.fetch<Board>()[0]->name(), "Home");
}

TEST_F(StoreFileTest, AReadOnlyFolderOpensForReadingAndAnUnreadableOneIsRefused) {
    makeStore();
    removeJournal();
    std::filesystem::remove(folder() / "Primary.store.lock");
    ::chmod(storeFile().c_str(), 0444);
    ::chmod(folder().c_str(), 0555);
    EXPECT_EQ(asNobody([&] {
                  const auto container = open();
                  ModelContext context(*container);
                  return container->allowsSave() ? 1 : context.count<Board>() == 1 ? 0 : 2;
              }),
              0);
    ::chmod(storeFile().c_str(), 0000);
    EXPECT_EQ(asNobody([&] { return refusal() == StoreErrorCase::unreadable ? 0 : 1; }), 0);
    ::chmod(storeFile().c_str(), 0644);
    ::chmod(folder().c_str(), 0000);
    EXPECT_EQ(asNobody([&] { return refusal() == StoreErrorCase::unreadable ? 0 : 1; }), 0);
    ::chmod(folder().c_str(), 0755);
}

TEST_F(StoreFileTest, AFolderThatVanishesMidRunTakesNoAcknowledgedChange) {
    const auto container = open();
    ModelContext context(*container);
    addBoard(context, "Home");
    context.save();
    for (const auto& each : std::filesystem::directory_iterator(folder())) {
        std::filesystem::remove(each.path());
    }
    addBoard(context, "Work");
    EXPECT_THROW(context.save(), store::StoreError);
    EXPECT_TRUE(context.hasChanges());
}

} // namespace korvex::tests
