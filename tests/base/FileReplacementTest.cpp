#include "base/FileReplacement.h"

#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <fstream>
#include <iterator>
#include <string>

namespace korvex::base {
namespace {

namespace fs = std::filesystem;

std::string contents(const fs::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

std::size_t fileCount(const fs::path& folder) {
    return static_cast<std::size_t>(
        std::distance(fs::directory_iterator(folder), fs::directory_iterator()));
}

TEST(FileReplacement, GivesAFileNewContentsAndItsOldPermissions) {
    const tests::TemporaryFolder folder;
    const auto file = folder / "new" / "settings.json";
    ASSERT_FALSE(replaceFile(file, "first"));
    EXPECT_EQ(contents(file), "first");
    fs::permissions(file, fs::perms(0640));

    const std::string large(1'000'000, 'x');
    ASSERT_FALSE(replaceFile(file, large));
    EXPECT_EQ(contents(file), large);
    EXPECT_EQ(fs::status(file).permissions(), fs::perms(0640));
    EXPECT_EQ(fileCount(file.parent_path()), 1U);
}

TEST(FileReplacement, ReplacesWhatASymbolicLinkLeadsTo) {
    const tests::TemporaryFolder folder;
    fs::create_directories(folder / "dotfiles");
    for (const char* before : {"old", ""}) {
        const auto target = folder / "dotfiles" / "settings.json";
        const auto link = folder / "settings.json";
        fs::remove(target);
        fs::remove(link);
        if (*before != '\0') {
            std::ofstream(target) << before;
        }
        fs::create_symlink("dotfiles/settings.json", link);
        ASSERT_FALSE(replaceFile(link, "new"));
        EXPECT_TRUE(fs::is_symlink(link));
        EXPECT_EQ(contents(target), "new");
    }
}

TEST(FileReplacement, LeavesNothingBehindWhereItFails) {
    const tests::TemporaryFolder folder;
    const auto inTheWay = folder / "settings.json";
    fs::create_directories(inTheWay / "full");
    EXPECT_TRUE(replaceFile(inTheWay, "new"));
    EXPECT_EQ(fileCount(folder.path()), 1U);

    std::ofstream(folder / "file") << "kept";
    EXPECT_TRUE(replaceFile(folder / "file" / "settings.json", "new"));
    EXPECT_EQ(contents(folder / "file"), "kept");

    fs::create_symlink("loop", folder / "loop");
    EXPECT_TRUE(replaceFile(folder / "loop", "new"));
    EXPECT_TRUE(fs::is_symlink(folder / "loop"));
}

TEST(FileReplacement, RemovesWhatAKilledProgramLeftAndNothingElse) {
    const tests::TemporaryFolder folder;
    const auto file = folder / "settings.json";
    std::ofstream(folder / ".settings.json.new-abcdef") << "left behind";
    std::ofstream(folder / ".settings.json.new-a-user's") << "not ours";
    ASSERT_EQ(::mkfifo((folder / ".settings.json.new-a_pipe").c_str(), 0600), 0);
    StagedFile running;
    ASSERT_FALSE(running.open(file));
    ASSERT_FALSE(running.write("slow"));
    ASSERT_FALSE(replaceFile(file, "quick"));
    EXPECT_EQ(fileCount(folder.path()), 4U);
    EXPECT_FALSE(fs::exists(folder / ".settings.json.new-abcdef"));
    ASSERT_FALSE(running.commit());
    EXPECT_EQ(contents(file), "slow");
    EXPECT_EQ(fileCount(folder.path()), 3U);
}

TEST(FileReplacement, KeepsWhatItIsToKeepAndMakesNoFolderThatItIsNotToMake) {
    const tests::TemporaryFolder folder;
    const auto file = folder / "mine";
    for (const auto comes : {true, false}) {
        fs::remove(file);
        StagedFile staged;
        ASSERT_FALSE(staged.open(file, std::nullopt));
        ASSERT_FALSE(staged.write("new"));
        if (comes) {
            std::ofstream(file) << "came meanwhile";
        }
        EXPECT_EQ(staged.commit(StagedFile::Existing::keep) == std::errc::file_exists, comes);
        EXPECT_EQ(contents(file), comes ? "came meanwhile" : "new");
    }
    StagedFile staged;
    EXPECT_EQ(staged.open(folder / "none" / "file", std::nullopt),
              std::errc::no_such_file_or_directory);
    EXPECT_EQ(fileCount(folder.path()), 1U);
    EXPECT_FALSE(keepUnder(file, folder / "former"));
    EXPECT_EQ(keepUnder(file, folder / "former"), std::errc::file_exists);
    EXPECT_EQ(fileCount(folder.path()), 2U);
}

} // namespace
} // namespace korvex::base
