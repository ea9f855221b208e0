#include "app/AppPreferences.h"

#include "app/SettingsFile.h"
#include "base/Base64.h"
#include "support/RecordingLog.h"

#include <gmock/gmock.h>

#include <array>
#include <functional>
#include <initializer_list>
#include <tuple>
#include <utility>
#include <vector>

namespace korvex::app {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;
using tests::SettingsFile;
using Appearance = AppPreferences::Appearance;
using BoardSpacing = AppPreferences::BoardSpacing;
using LaunchDestination = AppPreferences::LaunchDestination;
using Property = AppPreferences::Property;

constexpr const char* kID = "6F1C0D4E-0000-4000-8000-000000000001";

/// The JSON of a file with one setting, and with the identifier that every file gets.
std::string settings(const std::string& one) {
    return "{" + one + (one.empty() ? "" : ", ") + R"("automaticBackupID": ")" + kID + "\"}";
}

/// {"keyCode":1,"modifiers":256} and so on, as settings keep bytes.
std::string shortcut(const std::string& json) {
    return R"("quickEntryShortcut": {"base64": ")" +
           base::base64(base::Bytes(json.begin(), json.end())) + "\"}";
}

/// What all settings are, but for the identifier, in the order in which they are read.
auto valuesOf(const AppPreferences& preferences) {
    const auto& p = preferences;
    return std::tuple(p.appearance(), p.fontSize(), p.launchDestination(), p.launchBoardID(),
                      p.defaultReminderMinutes(), p.boardSpacing(), p.automaticBackupEnabled(),
                      p.automaticBackupBookmark(), p.automaticBackupLastSuccess(),
                      p.automaticBackupRetention(), p.defaultBoardID(), p.quickEntryShortcut(),
                      p.quickEntryDefaultType(), p.quickEntryFixedBoardID(),
                      p.quickEntryDefaultBoardID(), p.mainBoardSelectedBoardID(),
                      p.desktopBoardSelectedBoardID(), p.desktopBoardAlwaysOnTop(),
                      p.desktopBoardShowOnLaunch(), p.showsMenuBarExtra());
}

TEST(AppPreferences, BeginsWithTheDefaults) {
    const SettingsFile file(settings(""));
    tests::RecordingLog log;
    auto defaults = file.open();
    const AppPreferences::BoardID none;
    EXPECT_EQ(valuesOf(AppPreferences(defaults, log)),
              std::tuple(Appearance::system, 13, LaunchDestination::lastBoard, none, 540,
                         BoardSpacing::compact, false, std::optional<base::Bytes>(),
                         std::optional<base::Instant>(), 7, none, QuickEntryShortcut{49, 2048},
                         model::EntryType::todo, none, none, none, none, false, false, true));
    const auto shortcut = QuickEntryShortcut().json();
    EXPECT_EQ(std::string(shortcut.begin(), shortcut.end()), R"({"keyCode":49,"modifiers":2048})");
    std::vector<int> sizes;
    for (int size = 0; size <= 30; ++size) {
        file.write(settings("\"fontSize\": " + std::to_string(size)));
        auto written = file.open();
        const AppPreferences preferences(written, log);
        if (preferences.fontSize() == size) {
            sizes.push_back(size);
        } else {
            EXPECT_EQ(preferences.fontSize(), 13) << size;
        }
    }
    EXPECT_THAT(sizes, ElementsAre(10, 11, 12, 13, 14, 15, 16, 18, 20, 22, 24));
}

