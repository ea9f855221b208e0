#include "AgentFixture.h"

namespace korvex::agent {
namespace {

using schedule::AuthorizationStatus;
using ::testing::IsEmpty;
using ::testing::SizeIs;

class AgentAndDaemonTest : public AgentFixture {};

TEST_F(AgentAndDaemonTest, WithoutADaemonItWaitsForOneAndSaysSo) {
    prepareStore();
    startAgent();
    settleAgent();
    add("Missed", 10);
    settleAgent();
    setClock(20);
    settleAgent();
    EXPECT_EQ(status().reminders.authorization, AuthorizationStatus::unavailable);
    EXPECT_THAT(status().reminders.reason, ::testing::HasSubstr("none is installed"));
    EXPECT_EQ(reminders().front().state, AgentReminder::State::pending);
    EXPECT_EQ(status().nextDue, m_clock.now() - 10) << "it still waits";

    m_capabilities = {"body"};
    startNotifications();
    ASSERT_TRUE(shows(1));
    EXPECT_THAT(m_notifications->shown().front().actions, IsEmpty());
    settleAgent();
    EXPECT_EQ(status().reminders.authorization, AuthorizationStatus::authorized);
    EXPECT_EQ(status().daemon, "recorder 1");
    // A notification as this one has no markup, so what looks like some is said as it is.
    add("a & b", 10);
    settleAgent();
    setClock(10);
    ASSERT_TRUE(shows(2));
    EXPECT_EQ(m_notifications->shown().back().body, "a & b");

    // Another daemon shows them again: they went with the former one.
    m_notifications->close(m_notifications->shown().front());
    settleAgent();
    m_notifications.reset();
    ASSERT_TRUE(patiently([&] { return status().daemon.empty(); }));
    startNotifications();
    ASSERT_TRUE(shows(1));
    EXPECT_EQ(m_notifications->shown().front().body, "a & b");
}

TEST_F(AgentAndDaemonTest, ADaemonThatRefusesIsAskedAgainLater) {
    startAll();
    m_notifications->refuseNext(2);
    add("Again", 10);
    settleAgent();
    setClock(10);
    ASSERT_TRUE(shows(1));
    settleAgent();
    EXPECT_EQ(reminders().front().state, AgentReminder::State::shown);
    EXPECT_EQ(m_log.count("ExcessNotificationGeneration"), 2U);
}

TEST_F(AgentAndDaemonTest, ADaemonThatIsStoppedForLongShowsOnceWhatItWasToShowAndIsSaidToBeSilent) {
    const auto isSaidToBeSilent = [&] {
        const auto reminders = status().reminders;
        return reminders.authorization == AuthorizationStatus::unavailable &&
               reminders.reason == "The program that shows notifications does not answer.";
    };
    const auto waitLong = [&] {
        for (int seconds = 0; seconds < 60; ++seconds) {
            m_loop.advance(0.5);
            settleAgent();
        }
    };
    prepareStore();
    const auto todo = add("Once", 10);
    startStoppedNotifications();
    startAgent();
    settleAgent();
    EXPECT_THAT(status().reminders.reason, IsEmpty()) << "nobody knows yet";
    waitLong();
    EXPECT_EQ(status().reminders.authorization, AuthorizationStatus::unavailable)
        << "it does not even say what it can";
    EXPECT_TRUE(isSaidToBeSilent());
    letNotificationsRun();
    ask(platform::bus::agent_method::kRequestAuthorization, {}, [](const auto&) {});
    letNotificationsRun();
    letNotificationsRun();
    EXPECT_EQ(status().reminders.authorization, AuthorizationStatus::authorized);
    EXPECT_EQ(status().daemon, "recorder 1") << "it was too slow to say its name, too";

    setClock(10);
    waitLong();
    EXPECT_TRUE(isSaidToBeSilent());
    ask(platform::bus::agent_method::kRequestAuthorization, {}, [](const auto&) {});
    waitLong();
    EXPECT_TRUE(isSaidToBeSilent());
    letNotificationsRun();
    EXPECT_EQ(m_notifications->count("Once"), 1U);
    EXPECT_EQ(status().reminders.authorization, AuthorizationStatus::authorized);
    EXPECT_EQ(reminders().front().state, AgentReminder::State::shown);
    m_notifications->choose(m_notifications->shown().front(), "TODO_REMINDER_COMPLETE",
                            Tells::sender);
    EXPECT_TRUE(patiently([&] { return isCompleted(todo); }));
    letNotificationsRun();
    EXPECT_THAT(m_notifications->closed(), SizeIs(1));
}

TEST_F(AgentAndDaemonTest, ADaemonThatRefusesEverythingIsSaidToBeUntilItShowsSomething) {
    startAll();
    m_notifications->refuseNext(7);
    add("Refused", 10);
    settleAgent();
    setClock(10);
    settleAgent();
    EXPECT_EQ(status().reminders.authorization, AuthorizationStatus::authorized)
        << "many refuse one for a moment";
    ASSERT_TRUE(patiently(
        [&] { return status().reminders.authorization == AuthorizationStatus::unavailable; }));
    EXPECT_EQ(status().reminders.reason,
              "The program that shows notifications refuses to show any.");
    EXPECT_THAT(m_notifications->shown(), IsEmpty());
    while (m_notifications->shown().empty() && m_loop.elapsed() < std::chrono::seconds(300)) {
        m_loop.advance(1);
        settleAgent();
    }
    EXPECT_THAT(m_notifications->shown(), SizeIs(1));
    EXPECT_EQ(status().reminders.authorization, AuthorizationStatus::authorized);
}

} // namespace
} // namespace korvex::agent
