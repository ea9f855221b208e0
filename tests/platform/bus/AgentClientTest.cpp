#include "BusFixture.h"

#include "platform/bus/AgentClient.h"
#include "platform/bus/NameClaim.h"
#include "platform/bus/OfferedObject.h"

#include <gmock/gmock.h>

namespace korvex::platform::bus {
namespace {

using schedule::AuthorizationStatus;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr const char* kStore = "/data/Primary.store";

/// In the place of the agent, another connection, which only writes down what it is asked for.
struct StandIn {
    StandIn(base::RunLoop& runLoop, base::LogSink& log)
        : bus(WhichBus::session, runLoop, log),
          object(bus, kAgentPath,
                 {.name = kAgentInterface,
                  .methods = {Interface::method<std::string, std::vector<std::string>>(
                                  agent_method::kReconcile,
                                  [this](IncomingCall& call, const auto& store, const auto& ids) {
                                      if (store != kStore) {
                                          call.fail(kAgentHasOtherStore, "");
                                          return;
                                      }
                                      withdrawn.push_back(ids);
                                      call.reply(arguments(toDictionary(status)));
                                  },
                                  "a{sv}"),
                              Interface::method<>(
                                  agent_method::kRequestAuthorization,
                                  [this](IncomingCall& call) {
                                      ++authorizations;
                                      call.reply(arguments(toDictionary(status)));
                                  },
                                  "a{sv}")},
                  .signals = {{.name = kAgentStatusChanged, .carries = "a{sv}"}}}) {
        bus.start();
        name.emplace(bus, kAgentName);
    }
    void say(const app::AgentStatus& now) {
        status = now;
        object.emit(kAgentStatusChanged, arguments(toDictionary(status)));
    }

    app::AgentStatus status{.reminders = {.authorization = AuthorizationStatus::authorized},
                            .version = "1",
                            .processID = 7,
                            .daemon = "dunst",
                            .nextDue = base::Instant{5}};
    /// What was to be withdrawn, for each reconcile that was asked for.
    std::vector<std::vector<std::string>> withdrawn;
    int authorizations = 0;
    Bus bus;
    OfferedObject object;
    std::optional<NameClaim> name;
};

class AgentClientTest : public tests::BusFixture {
protected:
    AgentClientTest() {
        m_changes = m_client.didChange().connect([this] { ++m_changeCount; });
    }
    template <typename Condition>
    bool until(Condition&& condition) {
        return m_loop.runUntil(condition);
    }