TEST(AppPreferences, ReadsStoredValuesAndRepairsMalformedOnes) {
    using Set = std::function<void(AppPreferences&)>;
    const Set theDefault;
    const SettingsFile plain(settings(""));
    for (const auto& [setting, same] : std::initializer_list<std::pair<std::string, Set>>{
             {"", theDefault},
             {R"("appearance": "dark")", [](auto& p) { p.setAppearance(Appearance::dark); }},
             {R"("appearance": "Dark")", theDefault},
             {R"("appearance": 1)", theDefault},
             {R"("fontSize": 24)", [](auto& p) { p.setFontSize(24); }},
             {R"("fontSize": 4294967312)", theDefault}, // 16 more than 32 bits hold
             {R"("fontSize": "16")", theDefault},
             {R"("launchDestination": "upcoming")",
              [](auto& p) { p.setLaunchDestination(LaunchDestination::upcoming); }},
             {R"("launchDestination": "inbox")", theDefault},
             {R"("boardSpacing": "comfortable")",
              [](auto& p) { p.setBoardSpacing(BoardSpacing::comfortable); }},
             {R"("boardSpacing": "wide")", theDefault},
             {R"("defaultReminderMinutes": 0)", [](auto& p) { p.setDefaultReminderMinutes(0); }},
             {R"("defaultReminderMinutes": 1439)",
              [](auto& p) { p.setDefaultReminderMinutes(1439); }},
             {R"("defaultReminderMinutes": 1440)", theDefault},
             {R"("defaultReminderMinutes": -5)", theDefault},
             {R"("defaultReminderMinutes": 600.5)", theDefault},
             {R"("automaticBackupEnabled": true)",
              [](auto& p) { p.setAutomaticBackupEnabled(true); }},
             {R"("automaticBackupEnabled": 1)", theDefault},
             {R"("automaticBackupBookmark": {"base64": "AQI="})",
              [](auto& p) {
                  p.setAutomaticBackupBookmark(base::Bytes{1, 2});
              }},
             {R"("automaticBackupBookmark": "AQI=")", theDefault},
             {R"("automaticBackupLastSuccess": 800000000.25)",
              [](auto& p) { p.setAutomaticBackupLastSuccess(base::Instant{800000000.25}); }},
             {R"("automaticBackupLastSuccess": -7)",
              [](auto& p) { p.setAutomaticBackupLastSuccess(base::Instant{-7}); }},
             {R"("automaticBackupLastSuccess": 1e300)", theDefault},
             {R"("automaticBackupRetention": 30)",
              [](auto& p) { p.setAutomaticBackupRetention(30); }},
             {R"("automaticBackupRetention": 10)", theDefault},
             {R"("automaticBackupRetention": 0)", theDefault},
             {R"("quickEntryDefaultType": "text")",
              [](auto& p) { p.setQuickEntryDefaultType(model::EntryType::text); }},
             {R"("quickEntryDefaultType": "note")", theDefault},
             {shortcut(R"({"modifiers":4352,"keyCode":40,"later":[]})"),
              [](auto& p) {
                  p.setQuickEntryShortcut(
                      {40, QuickEntryShortcut::kControl | QuickEntryShortcut::kCommand});
              }},
             {R"("desktopBoardAlwaysOnTop": true)",
              [](auto& p) { p.setDesktopBoardAlwaysOnTop(true); }},
             {R"("desktopBoardShowOnLaunch": true)",
              [](auto& p) { p.setDesktopBoardShowOnLaunch(true); }},
             {R"("showsMenuBarExtra": false)", [](auto& p) { p.setShowsMenuBarExtra(false); }},
             {R"("showsMenuBarExtra": "no")", theDefault},
         }) {
        const SettingsFile file(settings(setting));
        tests::RecordingLog log;
        auto defaults = file.open();
        const AppPreferences preferences(defaults, log);
        EXPECT_EQ(file.contents(), settings(setting)) << "reading writes nothing";
        EXPECT_TRUE(log.lines().empty()) << setting;
        EXPECT_FALSE(preferences.repairedShortcutPreference()) << setting;

        // What is set is what is read, here and by a later program.
        plain.write(settings(""));
        auto others = plain.open();
        AppPreferences expected(others, log);
        if (same) {
            const auto before = valuesOf(expected);
            same(expected);
            EXPECT_NE(valuesOf(expected), before) << setting;
        }
        EXPECT_EQ(valuesOf(preferences), valuesOf(expected)) << setting;
        auto again = plain.open();
        EXPECT_EQ(valuesOf(AppPreferences(again, log)), valuesOf(expected)) << setting;
    }
}

