#include "AgentFixture.h"
#include "agent/TimeSources.h"
#include "app/Links.h"
#include "base/FileLock.h"
#include "model/Board.h"
#include "platform/bus/DesktopApplication.h"
#include "store/SoleHold.h"

namespace korvex::agent {
namespace {

using model::Entry;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

class ReminderAgentTest : public AgentFixture {
protected:
    /// A todo whose notification is ticked while another program holds the store.
    base::Uuid tickInVain() {
        startAll();
        const auto todo = add("Ticked", 10);
        settleAgent();
        setClock(10);
        if (!shows(1)) {
            ADD_FAILURE();
            return todo;
        }
        constexpr const char* kFailed = "Notification completion failed; code ";
        m_log.expectError(kFailed);
        {
            const base::FileLock lock(storeFile().string() + ".lock", std::chrono::milliseconds(0));
            EXPECT_EQ(lock.state(), base::FileLock::State::held);
            m_notifications->choose(m_notifications->shown().front(), "TODO_REMINDER_COMPLETE",
                                    Tells::sender);
            EXPECT_TRUE(m_loop.runUntil([&] { return m_log.count(kFailed) > 0; }));
            EXPECT_THAT(m_notifications->closed(), IsEmpty());
        }
        EXPECT_FALSE(isCompleted(todo));
        return todo;
    }
};

TEST_F(ReminderAgentTest, ATodoIsRemindedOfAtItsMomentAndCompletedByItsNotification) {
    for (const auto tells : {Tells::sender, Tells::everybody}) {
        startAll();
        const auto todo = add("Milk & <b>bread</b> \xff", 60);
        const auto other = add("Later", 4000);
        settleAgent();
        EXPECT_THAT(reminders(), SizeIs(2)) << "it has heard of the change";
        EXPECT_EQ(status().nextDue, m_clock.now() + 60);

        m_clock.advance(60);
        m_agent->timeChanged();
        ASSERT_TRUE(shows(1));
        const auto shown = m_notifications->shown().front();
        EXPECT_EQ(shown.title, "Todo Reminder");
        EXPECT_EQ(shown.body, "Milk &amp; &lt;b&gt;bread&lt;/b&gt; \xEF\xBF\xBD");
        EXPECT_THAT(shown.actions,
                    ElementsAre("default", "Open", "TODO_REMINDER_COMPLETE", "Mark Complete"));
        EXPECT_EQ(*platform::bus::find<std::string>(shown.hints, "desktop-entry"),
                  "dev.korvex.Korvex");

        // Another program's notification, and one that nobody knows.
        m_notifications->choose({.id = 77, .sender = shown.sender}, "TODO_REMINDER_COMPLETE",
                                tells);
        m_notifications->choose(shown, "what-is-this", tells);
        settleAgent();
        EXPECT_FALSE(isCompleted(todo));

        int heard = 0;
        Bus listening(platform::bus::WhichBus::session, m_loop, m_log);
        platform::bus::StoreChangeListener changes(listening, storeFile());
        const auto hearing = changes.changed().connect([&] { ++heard; });
        connect(listening);
        settle(listening);
        m_notifications->choose(shown, "TODO_REMINDER_COMPLETE", tells);
        m_notifications->choose(shown, "TODO_REMINDER_COMPLETE", tells); // a double click
        ASSERT_TRUE(patiently([&] { return !m_notifications->closed().empty(); }));
        EXPECT_TRUE(isCompleted(todo));
        EXPECT_FALSE(isCompleted(other));
        EXPECT_THAT(m_notifications->closed(), ElementsAre(shown.id));
        EXPECT_TRUE(patiently([&] { return heard > 0; }));
        endAgent();
        m_store = {};
        std::filesystem::remove_all(m_folder / "data");
        std::filesystem::remove_all(m_folder / "state");
    }
}

TEST_F(ReminderAgentTest, ANotificationOpensItsTodoInTheAppThatRunsOrIsStarted) {
    startAll();
    const auto todo = add("Call", 10);
    setClock(10);
    ASSERT_TRUE(shows(1));
    m_notifications->choose(m_notifications->shown().back(), "default", Tells::sender, "token1");
    ASSERT_TRUE(patiently([&] { return !m_started.empty(); }));
    EXPECT_THAT(m_started, ElementsAre(app::entryUrl(todo) + " token1"));
    EXPECT_FALSE(isCompleted(todo));
    EXPECT_TRUE(patiently([&] { return m_notifications->closed().size() == 1; }));

    Bus appBus(platform::bus::WhichBus::session, m_loop, m_log);
    platform::bus::DesktopApplication application(appBus);
    const platform::bus::NameClaim name(appBus, app::kDesktopName);
    std::vector<app::Launch> launches;
    const auto launching = application.launched().connect(
        [&](const app::Launch& launch) { launches.push_back(launch); });
    connect(appBus);
    const auto second = add("Write", 10);
    settleAgent();
    setClock(10);
    ASSERT_TRUE(shows(2));
    m_notifications->choose(m_notifications->shown().back(), "default", Tells::everybody, "token2");
    ASSERT_TRUE(patiently([&] { return !launches.empty(); }));
    EXPECT_THAT(launches,
                ElementsAre(app::Launch{.links = {app::entryUrl(second)}, .token = "token2"}));
    EXPECT_THAT(m_started, SizeIs(1));
}

TEST_F(ReminderAgentTest, ANotificationStaysUntilSomebodyHasTakenItsTodo) {
    startAll();
    add("Call", 10);
    setClock(10);
    ASSERT_TRUE(shows(1));
    const auto shown = m_notifications->shown().front();
    m_log.expectError("Could not open notification entry: ");
    m_canStart = false;
    m_notifications->choose(shown, "default", Tells::sender);
    ASSERT_TRUE(patiently([&] { return m_started.size() == 1; }));
    settleAgent();
    EXPECT_EQ(m_log.count("Could not open notification entry: "), 1U);
    EXPECT_THAT(m_notifications->closed(), IsEmpty());

    // The app is there, and stopped.
    Bus appBus(platform::bus::WhichBus::session, m_otherLoop, m_log);
    platform::bus::DesktopApplication application(appBus);
    int launches = 0;
    const auto launching = application.launched().connect([&](const auto&) { ++launches; });
    std::optional<platform::bus::NameClaim> name(std::in_place, appBus, app::kDesktopName);
    appBus.start();
    ASSERT_TRUE(m_otherLoop.runUntil(
        [&] { return name->state() == platform::bus::NameClaim::State::owned; }));
    m_notifications->choose(shown, "default", Tells::sender);
    settleAgent();
    m_loop.advance(11);
    settleAgent();
    EXPECT_EQ(m_log.count("Could not open notification entry: "), 2U);
    EXPECT_THAT(m_notifications->closed(), IsEmpty());
    m_notifications->choose(shown, "default", Tells::sender);
    settleAgent();
    EXPECT_FALSE(m_agent->isQuiet()) << "it is still to be closed";
    ASSERT_TRUE(m_otherLoop.runUntil([&] { return launches == 2; }));
    m_otherLoop.runUntil([] { return false; }, std::chrono::milliseconds(50));
    EXPECT_TRUE(patiently([&] { return m_notifications->closed().size() == 1; }));
    EXPECT_TRUE(m_agent->isQuiet());
}

TEST_F(ReminderAgentTest, WhatIsNoLongerAskedForIsTakenBack) {
    startAll();
    const auto completed = add("Completed in a window", 10);
    const auto gone = add("Deleted", 20);
    settleAgent();
    setClock(30);
    ASSERT_TRUE(shows(2));
    m_store.context->refresh();
    m_store.context->find<Entry>(completed)->setIsCompleted(true);
    m_store.context->remove(*m_store.context->find<Entry>(gone));
    m_store.context->save();
    ASSERT_TRUE(patiently([&] { return m_notifications->closed().size() == 2; }));
    // Taken back by who asks for it by name, before the store says so.
    const auto third = add("Third", 10);
    settleAgent();
    setClock(10);
    ASSERT_TRUE(shows(3));
    ask(platform::bus::agent_method::kReconcile,
        platform::bus::arguments(
            storeFile().string(),
            std::vector<std::string>{schedule::ReminderNotification::identifier(third), "x"}),
        [](const auto& reply) { EXPECT_FALSE(reply.error()); });
    EXPECT_TRUE(patiently([&] { return m_notifications->closed().size() == 3; }));
}

TEST_F(ReminderAgentTest, WhoeverAsksForAnotherStoreIsToldSoAndTheWayThereIsNotLookedAt) {
    prepareStore();
    startAgent();
    settleAgent();
    const auto link = m_folder / "link";
    std::filesystem::create_directory_symlink(m_folder / "data", link);
    const auto around = link / storeFile().filename();
    const auto isRefused = [&](const std::string& store) {
        int refusals = 0;
        const auto take = [&](const auto& reply) {
            refusals += reply.error() && reply.error()->name() == platform::bus::kAgentHasOtherStore
                            ? 1
                            : 0;
        };
        ask(platform::bus::agent_method::kReconcile,
            platform::bus::arguments(store, std::vector<std::string>{}), take);
        ask(platform::bus::agent_method::kGetStatus, platform::bus::arguments(store), take);
        ask(platform::bus::agent_method::kList, platform::bus::arguments(store), take);
        EXPECT_TRUE(refusals == 0 || refusals == 3) << store;
        return refusals == 3;
    };
    EXPECT_TRUE(isRefused("/elsewhere"));
    EXPECT_TRUE(isRefused(around)) << "it would have to be looked at to know";
    EXPECT_FALSE(isRefused(platform::bus::agentStoreArgument(around))) << "who asks has looked";
}

TEST_F(ReminderAgentTest, ClockStepsOfHoursShowEachReminderOnce) {
    startAll();
    add("In an hour", 3600);
    add("In five hours", 5 * 3600);
    settleAgent();
    setClock(2 * 3600);
    ASSERT_TRUE(shows(1));
    setClock(-2 * 3600);
    settleAgent();
    setClock(6 * 3600);
    ASSERT_TRUE(shows(2));
    settleAgent(); // or the answer would be lost with the agent
    endAgent();
    startAgent();
    ASSERT_TRUE(shows(4));
    setClock(-6 * 3600);
    settleAgent();
    EXPECT_EQ(m_notifications->count("In five hours"), 2U) << "once more by a new agent";
    EXPECT_THAT(m_notifications->closed(), SizeIs(2));
}

TEST_F(ReminderAgentTest, TheStoreMayComeLaterAndBeReplaced) {
    startNotifications();
    startAgent();
    settleAgent();
    EXPECT_THAT(reminders(), IsEmpty());
    EXPECT_FALSE(std::filesystem::exists(storeFile()));
    prepareStore();
    add("First", 100);
    ASSERT_TRUE(patiently([&] { return reminders().size() == 1; }));

    // Somebody puts another one in its place, with its folder.
    m_store = {};
    std::filesystem::rename(m_folder / "data", m_folder / "former");
    settleAgent();
    prepareStore();
    add("Second", 50);
    ASSERT_TRUE(patiently([&] {
        const auto all = reminders();
        return all.size() == 1 && all.front().body == "Second";
    }));
}

TEST_F(ReminderAgentTest, AStoreThatCannotBeOpenedIsTriedAgainThoughNobodySaysThatItCan) {
    prepareStore();
    add("Planned late", 100);
    m_store = {};
    startNotifications();
    // Whoever holds this and changes nothing is not heard of when it lets go.
    std::optional<base::FileLock> lock(std::in_place, storeFile().string() + ".lock",
                                       std::chrono::milliseconds(0));
    ASSERT_EQ(lock->state(), base::FileLock::State::held);
    m_log.expectError("Reminder reconciliation failed; code ");
    startAgent();
    settleAgent();
    EXPECT_THAT(reminders(), IsEmpty());
    EXPECT_EQ(status().reminders.schedulingErrorMessage,
              schedule::NotificationTexts::kSchedulingFailed);
    EXPECT_GE(m_log.count("Reminder reconciliation failed; code "), 1U);
    // A program that writes meanwhile makes it look again, and not wait longer.
    Bus writing(platform::bus::WhichBus::session, m_loop, m_log);
    connect(writing);
    for (int i = 0; i < 10; ++i) {
        platform::bus::announceStoreChange(writing, storeFile());
        settleAgent();
    }
    EXPECT_EQ(m_log.count("The store cannot be opened"), 1U) << "however often it is tried";

    lock.reset();
    const auto since = m_loop.elapsed();
    ASSERT_TRUE(patiently([&] { return reminders().size() == 1; }));
    EXPECT_LT(m_loop.elapsed() - since, std::chrono::seconds(20));
    EXPECT_TRUE(patiently([&] { return !status().reminders.schedulingErrorMessage; }));
    setClock(100);
    EXPECT_TRUE(shows(1));
}

TEST_F(ReminderAgentTest, AStoreThatIsTakenAwayAfterAFailureIsNoFailure) {
    prepareStore();
    m_store = {};
    std::optional<base::FileLock> lock(std::in_place, storeFile().string() + ".lock",
                                       std::chrono::milliseconds(0));
    m_log.expectError("Reminder reconciliation failed; code ");
    startAgent();
    ASSERT_TRUE(patiently([&] { return status().reminders.schedulingErrorMessage.has_value(); }));
    std::filesystem::rename(m_folder / "data", m_folder / "away");
    lock.reset();
    EXPECT_TRUE(patiently([&] { return !status().reminders.schedulingErrorMessage; }));
}

TEST_F(ReminderAgentTest, WhoMustBeAloneWithTheStoreIsBeforeLong) {
    startAll();
    add("Still reminded of", 50);
    settleAgent();
    m_store = {};
    for (int halves = 0; halves < 4; ++halves) {
        settleAgent();
    }
    {
        const base::FileLock lock(store::StoreFile(storeFile()).lockFile(),
                                  std::chrono::milliseconds(0));
        EXPECT_NO_THROW(
            store::SoleHold(store::StoreFile(storeFile()), std::chrono::milliseconds(0)));
    }
    setClock(50);
    EXPECT_TRUE(shows(1));
}

TEST_F(ReminderAgentTest, ATodoThatCannotBeCompletedIsLoggedAndCompletedWhenItCanBe) {
    const auto todo = tickInVain();
    EXPECT_TRUE(patiently([&] { return isCompleted(todo); }));
    EXPECT_TRUE(patiently([&] { return !m_notifications->closed().empty(); }));
}

TEST_F(ReminderAgentTest, WhatWasTickedAndIsTriedAgainIsTriedOnceMoreBeforeTheAgentEnds) {
    const auto todo = tickInVain();
    endAgent();
    EXPECT_TRUE(isCompleted(todo));
}

TEST_F(ReminderAgentTest, ATodoThatMayNotBeCompletedIsShownInTheApp) {
    startAll();
    const auto todo = add("Put away", 10);
    auto archived = std::make_unique<model::Board>(
        model::BoardFields{.id = base::Uuid::random(), .name = "Archived", .isArchived = true});
    auto& board = *archived;
    m_store.context->insert(std::move(archived));
    m_store.context->find<Entry>(todo)->setBoard(&board);
    m_store.context->save();
    settleAgent();
    setClock(10);
    ASSERT_TRUE(shows(1));
    m_log.expectError("Notification completion failed; code ");
    m_notifications->choose(m_notifications->shown().front(), "TODO_REMINDER_COMPLETE",
                            Tells::sender, "token");
    ASSERT_TRUE(patiently([&] { return !m_started.empty(); }));
    EXPECT_THAT(m_started, ElementsAre(app::entryUrl(todo) + " token"));
    EXPECT_TRUE(patiently([&] { return m_notifications->closed().size() == 1; }));
    EXPECT_FALSE(isCompleted(todo));
}

TEST_F(ReminderAgentTest, WakingFromSleepIsSaidByTheLoginManager) {
    // It is a name on a bus of its own, which programs know by another variable.
    const tests::ScopedEnvironment systemBus("DBUS_SYSTEM_BUS_ADDRESS", m_daemon->address());
    Bus login(platform::bus::WhichBus::session, m_loop, m_log);
    const platform::bus::NameClaim name(login, "org.freedesktop.login1");
    connect(login);
    ASSERT_TRUE(
        m_loop.runUntil([&] { return name.state() == platform::bus::NameClaim::State::owned; }));
    TimeSources sources(m_loop, m_log);
    int changes = 0;
    const auto changing = sources.changed().connect([&] { ++changes; });
    const auto sleep = [&](bool isStarting) {
        login.emit({.path = "/org/freedesktop/login1",
                    .interface = "org.freedesktop.login1.Manager",
                    .member = "PrepareForSleep"},
                   platform::bus::arguments(isStarting));
    };
    ASSERT_TRUE(patiently([&] {
        sleep(false);
        return changes > 0;
    }));
    m_loop.runUntil([] { return false; }, std::chrono::milliseconds(100));
    changes = 0;
    sleep(true);
    settle(login);
    m_loop.runUntil([] { return false; }, std::chrono::milliseconds(50));
    EXPECT_EQ(changes, 0);
}

} // namespace
} // namespace korvex::agent
