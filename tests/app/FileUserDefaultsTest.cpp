#include "app/FileUserDefaults.h"

#include "app/SettingsFile.h"
#include "app/SettingsWriter.h"
#include "base/FileLock.h"
#include "support/FakeRunLoop.h"
#include "support/RecordingLog.h"
#include "support/ScopedEnvironment.h"

#include <gmock/gmock.h>

#include <cctype>
#include <cmath>
#include <limits>
#include <set>
#include <thread>
#include <tuple>
#include <vector>

namespace korvex::app {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;
using tests::ScopedEnvironment;
using tests::SettingsFile;

/// An object of so many levels.
std::string nested(std::size_t levels) {
    return "{\"deep\":" + std::string(levels - 1, '[') + std::string(levels - 1, ']') + "}";
}

TEST(FileUserDefaults, KeepsEachTypeOfSetting) {
    const SettingsFile file;
    base::Bytes bytes(256);
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        bytes[i] = static_cast<std::uint8_t>(i);
    }
    {
        auto defaults = file.open();
        defaults.setString("text", "a \"quoted\" ö \U0001F600\n");
        defaults.setString("empty", "");
        defaults.setInteger("least", std::numeric_limits<std::int64_t>::min());
        defaults.setInteger("most", std::numeric_limits<std::int64_t>::max());
        defaults.setReal("real", 800000000.123456789);
        defaults.setBoolean("no", false);
        defaults.setBytes("bytes", bytes);
        defaults.setBytes("none", {});
    }
    const auto defaults = file.open();
    EXPECT_EQ(defaults.string("text"), "a \"quoted\" ö \U0001F600\n");
    EXPECT_EQ(defaults.string("empty"), "");
    EXPECT_EQ(defaults.integer("least"), std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(defaults.integer("most"), std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(defaults.real("real"), 800000000.123456789);
    EXPECT_EQ(defaults.real("least"), -0x1p63);
    EXPECT_EQ(defaults.boolean("no"), false);
    EXPECT_EQ(defaults.bytes("bytes"), bytes);
    EXPECT_EQ(defaults.bytes("none"), base::Bytes());
}

TEST(FileUserDefaults, ReadsNothingUnderAnotherType) {
    const SettingsFile file(
        R"({"text": "1", "number": 1, "real": 1.5, "flag": true, "null": null, "list": [],
            "bytes": {"base64": "AQ=="}, "bad": {"base64": "A"}, "large": 9223372036854775808})");
    const auto defaults = file.open();
    for (const char* key :
         {"text", "number", "real", "flag", "null", "list", "bytes", "bad", "large", "missing"}) {
        const std::string_view name = key;
        EXPECT_EQ(defaults.string(name).has_value(), name == "text") << name;
        EXPECT_EQ(defaults.integer(name).has_value(), name == "number") << name;
        EXPECT_EQ(defaults.real(name).has_value(),
                  name == "number" || name == "real" || name == "large")
            << name;
        EXPECT_EQ(defaults.boolean(name).has_value(), name == "flag") << name;
        EXPECT_EQ(defaults.bytes(name).has_value(), name == "bytes") << name;
    }
}

TEST(FileUserDefaults, LeavesWhatItDoesNotChange) {
    const SettingsFile file(R"({"later": {"deep": [1, 2.5, null, "ö"]}, "fontSize": 13})");
    auto defaults = file.open();
    defaults.setInteger("fontSize", 16);
    defaults.setBoolean("new", true);
    defaults.remove("missing");
    EXPECT_EQ(file.contents(), R"({
    "later": {
        "deep": [
            1,
            2.5,
            null,
            "ö"
        ]
    },
    "fontSize": 16,
    "new": true
}
)");
    defaults.remove("later");
    defaults.remove("fontSize");
    EXPECT_EQ(file.contents(), "{\n    \"new\": true\n}\n");