TEST(AppPreferences, AMalformedShortcutGivesWayToTheDefault) {
    std::vector<std::string> malformed{R"("quickEntryShortcut": {"base64": "A"})",
                                       R"("quickEntryShortcut": "Option + Space")"};
    for (const std::string json :
         {"", "[49, 2048]", R"({"keyCode":49})", R"({"keyCode":-1,"modifiers":256})",
          R"({"keyCode":49,"modifiers":4294967296})", R"({"keyCode":56,"modifiers":2048})",
          R"({"keyCode":"49","modifiers":2048})"}) {
        malformed.push_back(shortcut(json));
    }
    for (const auto& setting : malformed) {
        const SettingsFile file(settings(setting));
        tests::RecordingLog log;
        log.expectError("Malformed Quick Entry shortcut; using default configuration");
        auto defaults = file.open();
        AppPreferences preferences(defaults, log);
        EXPECT_EQ(preferences.quickEntryShortcut(), QuickEntryShortcut()) << setting;
        EXPECT_TRUE(preferences.repairedShortcutPreference()) << setting;
        preferences.reload();
        EXPECT_EQ(log.lines().size(), 1U) << "said once";
    }
}

TEST(AppPreferences, MalformedBoardsAreRemovedAndReplacedBoardsFollowed) {
    struct Board {
        const char* key;
        AppPreferences::BoardID (AppPreferences::*get)() const;
        void (AppPreferences::*set)(AppPreferences::BoardID);
    };
    using P = AppPreferences;
    const auto from = base::Uuid::random();
    const auto to = base::Uuid::random();
    for (const auto& each : {
             Board{"launchBoardID", &P::launchBoardID, &P::setLaunchBoardID},
             Board{"defaultBoardID", &P::defaultBoardID, &P::setDefaultBoardID},
             Board{"quickEntryFixedBoardID", &P::quickEntryFixedBoardID,
                   &P::setQuickEntryFixedBoardID},
             Board{"quickEntryDefaultBoardID", &P::quickEntryDefaultBoardID,
                   &P::setQuickEntryDefaultBoardID},
             Board{"mainBoardSelectedBoardID", &P::mainBoardSelectedBoardID,
                   &P::setMainBoardSelectedBoardID},
             Board{"desktopBoardSelectedBoardID", &P::desktopBoardSelectedBoardID,
                   &P::setDesktopBoardSelectedBoardID},
         }) {
        const std::string key = each.key;
        const SettingsFile file;
        tests::RecordingLog log;
        for (const auto* const malformed : {"\"no board\"", "7", "null"}) {
            file.write(settings("\"" + key + "\": " + malformed + R"(, "kept": 1)"));
            auto read = file.open();
            EXPECT_EQ((AppPreferences(read, log).*each.get)(), std::nullopt) << key;
            EXPECT_FALSE(file.open().contains(key)) << malformed;
            EXPECT_EQ(file.open().integer("kept"), 1);
        }
        EXPECT_EQ(log.count("Removed malformed board preference: " + key), 3U);

        auto defaults = file.open();
        AppPreferences preferences(defaults, log);
        (preferences.*each.set)(from);
        preferences.remapBoard(to, base::Uuid::random());
        EXPECT_EQ(file.open().string(key), from.text());
        const auto theirs = base::Uuid::random();
        auto others = file.open();
        (AppPreferences(others, log).*each.set)(theirs);
        preferences.remapBoard(from, to);
        EXPECT_EQ((preferences.*each.get)(), theirs) << key;
        preferences.remapBoard(theirs, to);
        EXPECT_EQ((preferences.*each.get)(), to) << key;
        EXPECT_EQ(file.open().string(key), to.text());
        (preferences.*each.set)(std::nullopt);
        EXPECT_FALSE(file.open().contains(key)) << key;
    }
}

