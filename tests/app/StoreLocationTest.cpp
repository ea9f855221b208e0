#include "app/StoreLocation.h"

#include "support/ScopedEnvironment.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <fstream>

namespace korvex::app {
namespace {

namespace fs = std::filesystem;
using tests::ScopedEnvironment;

TEST(StoreLocation, IsTheGivenFolderElseTheUsersData) {
    const tests::TemporaryFolder folder;
    const auto root = fs::canonical(folder.path());
    const ScopedEnvironment home("HOME", root / "home");
    struct Case {
        std::optional<fs::path> given;
        std::optional<std::string> variable;
        fs::path expected;
    };
    for (const auto& each : {
             Case{root / "given", root / "data", root / "given"},
             Case{std::nullopt, root / "data", root / "data" / "korvex"},
             Case{std::nullopt, std::nullopt, root / "home" / ".local" / "share" / "korvex"},
             Case{std::nullopt, "", root / "home" / ".local" / "share" / "korvex"},
             Case{std::nullopt, "data", root / "home" / ".local" / "share" / "korvex"},
         }) {
        const ScopedEnvironment data("XDG_DATA_HOME", each.variable);
        EXPECT_EQ(dataDirectory(each.given), each.expected);
    }
    EXPECT_TRUE(fs::is_empty(root)) << "asking creates nothing";
}

TEST(StoreLocation, AStoreThatIsGoneIsMissedWhereDraftsAreLeft) {
    const tests::TemporaryFolder folder;
    EXPECT_FALSE(missingStoreNotice(folder.path()));
    fs::create_directories(folder / "Drafts");
    std::ofstream(folder / "Drafts" / "a.lock") << "no words";
    EXPECT_FALSE(missingStoreNotice(folder.path()));
    std::ofstream(folder / "Drafts" / "a.draft") << "words";
    EXPECT_TRUE(missingStoreNotice(folder.path()));
    std::ofstream(storeFile(folder.path())) << "there";
    EXPECT_FALSE(missingStoreNotice(folder.path()));
}

TEST(StoreLocation, WhatIsPlannedOfAStoreIsKeptApartFromThatOfOthersWhicheverWayLeadsThere) {
    const tests::TemporaryFolder folder;
    const auto root = fs::canonical(folder.path());
    const ScopedEnvironment home("HOME", root / "home");
    const auto usual = root / "home" / ".local" / "share";
    fs::create_directories(usual / "korvex");
    fs::create_directory_symlink(usual, root / "link");
    const auto fileWith = [&](const std::optional<std::string>& variable) {
        const ScopedEnvironment data("XDG_DATA_HOME", variable);
        return reminderFile("/state", dataDirectory(std::nullopt)).string();
    };
    EXPECT_EQ(fileWith(std::nullopt), "/state/korvex/reminders.sqlite");
    EXPECT_EQ(fileWith(usual), fileWith(std::nullopt));
    EXPECT_EQ(fileWith(root / "link"), fileWith(std::nullopt));
    EXPECT_NE(fileWith(root / "other"), fileWith(std::nullopt));
    EXPECT_NE(fileWith(root / "other"), fileWith(root / "another"));
}

TEST(StoreLocation, OneFolderHasOneName) {
    const tests::TemporaryFolder folder;
    const auto root = fs::canonical(folder.path());
    fs::create_directories(root / "real" / "inner");
    fs::create_directory_symlink("real", root / "link");
    for (const auto& given :
         {root / "real", root / "link", root / "real" / "inner" / "..", root / "." / "real",
          fs::relative(root / "real"), root / "link" / "inner" / ".."}) {
        EXPECT_EQ(storeFile(dataDirectory(given)), root / "real" / "Primary.store") << given;
    }
    EXPECT_EQ(dataDirectory("not there/yet"), fs::current_path() / "not there" / "yet");
}

} // namespace
} // namespace korvex::app