    const std::string twice = R"({"a":1,"twice":1,"b":2,"twice":2,"c":3})";
    for (const auto& [change, left] :
         std::initializer_list<std::pair<std::function<void()>, std::string>>{
             {[&] { defaults.remove("a"); }, R"({"twice":1,"b":2,"twice":2,"c":3})"},
             {[&] { defaults.setInteger("twice", 3); }, R"({"a":1,"twice":3,"b":2,"c":3})"},
             {[&] { defaults.remove("twice"); }, R"({"a":1,"b":2,"c":3})"}}) {
        file.write(twice);
        change();
        auto contents = file.contents();
        std::erase_if(contents, [](unsigned char each) { return std::isspace(each) != 0; });
        EXPECT_EQ(contents, left);
    }
}

TEST(FileUserDefaults, TakesInWhatAnotherProgramWroteMeanwhile) {
    const SettingsFile file;
    auto mine = file.open();
    auto theirs = file.open();
    mine.setInteger("mine", 1);
    theirs.setInteger("theirs", 2);
    mine.setInteger("mine", 3);
    const auto both = file.open();
    EXPECT_EQ(both.integer("mine"), 3);
    EXPECT_EQ(both.integer("theirs"), 2);
    EXPECT_EQ(theirs.integer("mine"), 1);
    theirs.refresh();
    EXPECT_EQ(theirs.integer("mine"), 3);
}

TEST(FileUserDefaults, ManyWhoWriteAtOnceLoseNothing) {
    const SettingsFile file;
    constexpr int kWriters = 4;
    constexpr int kSettings = 8;
    std::vector<std::string> settled(kWriters);
    {
        std::vector<std::jthread> writers;
        for (int writer = 0; writer < kWriters; ++writer) {
            writers.emplace_back([&file, &settled, writer] {
                auto mine = file.open();
                const auto name = std::to_string(writer);
                settled[static_cast<std::size_t>(writer)] = mine.settle(
                    "id", [](std::string_view) { return true; }, name);
                for (int i = 0; i < kSettings; ++i) {
                    mine.setInteger(name + "." + std::to_string(i), i);
                }
            });
        }
    }
    const auto all = file.open();
    for (int writer = 0; writer < kWriters; ++writer) {
        EXPECT_EQ(settled[static_cast<std::size_t>(writer)], all.string("id"));
        for (int i = 0; i < kSettings; ++i) {
            EXPECT_EQ(all.integer(std::to_string(writer) + "." + std::to_string(i)), i);
        }
    }
}

TEST(FileUserDefaults, WritesOnlyWhatChanges) {
    const SettingsFile file;
    auto defaults = file.open();
    defaults.setString("appearance", "dark");
    const auto longAgo = fs::last_write_time(file.path()) - std::chrono::hours(1);
    fs::last_write_time(file.path(), longAgo);
    defaults.setString("appearance", "dark");
    EXPECT_EQ(fs::last_write_time(file.path()), longAgo);
    defaults.setString("appearance", "light");
    EXPECT_NE(fs::last_write_time(file.path()), longAgo);
}