TEST(AppPreferences, ADefaultBoardThatIsGoneGivesWayToTheInbox) {
    const SettingsFile file;
    tests::RecordingLog log;
    auto defaults = file.open();
    AppPreferences preferences(defaults, log);
    model::Board inbox({.id = base::Uuid::random(), .isSystem = true, .systemIdentifier = "inbox"});
    model::Board work({.id = base::Uuid::random()});
    model::Board archived({.id = base::Uuid::random(), .isArchived = true});
    const std::array<model::Board*, 3> boards{&work, &archived, &inbox};

    preferences.setDefaultBoardID(work.id());
    EXPECT_EQ(preferences.defaultBoard(boards), &work);
    for (const auto& gone : {AppPreferences::BoardID(), AppPreferences::BoardID(archived.id()),
                             AppPreferences::BoardID(base::Uuid::random())}) {
        preferences.setDefaultBoardID(gone);
        EXPECT_EQ(preferences.defaultBoard(boards), &inbox);
        EXPECT_EQ(file.open().string("defaultBoardID"), inbox.id().text());
    }
    preferences.setDefaultBoardID(work.id());
    EXPECT_EQ(preferences.defaultBoard({}), nullptr);
    EXPECT_EQ(file.open().string("defaultBoardID"), work.id().text())
        << "nobody knows that it went";

    preferences.setDefaultBoardID(archived.id());
    auto others = file.open();
    AppPreferences(others, log).setDefaultBoardID(work.id());
    EXPECT_EQ(preferences.defaultBoard(boards), &work) << "they have chosen since";

    preferences.setDefaultBoardID(archived.id());
    AppPreferences(others, log).setDefaultBoardID(base::Uuid::random());
    const auto atThisMoment = preferences.didChange().connect(
        [&](Property) { AppPreferences(others, log).setDefaultBoardID(work.id()); });
    EXPECT_EQ(preferences.defaultBoard(boards), &work) << "and between two looks at the file";
}

TEST(AppPreferences, OneInstallationHasOneIdentifier) {
    const SettingsFile file(R"({"automaticBackupID": "none"})");
    tests::RecordingLog log;
    auto defaults = file.open();
    AppPreferences first(defaults, log);
    const auto id = first.automaticBackupID();
    auto later = file.open();
    EXPECT_EQ(AppPreferences(later, log).automaticBackupID(), id);
    file.write("{}");
    first.reload();
    EXPECT_EQ(file.open().string("automaticBackupID"), id.text()) << "it comes back";

    // Both have read the file before either writes.
    file.write("{}");
    auto mine = file.open();
    auto theirs = file.open();
    const AppPreferences ours(mine, log);
    EXPECT_EQ(AppPreferences(theirs, log).automaticBackupID(), ours.automaticBackupID());

    const SettingsFile inTheWay("no folder");
    FileUserDefaults unwritable(inTheWay.path() / "settings.json");
    EXPECT_NE(AppPreferences(unwritable, log).automaticBackupID(), base::Uuid());
}

TEST(AppPreferences, TellsWhichSettingsHaveChangedHereAndElsewhere) {
    const SettingsFile file(settings(R"("fontSize": 17)"));
    tests::RecordingLog log;
    auto defaults = file.open();
    AppPreferences preferences(defaults, log);
    std::vector<Property> changed;
    const auto subscription = preferences.didChange().connect([&](Property property) {
        changed.push_back(property);
        // Whoever is told of one sees all as they are now.
        EXPECT_EQ(preferences.fontSize() == 20, preferences.showsMenuBarExtra() == false);
    });
    const auto takeChanged = [&] { return std::exchange(changed, {}); };

    preferences.setAppearance(Appearance::dark);
    preferences.setAppearance(Appearance::dark);
    EXPECT_THAT(takeChanged(), ElementsAre(Property::appearance));
    // The size is what it was read as, but the file still holds what could not be read.
    preferences.setFontSize(13);
    EXPECT_THAT(takeChanged(), IsEmpty());
    EXPECT_EQ(file.open().integer("fontSize"), 13);
    preferences.reload();
    EXPECT_THAT(takeChanged(), IsEmpty());

    auto others = file.open();
    AppPreferences elsewhere(others, log);
    elsewhere.setFontSize(20);
    elsewhere.setShowsMenuBarExtra(false);
    EXPECT_EQ(preferences.fontSize(), 13) << "not before it is told";
    preferences.reload();
    EXPECT_THAT(takeChanged(),
                UnorderedElementsAre(Property::fontSize, Property::showsMenuBarExtra));
    EXPECT_EQ(preferences.appearance(), Appearance::dark);
    // A file that somebody is writing by hand says nothing for a moment.
    for (const auto* half : {"", "{\"fontSize\": 1", "[]"}) {
        file.write(half);
        preferences.reload();
        EXPECT_THAT(takeChanged(), IsEmpty()) << half;
    }
    file.write(settings(R"("appearance": "light")"));
    preferences.reload();
    EXPECT_THAT(takeChanged(), UnorderedElementsAre(Property::appearance, Property::fontSize,
                                                    Property::showsMenuBarExtra));
}

} // namespace
} // namespace korvex::app
