#include "app/AppPreferences.h"

#include "app/SettingsFile.h"
#include "support/RecordingLog.h"

#include <gtest/gtest.h>

namespace korvex::app {
namespace {

using tests::SettingsFile;
using Appearance = AppPreferences::Appearance;
using BoardSpacing = AppPreferences::BoardSpacing;

TEST(AppPreferences, ReadsStoredValuesAndRepairsMalformedOnes) {
    struct Case {
        const char* json;
        Appearance appearance = Appearance::system;
        int fontSize = 13;
        BoardSpacing spacing = BoardSpacing::compact;
        int reminderMinutes = 540;
    };
    for (const auto& each : {
             Case{.json = "{}"},
             Case{.json = R"({"appearance": "dark"})", .appearance = Appearance::dark},
             Case{.json = R"({"appearance": "light"})", .appearance = Appearance::light},
             Case{.json = R"({"appearance": "Dark"})"},
             Case{.json = R"({"appearance": 1})"},
             Case{.json = R"({"fontSize": 10})", .fontSize = 10},
             Case{.json = R"({"fontSize": 24})", .fontSize = 24},
             Case{.json = R"({"fontSize": 17})"},
             Case{.json = R"({"fontSize": 9})"},
             Case{.json = R"({"fontSize": 4294967312})"}, // 16 more than 32 bits hold
             Case{.json = R"({"fontSize": "16"})"},
             Case{.json = R"({"boardSpacing": "comfortable"})",
             .spacing = BoardSpacing::comfortable},
             Case{.json = R"({"boardSpacing": "wide"})"},
             Case{.json = R"({"defaultReminderMinutes": 0})", .reminderMinutes = 0},
             Case{.json = R"({"defaultReminderMinutes": 1439})", .reminderMinutes = 1439},
             Case{.json = R"({"defaultReminderMinutes": 1440})"},
             Case{.json = R"({"defaultReminderMinutes": -5})"},
             Case{.json = R"({"defaultReminderMinutes": "600"})"},
         }) {
        const SettingsFile file(each.json);
        tests::RecordingLog log;
        auto defaults = file.open();
        const AppPreferences preferences(defaults, log);
        EXPECT_EQ(preferences.appearance(), each.appearance) << each.json;
        EXPECT_EQ(preferences.fontSize(), each.fontSize) << each.json;
        EXPECT_EQ(preferences.boardSpacing(), each.spacing) << each.json;
        EXPECT_EQ(preferences.defaultReminderMinutes(), each.reminderMinutes) << each.json;
        EXPECT_EQ(preferences.mainBoardSelectedBoardID(), std::nullopt) << each.json;
        EXPECT_TRUE(log.lines().empty()) << each.json;
        EXPECT_EQ(file.contents(), each.json) << "reading writes nothing";
    }
}

TEST(AppPreferences, RemovesAMalformedBoardAndSaysSo) {
    const SettingsFile file(R"({"mainBoardSelectedBoardID": "no board", "kept": 1})");
    tests::RecordingLog log;
    auto defaults = file.open();
    EXPECT_EQ(AppPreferences(defaults, log).mainBoardSelectedBoardID(), std::nullopt);
    EXPECT_FALSE(file.open().string("mainBoardSelectedBoardID"));
    EXPECT_EQ(file.open().integer("kept"), 1);
    EXPECT_EQ(log.count("Removed malformed board preference: mainBoardSelectedBoardID"), 1U);
}

TEST(AppPreferences, WritesWhatIsSetAtOnce) {
    const SettingsFile file(R"({"fontSize": 17})");
    tests::RecordingLog log;
    auto defaults = file.open();
    AppPreferences preferences(defaults, log);
    int changes = 0;
    const auto subscription = preferences.didChange().connect([&] { ++changes; });
    const auto board = base::Uuid::random();

    preferences.setAppearance(Appearance::dark);
    preferences.setBoardSpacing(BoardSpacing::comfortable);
    EXPECT_EQ(changes, 2);
    // The size is what it was read as, but the file still holds what could not be read.
    preferences.setFontSize(13);
    preferences.setMainBoardSelectedBoardID(board);
    EXPECT_EQ(changes, 2);
    EXPECT_EQ(file.open().integer("fontSize"), 13);

    auto later = file.open();
    const AppPreferences reread(later, log);
    EXPECT_EQ(reread.appearance(), Appearance::dark);
    EXPECT_EQ(reread.boardSpacing(), BoardSpacing::comfortable);
    EXPECT_EQ(reread.mainBoardSelectedBoardID(), board);

    preferences.setMainBoardSelectedBoardID(std::nullopt);
    EXPECT_FALSE(file.open().string("mainBoardSelectedBoardID"));
}

} // namespace
} // namespace korvex::app