TEST(FileUserDefaults, ReadsADamagedFileAsNoSettings) {
    const SettingsFile file;
    tests::RecordingLog log;
    std::set<std::string> all;
    for (const auto& contents :
         {std::string("{\"fontSize\": 16"), std::string("[1, 2]"), std::string("16"),
          std::string("{\"fontSize\": 16} trailing"), std::string("{\"\xFF\": 1}"),
          std::string(200'000, '['), nested(500'000), nested(65), std::string("\0\0\0", 3)}) {
        file.write(contents);
        all.insert(contents);
        FileUserDefaults defaults(file.path(), &log);
        EXPECT_FALSE(defaults.integer("fontSize")) << contents.substr(0, 40);
        defaults.setInteger("fontSize", 18);
        EXPECT_EQ(file.open().integer("fontSize"), 18) << contents.substr(0, 40);
    }
    std::set<std::string> kept;
    for (const auto& each : fs::directory_iterator(file.path().parent_path())) {
        if (each.path().native().find(".damaged-") != std::string::npos) {
            std::ifstream stream(each.path(), std::ios::binary);
            kept.insert(std::string(std::istreambuf_iterator<char>(stream), {}));
        }
    }
    EXPECT_EQ(kept, all) << "a later one takes no place of an earlier one";
    EXPECT_EQ(log.lines().size(), all.size());
    file.write(nested(64));
    EXPECT_TRUE(file.open().contains("deep"));
}

TEST(FileUserDefaults, HoldsWhatCannotBeWrittenUntilAnotherProgramSetsTheSame) {
    const SettingsFile folder;
    fs::create_directories(folder.path() / "in its place");
    tests::RecordingLog log;
    FileUserDefaults defaults(folder.path(), &log);
    EXPECT_TRUE(defaults.isKept());
    for (const int size : {18, 20}) {
        defaults.setInteger("fontSize", size);
        EXPECT_EQ(defaults.integer("fontSize"), size);
    }
    defaults.setInteger("later", 1);
    defaults.refresh();
    EXPECT_EQ(defaults.integer("fontSize"), 20);
    EXPECT_FALSE(defaults.isKept());
    EXPECT_EQ(log.lines().size(), 1U) << "said once";

    fs::remove_all(folder.path());
    folder.write(R"({"fontSize": 12, "theirs": 2})");
    defaults.refresh();
    EXPECT_EQ(defaults.integer("fontSize"), 12) << "their choice is the newer one";
    EXPECT_EQ(defaults.integer("theirs"), 2);
    EXPECT_EQ(folder.open().integer("later"), 1) << "tried again as soon as the file is another";
    EXPECT_TRUE(defaults.isKept());
    defaults.setInteger("fontSize", 14);
    EXPECT_EQ(folder.open().integer("fontSize"), 14);
}

TEST(FileUserDefaults, WritesNothingWhileSomebodyElseHasTheLock) {
    const SettingsFile file(R"({"fontSize": 12})");
    tests::RecordingLog log;
    tests::FakeRunLoop loop;
    std::vector<std::chrono::milliseconds::rep> patience;
    std::optional<FileUserDefaults> defaults(
        std::in_place, file.path(), &log, [&](const fs::path& path, auto itsPatience) {
            patience.push_back(itsPatience.count());
            return FileUserDefaults::lock(path, std::chrono::milliseconds::zero());
        });
    std::optional<SettingsWriter> writer(std::in_place, *defaults, loop);
    std::optional<base::FileLock> theirs;
    const auto lock = [&] {
        theirs.emplace(file.path().string() + ".lock", std::chrono::seconds(1));
        ASSERT_EQ(theirs->state(), base::FileLock::State::held);
    };
    lock();
    defaults->setInteger("fontSize", 18);
    defaults->setString("appearance", "dark");
    defaults->replaceString("appearance", "dark", "light");
    defaults->settle(
        "id", [](std::string_view) { return true; }, "mine");
    EXPECT_THAT(patience, ::testing::Each(0)) << "a window waits for nobody";
    EXPECT_TRUE(defaults->isKept()) << "it will be, in a moment";
    std::vector<long> tenths;
    for (int i = 0; i < 16; ++i) {
        tenths.push_back(std::lround(10 * loop.delays().at(0)));
        loop.advanceToNextTimer();
    }
    EXPECT_THAT(tenths,
                ElementsAre(2, 2, 2, 2, 2, 2, 10, 20, 40, 80, 160, 320, 600, 600, 600, 600));
    EXPECT_THAT(patience, ::testing::Each(0)) << "nobody has asked for anything";
    EXPECT_EQ(file.contents(), R"({"fontSize": 12})");
    EXPECT_EQ(defaults->integer("fontSize"), 18);
    EXPECT_FALSE(defaults->isKept()) << "somebody hangs";
    file.write(R"({"fontSize": 13})");
    theirs.reset();
    loop.advance(60);
    EXPECT_TRUE(defaults->isKept());
    EXPECT_EQ(file.open().integer("fontSize"), 13) << "what they wrote is newer";
    EXPECT_EQ(file.open().string("appearance"), "light");
    EXPECT_EQ(file.open().string("id"), "mine");
    EXPECT_EQ(defaults->integer("fontSize"), 13);
    EXPECT_TRUE(loop.delays().empty());

    lock();
    defaults->setInteger("fontSize", 20);
    loop.advance(1.7);
    file.write(R"({"fontSize": 20})");
    defaults->refresh();
    EXPECT_TRUE(loop.delays().empty()) << "they have set the same";
    defaults->setInteger("fontSize", 22);
    EXPECT_TRUE(defaults->isKept()) << "the first time";
    patience.clear();
    writer.reset();
    defaults.reset();
    EXPECT_THAT(patience, ElementsAre(0, 2000)) << "the end waits once";
    EXPECT_EQ(log.lines().size(), 2U) << "and tells what it could not keep";
}

TEST(FileUserDefaults, WritesWhatMayWaitAfterAPauseWithOthersAndAtTheEnd) {
    const SettingsFile file("{}");
    tests::FakeRunLoop loop;
    auto defaults = file.open();
    defaults.mayWait("place");
    defaults.setInteger("place", 1);
    const auto written = [&] { return file.open().integer("place"); };
    EXPECT_EQ(written(), 1) << "nobody would write it later";
    {
        const SettingsWriter writer(defaults, loop);
        const auto moveFor = [&](int steps, int place) {
            for (int i = 0; i < steps; ++i) {
                defaults.setInteger("place", place + i);
                EXPECT_EQ(defaults.integer("place"), place + i);
                loop.advance(0.9);
                defaults.refresh();
            }
        };
        moveFor(3, 2);
        EXPECT_EQ(written(), 1);
        loop.advance(0.2);
        EXPECT_EQ(written(), 4);
        moveFor(5, 10);
        EXPECT_EQ(written(), 4);
        moveFor(1, 15);
        EXPECT_EQ(written(), 15) << "who never pauses loses no more than five seconds";
        moveFor(5, 20);
        EXPECT_EQ(written(), 15) << "which begin anew";
        defaults.setInteger("place", 5);
        defaults.setInteger("fontSize", 16);
        EXPECT_EQ(written(), 5) << "with what must not wait";
        defaults.setInteger("place", 6);
    }
    EXPECT_EQ(written(), 6);
}

TEST(FileUserDefaults, ReplacesOnlyWhatItExpects) {
    using Text = std::optional<std::string>;
    for (const auto& [held, expected, wanted, isReplaced] :
         std::initializer_list<std::tuple<std::string, Text, Text, bool>>{
             {R"("a")", "a", "b", true},
             {R"("a")", "b", "c", false},
             {R"("a")", "a", std::nullopt, true},
             {R"("a")", std::nullopt, "b", false},
             {"7", std::nullopt, "b", true}}) {
        const SettingsFile file(R"({"key": "what it read first"})");
        auto defaults = file.open();
        file.write("{\"key\": " + held + "}");
        defaults.replaceString("key", expected, wanted);
        EXPECT_EQ(file.open().string("key"), isReplaced ? wanted : Text("a")) << held;
    }
}

TEST(FileUserDefaults, TellsAWholeNumberFromOthers) {
    const SettingsFile file(R"({"fontSize": 16.0})");
    auto defaults = file.open();
    EXPECT_FALSE(defaults.integer("fontSize"));
    defaults.setInteger("fontSize", 16);
    EXPECT_EQ(file.open().integer("fontSize"), 16);
    file.write("{\"large\": \"" + std::string(1024 * 1024, 'a') + "\"}");
    EXPECT_FALSE(file.open().string("large")) << "no settings are as large";
}

TEST(FileUserDefaults, MakesItsFolderForTheUserAlone) {
    const tests::TemporaryFolder folder;
    FileUserDefaults defaults(folder / "config" / "korvex" / "settings.json");
    defaults.setInteger("fontSize", 18);
    for (const auto* const made : {"config", "config/korvex"}) {
        EXPECT_EQ(fs::status(folder / made).permissions(), fs::perms::owner_all);
    }
}

TEST(FileUserDefaults, LiesInTheUsersConfiguration) {
    const ScopedEnvironment home("HOME", "/somewhere");
    for (const auto& [variable, folder] :
         {std::pair{std::optional<std::string>(), "/somewhere/.config"},
          std::pair{std::optional<std::string>(""), "/somewhere/.config"},
          std::pair{std::optional<std::string>("relative"), "/somewhere/.config"},
          std::pair{std::optional<std::string>("/config"), "/config"}}) {
        const ScopedEnvironment config("XDG_CONFIG_HOME", variable);
        EXPECT_EQ(FileUserDefaults::defaultFile(), fs::path(folder) / "korvex" / "settings.json");
    }
}

} // namespace
} // namespace korvex::app
