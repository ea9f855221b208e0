#include "app/FileUserDefaults.h"

#include "app/SettingsFile.h"
#include "support/ScopedEnvironment.h"

#include <gtest/gtest.h>

#include <limits>
#include <thread>

namespace korvex::app {
namespace {

namespace fs = std::filesystem;
using tests::ScopedEnvironment;
using tests::SettingsFile;

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
    for (const auto& contents :
         {std::string("{\"fontSize\": 16"), std::string("[1, 2]"), std::string("16"),
          std::string("{\"fontSize\": 16} trailing"), std::string("{\"\xFF\": 1}"),
          std::string(200'000, '['), std::string("\0\0\0", 3)}) {
        const SettingsFile file(contents);
        auto defaults = file.open();
        EXPECT_FALSE(defaults.integer("fontSize")) << contents.substr(0, 40);
        defaults.setInteger("fontSize", 18);
        EXPECT_EQ(file.open().integer("fontSize"), 18) << contents.substr(0, 40);
        std::ifstream kept(file.path().string() + ".damaged", std::ios::binary);
        EXPECT_EQ(std::string(std::istreambuf_iterator<char>(kept), {}), contents);
    }
}

TEST(FileUserDefaults, HoldsWhatCannotBeWritten) {
    const SettingsFile file("in the way");
    FileUserDefaults defaults(file.path() / "settings.json");
    defaults.setInteger("fontSize", 18);
    EXPECT_EQ(defaults.integer("fontSize"), 18);
    defaults.setInteger("fontSize", 20);
    EXPECT_EQ(defaults.integer("fontSize"), 20);
    EXPECT_EQ(file.contents(), "in the way");

    const SettingsFile folder;
    fs::create_directories(folder.path() / "in its place");
    auto others = folder.open();
    others.setInteger("fontSize", 18);
    others.setInteger("later", 1);
    others.refresh();
    EXPECT_EQ(others.integer("fontSize"), 18);
    fs::remove_all(folder.path());
    folder.write(R"({"fontSize": 12, "theirs": 2})");
    others.refresh();
    EXPECT_EQ(others.integer("fontSize"), 18);
    EXPECT_EQ(others.integer("theirs"), 2);
    others.setInteger("later", 3);
    EXPECT_EQ(folder.open().integer("fontSize"), 18) << "written with the next that can be";
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
