#include "CommandLineFixture.h"

#include "app/AgentStart.h"
#include "app/FileUserDefaults.h"

#include <gmock/gmock.h>

#include <fstream>

namespace korvex::tests {
namespace {

using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::SizeIs;
using ::testing::StartsWith;

/// A store with entries of chosen identifiers, which no command can make.
class CommandLine : public CommandLineFixture {
protected:
    void addEntries(const std::vector<std::string>& ids) {
        const auto container = openStore();
        store::ModelContext context(*container);
        auto& board = context.insert(std::make_unique<model::Board>(
            model::BoardFields{.id = base::Uuid::random(), .name = "Work"}));
        std::int64_t place = 0;
        for (const auto& id : ids) {
            auto entry = std::make_unique<model::Entry>(
                model::EntryFields{.id = *base::Uuid::parse(id),
                                   .typeRawValue = "todo",
                                   .content = "Todo " + id.substr(0, 9),
                                   .sortOrder = place++});
            entry->setBoard(&board);
            context.insert(std::move(entry));
        }
        context.save();
    }
};

TEST_F(CommandLine, AnEntryIsNamedByAnyBeginningThatOnlyItHas) {
    addEntries({"ABCD0123-0000-4000-8000-000000000000", "ABCD4567-0000-4000-8000-000000000000",
                "ABCD4567-1000-4000-8000-000000000000", "FFFF0000-0000-4000-8000-000000000000"});
    struct {
        const char* typed;
        const char* found;
    } const found[] = {
        {"abcd0", "Todo ABCD0123-"},
        {"FFFF", "Todo FFFF0000-"},
        {"abcd4567-1", "Todo ABCD4567-"},
        {"abcd45671000", "Todo ABCD4567-"},
        {"ABCD012300004000800000000000000-0", "Todo ABCD0123-"},
        {"ffff0000-0000-4000-8000-000000000000", "Todo FFFF0000-"},
    };
    for (const auto& each : found) {
        EXPECT_EQ(result({"show", each.typed, "--as", "text"}), each.found) << each.typed;
    }
    struct {
        const char* typed;
        const char* error;
    } const refused[] = {
        {"abcd", "Several entries begin with \"abcd\""},
        {"ABCD4567", "ABCD4567-0000-4000-8000-000000000000, ABCD4567-1000"},
        {"abc", "too short"},
        {"a-b-c-", "too short"},
        {"", "too short"},
        {"abce", "There is no entry \"abce\""},
        {"milk", "\"milk\" is no identifier"},
        {"FFFF0000-0000-4000-8000-0000000000000", "is no identifier"},
        {"FFFF0000-0000-4000-8000-000000000001", "There is no entry"},
    };
    for (const auto& each : refused) {
        const auto outcome = run({"show", each.typed});
        EXPECT_EQ(outcome.status, cli::ExitStatus::refused) << each.typed;
        EXPECT_THAT(outcome.error, AllOf(StartsWith("korvex: "), HasSubstr(each.error)));
        EXPECT_THAT(outcome.output, IsEmpty());
    }
}

TEST_F(CommandLine, AListShowsEnoughOfEachIdentifierToTellThemApart) {
    addEntries({"ABCD4567-0000-4000-8000-000000000000", "ABCD4567-0010-4000-8000-000000000000",
                "12345678-0000-4000-8000-000000000000"});
    EXPECT_EQ(result({"list", "Work"}), "ABCD4567-000  [ ] Todo ABCD4567-\n"
                                        "ABCD4567-001  [ ] Todo ABCD4567-\n"
                                        "12345678-000  [ ] Todo 12345678-");
}

TEST_F(CommandLine, SchedulesAreReadInTheMachinesTimeZone) {
    struct {
        std::vector<std::string> options;
        const char* stored;
        const char* label;
    } const cases[] = {
        {{"--due", "2025-03-12"}, R"("dueDay":20250312)", "Wed, Mar 12, 2025"},
        {{"--due", "today"}, R"("dueDay":20250310)", "Today"},
        {{"--due", "tomorrow"}, R"("dueDay":20250311)", "Tomorrow"},
        {{"--due", "2025-03-10T16:30"}, R"("dueDate":"2025-03-10T15:30:00.000Z")", "Today · 4:30"},
        {{"--due", "2025-03-10T16:30Z"}, R"("dueDate":"2025-03-10T16:30:00.000Z")", "Today · 5:30"},
        {{"--due", "2025-03-10T16:30-05:00"}, R"("dueDate":"2025-03-10T21:30:00.000Z")", "Today"},
        {{"--from", "2025-03-11T09:00", "--due", "2025-03-11T10:00"},
         R"("dueStartDate":"2025-03-11T08:00:00.000Z")",
         "Tomorrow · 9:00"},
        {{"--remind", "2025-03-10T18:00"}, R"("reminderDate":"2025-03-10T17:00:00.000Z")", "Today"},
        {{"--remind", "tomorrow"}, R"("reminderDate":"2025-03-11T08:00:00.000Z")", "Tomorrow"},
        {{"--due", "2025-03-12", "--remind", "oneDay"},
         R"("reminderDate":"2025-03-11T08:00:00.000Z")",
         "Wed, Mar 12"},
        {{"--due", "2025-03-12T10:00", "--remind", "oneHour"},
         R"("reminderDate":"2025-03-12T08:00:00.000Z")",
         "Wed, Mar 12"},
        // The clocks go forward on March 30: the reminder keeps its time of day.
        {{"--due", "2025-03-30T10:00", "--remind", "oneDay"},
         R"("reminderDate":"2025-03-29T09:00:00.000Z")",
         "Sun, Mar 30"},
        {{"--from", "2025-03-12T10:00", "--due", "2025-03-12T11:00", "--remind", "atDueTime"},
         R"("reminderDate":"2025-03-12T10:00:00.000Z")",
         "Wed, Mar 12"},
    };
    for (const auto& each : cases) {
        std::vector<std::string> arguments{"add", "Water plants", "--json"};
        arguments.insert(arguments.end(), each.options.begin(), each.options.end());
        const auto printed = result(arguments);
        EXPECT_THAT(printed, HasSubstr(each.stored));
        EXPECT_THAT(printed, HasSubstr(std::string(R"("dueLabel":")") + each.label));
    }
}

TEST_F(CommandLine, DatesAreSaidInEnglishByTheClockOfTheRegion) {
    const ScopedEnvironment german("LC_ALL", "de_DE.UTF-8");
    result({"add", "Call", "--due", "2025-03-11T16:30"});
    EXPECT_THAT(result({"list"}), HasSubstr("Tomorrow · 16:30"));
}

TEST_F(CommandLine, SchedulesThatMakeNoSenseLeaveNoTodo) {
    struct {
        std::vector<std::string> options;
        cli::ExitStatus status;
        const char* error;
    } const cases[] = {
        {{"--due", "2025-02-29"}, cli::ExitStatus::refused, "Choose a valid todo schedule."},
        {{"--due", "2025-03-10T25:00"}, cli::ExitStatus::refused, "Choose a valid todo schedule."},
        {{"--due", "20250229"}, cli::ExitStatus::wrongUsage, "\"20250229\" is no date"},
        {{"--due", "soon"}, cli::ExitStatus::wrongUsage, "\"soon\" is no date"},
        {{"--due", ""}, cli::ExitStatus::wrongUsage, "is no date"},
        {{"--from", "2025-03-11T10:00", "--due", "2025-03-11T10:00"},
         cli::ExitStatus::refused,
         "Choose a valid todo schedule."},
        {{"--from", "2025-03-11T11:00", "--due", "2025-03-11T10:00"},
         cli::ExitStatus::refused,
         "Choose a valid todo schedule."},
        {{"--from", "2025-03-11", "--due", "2025-03-12"},
         cli::ExitStatus::wrongUsage,
         "A window needs two times"},
        {{"--from", "2025-03-11T11:00"}, cli::ExitStatus::wrongUsage, "--due"},
        {{"--remind", "2025-03-10T13:59"},
         cli::ExitStatus::refused,
         "Choose a reminder in the future."},
        // 09:00 of today has passed.
        {{"--remind", "today"}, cli::ExitStatus::refused, "Choose a reminder in the future."},
        {{"--due", "tomorrow", "--remind", "oneWeek"},
         cli::ExitStatus::refused,
         "Choose a reminder in the future."},
        {{"--remind", "oneDay"}, cli::ExitStatus::wrongUsage, "add --due"},
        {{"--due", "tomorrow", "--remind", "threeDays"},
         cli::ExitStatus::wrongUsage,
         "\"threeDays\" is no date"},
    };
    for (const auto& each : cases) {
        std::vector<std::string> arguments{"add", "Water plants"};
        arguments.insert(arguments.end(), each.options.begin(), each.options.end());
        const auto outcome = run(arguments);
        EXPECT_EQ(outcome.status, each.status) << outcome.error;
        EXPECT_THAT(outcome.error, HasSubstr(each.error));
        EXPECT_THAT(outcome.output, IsEmpty());
    }
    EXPECT_EQ(result({"list"}), "");
}

TEST_F(CommandLine, TheDefaultReminderTimeIsTheUsersOwn) {
    std::filesystem::create_directories(folder.path() / "korvex");
    std::ofstream(folder.path() / "korvex" / "settings.json")
        << R"({"defaultReminderMinutes": 1110})";
    EXPECT_THAT(result({"add", "Call", "--remind", "2025-03-11", "--json"}),
                HasSubstr(R"("reminderDate":"2025-03-11T17:30:00.000Z")"));
}

TEST_F(CommandLine, AReminderThatHasPassedMayStay) {
    addEntries({"ABCD0123-0000-4000-8000-000000000000"});
    {
        const auto container = openStore();
        store::ModelContext context(*container);
        auto& entry = *context.fetch<model::Entry>().front();
        entry.setSchedule({.reminderDate = clock.now() - 3600});
        context.save();
    }
    EXPECT_THAT(
        result({"schedule", "abcd", "--due", "today", "--remind", "2025-03-10T13:00", "--json"}),
        HasSubstr(R"("reminderDate":"2025-03-10T12:00:00.000Z","boardID")"));
}

TEST_F(CommandLine, OtherProgramsHearOfAChangeOnceAndOfReadingNever) {
    result({"boards"});
    EXPECT_EQ(broadcaster.count, 1) << "the Inbox was made";
    broadcaster.count = 0;
    const auto first = result({"add", "one"});
    const auto second = result({"add", "two"});
    EXPECT_EQ(broadcaster.count, 2);
    broadcaster.count = 0;
    result({"complete", first, second});
    EXPECT_EQ(broadcaster.count, 1);
    broadcaster.count = 0;
    result({"list", "--completed"});
    result({"store", "check"});
    run({"edit", first, " "});
    EXPECT_EQ(broadcaster.count, 0);
}

TEST_F(CommandLine, CompletingSeveralIsAllOrNothing) {
    const auto first = result({"add", "one"});
    const auto outcome = run({"complete", first, "FFFF0000-0000-4000-8000-000000000000"});
    EXPECT_EQ(outcome.status, cli::ExitStatus::refused);
    EXPECT_THAT(result({"list"}), HasSubstr("one"));

    const auto other = result({"board", "add", "Other"});
    const auto third = result({"add", "three", "--board", other});
    result({"add", "four", "--board", other});
    result({"complete", third, first, third});
    EXPECT_EQ(result({"list"}), "");
    EXPECT_THAT(result({"list", other}), AllOf(HasSubstr("four"), Not(HasSubstr("three"))));
    EXPECT_THAT(result({"store", "check"}), StartsWith("The store is sound"));
}

TEST_F(CommandLine, CheckSeesWhatIsWrongBetweenSoundRecords) {
    addEntries({"ABCD0123-0000-4000-8000-000000000000", "FFFF0000-0000-4000-8000-000000000000"});
    EXPECT_EQ(result({"store", "check"}), "The store is sound: 3 records.");
    {
        const auto container = openStore();
        store::ModelContext context(*container);
        context.find<model::Entry>(*base::Uuid::parse("FFFF0000-0000-4000-8000-000000000000"))
            ->setSortOrder(2);
        context.save();
    }
    const auto outcome = run({"store", "check"});
    EXPECT_EQ(outcome.status, cli::ExitStatus::refused);
    EXPECT_EQ(outcome.output, "Boards whose entries are not numbered in order: 1\n"
                              "This mends it: korvex --data-dir '" +
                                  folder.path().string() + "' store repair\n");
    EXPECT_THAT(
        run({"store", "check", "--json"}).output,
        HasSubstr(
            R"("recordCount":3,"problems":["Boards whose entries are not numbered in order: 1"])"));
    {
        const auto container = openStore();
        store::ModelContext context(*container);
        context.insert(std::make_unique<model::Entry>(model::EntryFields{
            .id = *base::Uuid::parse("EEEE0000-0000-4000-8000-000000000000"), .content = "lost"}));
        context.save();
    }
    const auto lost = run({"store", "check"});
    EXPECT_EQ(lost.status, cli::ExitStatus::refused);
    EXPECT_THAT(lost.output, HasSubstr("EEEE0000-0000-4000-8000-000000000000"));
}

TEST_F(CommandLine, SettingsFollowABoardThatBecomesAnother) {
    // Where nothing else is said the store is this one, or another.
    std::filesystem::create_directory_symlink(folder.path(), folder / "korvex");
    using Words = std::vector<std::string>;
    for (const auto& [data, command] : std::initializer_list<std::pair<const char*, Words>>{
             {"", {"boards"}}, {"", {"store", "repair"}}, {"other", {"store", "repair"}}}) {
        const ScopedEnvironment home("XDG_DATA_HOME", (folder / data).string());
        const auto doubled = base::Uuid::random();
        {
            const auto container = openStore();
            store::ModelContext context(*container);
            for (const auto& [id, createdAt] :
                 {std::pair(base::Uuid::random(), 0.0), std::pair(doubled, 60.0)}) {
                context.insert(std::make_unique<model::Board>(
                    model::BoardFields{.id = id,
                                       .name = "Inbox",
                                       .createdAt = base::Instant{createdAt},
                                       .updatedAt = base::Instant{createdAt},
                                       .isSystem = true,
                                       .systemIdentifier = "inbox"}));
            }
            context.save();
        }
        app::FileUserDefaults defaults(folder / "settings.json");
        defaults.setString("launchBoardID", doubled.text());
        EXPECT_EQ(run(command).status, cli::ExitStatus::done);
        defaults.refresh();
        const auto container = openStore();
        store::ModelContext context(*container);
        const auto* const board =
            context.find<model::Board>(*base::Uuid::parse(*defaults.string("launchBoardID")));
        EXPECT_EQ(board->id() != doubled, *data == '\0') << command.front();
        EXPECT_EQ(board->mergedIntoBoardID().has_value(), *data != '\0') << command.front();
    }
}

TEST_F(CommandLine, ALinkIsGivenToTheAppThatRunsForTheUsersOwnStoreAlone) {
    using Answer = cli::RunningDesktop::Answer;
    constexpr const char* kLink = "korvex://board/inbox";
    // Where nobody runs the app would be started.
    const ScopedEnvironment x11("DISPLAY", std::nullopt);
    const ScopedEnvironment wayland("WAYLAND_DISPLAY", std::nullopt);
    std::filesystem::create_directory_symlink(folder.path(), folder / "korvex");
    {
        const ScopedEnvironment home("XDG_DATA_HOME", folder.path().string());
        desktop.answer = Answer::taken;
        EXPECT_EQ(result({"open", kLink}), "");
        ASSERT_THAT(desktop.asked, SizeIs(1));
        EXPECT_THAT(desktop.asked.front().links, ElementsAre(kLink));

        desktop.answer = Answer::silent;
        const auto hanging = run({"open", kLink});
        EXPECT_EQ(hanging.status, cli::ExitStatus::refused);
        EXPECT_EQ(hanging.error, "korvex: Korvex is running, but does not answer.\n");
        EXPECT_THAT(desktop.asked, SizeIs(2));
    }
    const ScopedEnvironment home("XDG_DATA_HOME", (folder / "other").string());
    desktop.answer = Answer::taken;
    EXPECT_EQ(run({"open", kLink}).status, cli::ExitStatus::refused);
    EXPECT_THAT(desktop.asked, SizeIs(2)) << "it has another store";
}

TEST_F(CommandLine, TheAgentIsAskedOnceForWhatConcernsRemindersOfTheUsersOwnStore) {
    result({"add", "of another store"});
    EXPECT_THAT(agent.asked, IsEmpty());
    EXPECT_EQ(run({"reminders"}).status, cli::ExitStatus::refused);

    std::filesystem::create_directory_symlink(folder.path(), folder / "korvex");
    const ScopedEnvironment home("XDG_DATA_HOME", folder.path().string());
    const auto first = result({"add", "Water plants", "Ring"}).substr(0, 36);
    EXPECT_THAT(agent.asked, ElementsAre(IsEmpty()));
    result({"complete", first});
    EXPECT_THAT(agent.asked, ElementsAre(IsEmpty(), ElementsAre("todo-reminder-" + first)));
    result({"board", "add", "Garden"});
    result({"list"});
    EXPECT_EQ(run({"add", ""}).status, cli::ExitStatus::refused);
    EXPECT_THAT(agent.asked, SizeIs(2)) << "reminders are as they were";
    result({"board", "archive", "Garden"});
    EXPECT_THAT(agent.asked, SizeIs(3));
}

TEST_F(CommandLine, RemindersAreListedAsTheAgentHoldsThem) {
    std::filesystem::create_directory_symlink(folder.path(), folder / "korvex");
    const ScopedEnvironment home("XDG_DATA_HOME", folder.path().string());
    const auto seen = *base::Uuid::parse(result({"add", "Seen"}));
    const auto refused = run({"reminders"});
    EXPECT_EQ(refused.status, cli::ExitStatus::refused);
    EXPECT_THAT(refused.error, HasSubstr("There is no session bus."));

    using State = app::AgentReminder::State;
    agent.reminders.said = {.listed = {{{{0xAB}}, clock.now() + 3600, "First", State::pending},
                                       {{{0xAC}}, clock.now() + 7200, "Second\n", State::pending},
                                       {seen, clock.now() - 60, "As it was", State::closed},
                                       {{{0xAE}}, clock.now() - 90, "Late", State::pending},
                                       {{{0xAD}}, clock.now() - 3600, "", State::withdrawn}}};
    const auto seenID = seen.text();
    EXPECT_EQ(result({"reminders"}),
              "AB000000  Mar 10, 2025, 3:00\u202FPM  pending    (deleted) First\n"
              "AC000000  Mar 10, 2025, 4:00\u202FPM  pending    (deleted) Second \n" +
                  seenID.substr(0, 8) +
                  "  Mar 10, 2025, 1:59\u202FPM  closed     Seen\n"
                  "AE000000  Mar 10, 2025, 1:58\u202FPM  not shown  (deleted) Late\n"
                  "AD000000  Mar 10, 2025, 1:00\u202FPM  withdrawn  (deleted)");
    EXPECT_THAT(result({"reminders", "--json"}),
                HasSubstr("{\"id\":\"" + seenID +
                          "\",\"reminderDate\":\"2025-03-10T12:59:00.000Z\","
                          "\"state\":\"closed\",\"content\":\"Seen\","
                          "\"isLate\":false,\"isDeleted\":false}"));
    agent.reminders.said->more = 7;
    EXPECT_THAT(run({"reminders"}).error, HasSubstr("7 more are not listed."));
    agent.reminders.said->more = 0;
    std::filesystem::rename(folder / "Primary.store", folder / "away");
    EXPECT_THAT(result({"reminders"}), HasSubstr("closed     As it was\n"))
        << "the agent has answered";
    std::filesystem::rename(folder / "away", folder / "Primary.store");

    agent.status.said = {.reminders = {.authorization = schedule::AuthorizationStatus::authorized},
                         .version = "0.1.0",
                         .processID = 77,
                         .daemon = "dunst 1.9.0",
                         .nextDue = clock.now() + 3600};
    if (!app::startsAtLogin()) { // it is not installed on this machine
        EXPECT_THAT(result({"agent", "status"}), HasSubstr("At login    not started;"));
    }
    // It starts with the session, by the user's own file; the settings are in this folder.
    std::filesystem::create_directory(folder / "autostart");
    std::ofstream(folder / "autostart" / "dev.korvex.Agent.desktop") << "[Desktop Entry]\n";
    EXPECT_EQ(result({"agent", "status"}), "Agent       running\n"
                                           "Version     0.1.0\n"
                                           "Process     77\n"
                                           "Reminders   Allowed\n"
                                           "Shown by    dunst 1.9.0\n"
                                           "Next        Mar 10, 2025, 3:00\u202FPM");
    agent.status.said->reminders.isQuieted = true;
    EXPECT_THAT(result({"agent", "status"}), HasSubstr("Reason      You are not to be disturbed"));
    agent.status.said->reminders.authorization = schedule::AuthorizationStatus::denied;
    EXPECT_THAT(result({"agent", "status", "--json"}),
                AllOf(HasSubstr("\"startsAtLogin\":true"), HasSubstr("\"isQuieted\":true"),
                      HasSubstr("\"reason\":\"Enable notifications in your desktop's settings")));
}

TEST_F(CommandLine, ATimeAloneIsTheNextOneAndAWindowIsOnOneDay) {
    // It is 14:00.
    const auto due = [&](const std::vector<std::string>& options) {
        auto arguments = options;
        arguments.insert(arguments.begin(), {"add", "x"});
        return result({"show", result(arguments), "--json"});
    };
    EXPECT_THAT(due({"--due", "14:30"}), HasSubstr("\"2025-03-10T13:30:00.000Z\""));
    EXPECT_THAT(due({"--due", "9:05"}), HasSubstr("\"2025-03-11T08:05:00.000Z\""));
    EXPECT_THAT(due({"--due", "14:00"}), HasSubstr("\"2025-03-11T13:00:00.000Z\"")) << "now";
    EXPECT_THAT(due({"--due", "14:30", "--from", "13:30"}),
                HasSubstr("\"2025-03-10T12:30:00.000Z\""));
    EXPECT_THAT(due({"--remind", "23:59"}), HasSubstr("\"2025-03-10T22:59:00.000Z\""));
    for (const auto* const none : {"24:00", "14:60"}) {
        EXPECT_EQ(run({"add", "x", "--due", none}).status, cli::ExitStatus::refused) << none;
    }
    for (const auto* const other : {":30", "1:3", "123:00", "1a:00", "14:3x"}) {
        EXPECT_EQ(run({"add", "x", "--due", other}).status, cli::ExitStatus::wrongUsage) << other;
    }
}

TEST_F(CommandLine, WhatFailsWithABackupIsLoggedWithItsNumber) {
    const auto file = (folder / "mine.korvexbackup").string();
    result({"add", "kept"});
    result({"backup", "export", file});
    run({"backup", "import", file}); // it was not tried
    EXPECT_EQ(log.count("Backup operation failed"), 0U);
    run({"backup", "import", file + "-none", "--yes"});
    run({"backup", "undo-import", "--yes"});
    run({"backup", "export", (folder / "Primary.store").string(), "--force"});
    EXPECT_EQ(log.count("Backup operation failed: " + file +
                        "-none could not be read: No such "
                        "file or directory. (1)"),
              1U);
    EXPECT_EQ(log.count("Backup operation failed: There is nothing to take back"), 1U);
    EXPECT_EQ(log.count("Backup operation failed: This place belongs to the store itself."), 1U);
}

TEST_F(CommandLine, InputOverTheLimitIsRefusedWhole) {
    const auto outcome = run({"add", "-"}, std::string(64 * 1024 * 1024 + 1, '\n'));
    EXPECT_EQ(outcome.status, cli::ExitStatus::refused);
    EXPECT_THAT(outcome.error, HasSubstr("64 MiB"));
}

} // namespace
} // namespace korvex::tests