    int m_starts = 0;
    bool m_canStart = true;
    Bus m_bus{WhichBus::session, m_loop, m_log};
    AgentClient m_client{m_bus, m_loop, kStore,
                         [this] {
                             ++m_starts;
                             return m_canStart;
                         },
                         m_log};
    int m_changeCount = 0;
    base::Subscription m_changes;
};

TEST_F(AgentClientTest, WhatIsAskedTogetherIsAskedOnceAndWhatItSaysIsKnown) {
    startDaemon();
    StandIn agent(m_loop, m_log);
    connect(m_bus);
    ASSERT_TRUE(until([&] { return agent.name->state() == NameClaim::State::owned; }));

    const base::Uuid first{{1}};
    const base::Uuid second{{2}};
    const auto widget = schedule::ReminderNotification::identifier(second);
    m_client.requestReconcile();
    m_client.removePending({&first, 1});
    m_client.notifications().cancel({&widget, 1});
    m_client.requestReconcile();
    ASSERT_TRUE(until([&] { return m_client.agent().has_value(); }));
    EXPECT_THAT(agent.withdrawn, ElementsAre(ElementsAre(
                                     schedule::ReminderNotification::identifier(first), widget)));
    EXPECT_EQ(m_client.agent(), agent.status);
    EXPECT_EQ(m_changeCount, 1);

    m_client.requestAuthorization();
    ASSERT_TRUE(until([&] { return agent.authorizations == 1; }));
    agent.say({.reminders = {.authorization = AuthorizationStatus::denied,
                             .reason = "Switched off.",
                             .permissionErrorMessage = "A",
                             .schedulingErrorMessage = "B"}});
    ASSERT_TRUE(until([&] { return m_changeCount == 2; }));
    EXPECT_EQ(m_client.status(), agent.status.reminders) << "what a muted daemon takes is not seen";
    EXPECT_EQ(m_client.notifications().authorization(), AuthorizationStatus::denied);
    // Where nobody takes any, what the agent still holds was not seen; it has to know that.
    struct {
        std::optional<base::Instant> nextDue;
        bool isKnown;
        std::optional<base::Instant> waitingSince;
    } const cases[] = {
        {base::Instant{5}, true, base::Instant{5}},
        {std::nullopt, true, base::Instant::distantFuture()},
        {std::nullopt, false, std::nullopt},
    };
    for (const auto& each : cases) {
        const auto before = m_changeCount;
        agent.say({.reminders = {.reason = "Nobody is there."},
                   .nextDue = each.nextDue,
                   .isNextDueKnown = each.isKnown});
        ASSERT_TRUE(until([&] { return m_changeCount > before; }));
        EXPECT_EQ(m_client.status().waitingSince, each.waitingSince);
    }
    EXPECT_EQ(m_starts, 0);
}

TEST_F(AgentClientTest, AnAgentThatTheBusDoesNotKnowIsStartedAndAskedWhenItIsThere) {
    startDaemon();
    connect(m_bus);
    m_client.requestReconcile();
    ASSERT_TRUE(until([&] { return m_starts == 1; }));
    EXPECT_THAT(m_client.status().reason, IsEmpty());
    const base::Uuid todo{{3}};
    m_client.removePending({&todo, 1});
    {
        StandIn agent(m_loop, m_log);
        ASSERT_TRUE(until([&] { return m_client.agent().has_value(); }));
        EXPECT_THAT(agent.withdrawn, ElementsAre(::testing::SizeIs(1)));
    }
    // It ended, and is there again before long: by somebody's asking, at the latest by ours.
    ASSERT_TRUE(until([&] { return !m_client.agent(); }));
    EXPECT_EQ(m_client.status(), AgentClient::Status()) << "nobody knows";
    m_canStart = false;
    const auto startedBefore = m_starts;
    ASSERT_TRUE(patiently([&] { return m_starts > startedBefore; }));
    EXPECT_EQ(m_client.status().authorization, AuthorizationStatus::unavailable);
    EXPECT_THAT(m_client.status().reason, ::testing::HasSubstr("cannot be started"));
}

TEST_F(AgentClientTest, WithoutABusItSaysSoAndAsksWhenThereIsOne) {
    m_bus.start();
    const base::Uuid todo{{4}};
    m_client.removePending({&todo, 1});
    m_loop.runPosted();
    EXPECT_EQ(m_client.status(), (AgentClient::Status{.reason = "There is no session bus."}));

    startDaemon();
    std::optional<StandIn> agent(std::in_place, m_loop, m_log);
    ASSERT_TRUE(patiently([&] { return m_client.agent().has_value(); }));
    EXPECT_THAT(agent->withdrawn, ElementsAre(::testing::SizeIs(1)));

    for (const bool isAskedStill : {true, false}) {
        if (isAskedStill) { // what is asked on the bus's last moment is asked on the next one
            m_daemon->hang();
            m_client.requestReconcile();
            m_loop.runPosted();
            agent.reset();
        }
        killDaemon();
        ASSERT_TRUE(reaches(m_bus, Bus::State::waiting));
        EXPECT_EQ(m_client.status().reason, "There is no session bus.");
        startDaemon();
        agent.emplace(m_loop, m_log);
        ASSERT_TRUE(patiently([&] { return m_client.agent().has_value(); }));
        EXPECT_THAT(agent->withdrawn, ElementsAre(IsEmpty()));
    }
}

TEST_F(AgentClientTest, TheAgentOfAnotherStoreIsLeftAlone) {
    startDaemon();
    std::optional<StandIn> agent(std::in_place, m_loop, m_log);
    Bus bus(WhichBus::session, m_loop, m_log);
    int starts = 0;
    AgentClient other(
        bus, m_loop, "/elsewhere/Primary.store", [&] { return ++starts > 0; }, m_log);
    connect(bus);
    ASSERT_TRUE(until([&] { return agent->name->state() == NameClaim::State::owned; }));
    agent->say(agent->status);
    settle(agent->bus);
    settle(bus);
    EXPECT_EQ(other.status(), AgentClient::Status()) << "nobody has said yet of whom this is";
    other.requestReconcile();
    ASSERT_TRUE(until([&] { return !other.status().reason.empty(); }));
    EXPECT_THAT(other.status().reason, ::testing::HasSubstr("another store"));
    EXPECT_THAT(agent->withdrawn, IsEmpty());
    agent->say(agent->status);
    settle(agent->bus);
    settle(bus);
    EXPECT_THAT(other.status().reason, ::testing::HasSubstr("another store"))
        << "what it says is of its own";
    EXPECT_EQ(starts, 0);
    agent.reset();
    EXPECT_TRUE(patiently([&] { return starts > 0; })) << "ours can be there now";
}

TEST(AgentReminder, WhatIsToldOfOneIsReadAndWhatIsNoneIsNot) {
    const app::AgentReminder reminder{
        base::Uuid{{9}}, {12.5}, "Milk", app::AgentReminder::State::closed};
    EXPECT_EQ(agentReminderOf(toBus(reminder)), reminder);
    auto wrong = toBus(reminder);
    std::get<3>(wrong) = "lost";
    EXPECT_EQ(agentReminderOf(wrong), std::nullopt);
    EXPECT_EQ(agentReminderOf({"no-id", 1, "", "pending"}), std::nullopt);
    EXPECT_EQ(agentReminderOf({reminder.entryID.text(), std::nan(""), "", "pending"}),
              std::nullopt);
}

} // namespace
} // namespace korvex::platform::bus
