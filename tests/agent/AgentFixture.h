#pragma once

#include "RecordingDaemon.h"
#include "agent/ReminderAgent.h"
#include "model/Entry.h"
#include "platform/bus/AgentProtocol.h"
#include "platform/bus/BusFixture.h"
#include "storage/StoreStart.h"
#include "support/FakeClock.h"

#include <gmock/gmock.h>

namespace korvex::agent {

/// In 2096: the timer of the machine's own clock, which waits for it, is out of the way.
inline constexpr base::Instant kNow{3'000'000'000};

/// The agent with all its parts on a real bus; its clock is set by hand.
class AgentFixture : public tests::BusFixture {
protected:
    using AgentReminder = app::AgentReminder;
    using Tells = tests::RecordingDaemon::Tells;

    AgentFixture() { m_daemon.emplace(socket(), m_folder / "services"); }

    std::filesystem::path storeFile() const { return m_folder / "data" / "Primary.store"; }
    void prepareStore() {
        m_store = storage::StoreStart::open({.storeFile = storeFile(), .now = kNow}, m_log);
    }
    base::Uuid add(const std::string& content, double after) {
        const auto id = base::Uuid::random();
        m_store.context->insert(std::make_unique<model::Entry>(
            model::EntryFields{.id = id,
                               .typeRawValue = "todo",
                               .content = content,
                               .createdAt = m_clock.now(),
                               .updatedAt = m_clock.now(),
                               .reminderDate = m_clock.now() + after}));
        m_store.context->save();
        return id;
    }
    bool isCompleted(const base::Uuid& id) {
        m_store.context->refresh();
        return m_store.context->find<model::Entry>(id)->isCompleted();
    }

    void startAgent() {
        m_bus.emplace(platform::bus::WhichBus::session, m_loop, m_log);
        m_agent.emplace(ReminderAgent::Surroundings{
            .bus = *m_bus,
            .runLoop = m_loop,
            .clock = m_clock,
            .log = m_log,
            .storeFile = storeFile(),
            .tableFile = m_folder / "state" / "reminders.sqlite",
            .version = "1",
            .startDesktop = [this](const std::string& link, const std::string& token) {
                m_started.push_back(link + " " + token);
                return m_canStart;
            }});
        m_name.emplace(*m_bus, platform::bus::kAgentName);
        connect(*m_bus);
        m_agent->begin();
    }
    void endAgent() {
        m_name.reset();
        m_agent.reset();
        m_bus.reset();
    }
    void startNotifications() {
        m_notifications.emplace(m_loop, m_log, m_capabilities);
        ASSERT_TRUE(m_loop.runUntil([&] { return m_notifications->isThere(); }));
    }
    /// Over a store, with somebody who shows what it has to show.
    void startAll() {
        prepareStore();
        startNotifications();
        startAgent();
        settleAgent();
    }
    /// One that does something only while its own loop runs, as a process that is stopped at times.
    void startStoppedNotifications() {
        m_notifications.emplace(m_otherLoop, m_log);
        ASSERT_TRUE(m_otherLoop.runUntil([&] { return m_notifications->isThere(); }));
    }
    void letNotificationsRun() {
        for (int i = 0; i < 5; ++i) {
            m_otherLoop.runUntil([] { return false; }, std::chrono::milliseconds(20));
            settleAgent();
        }
    }
    /// The clock jumps, by itself or by hand; the agent is told.
    void setClock(double seconds) {
        m_clock.advance(seconds);
        m_agent->timeChanged();
    }
    bool shows(std::size_t count) {
        return patiently([&] { return m_notifications->shown().size() == count; });
    }
    /// Whatever is under way comes to its end.
    void settleAgent() {
        for (int i = 0; i < 5; ++i) {
            m_loop.advance(0.1);
            settle(*m_bus);
        }
    }
    /// Asked by another program.
    template <typename Take>
    void ask(const char* method, const platform::bus::Arguments& sent, Take&& take) {
        Bus bus(platform::bus::WhichBus::session, m_loop, m_log);
        connect(bus);
        bool isAnswered = false;
        const auto asked =
            bus.call(platform::bus::agentMethod(method, platform::bus::MethodAddress::Start::never),
                     sent, [&](const auto& reply) {
                         take(reply);
                         isAnswered = true;
                     });
        ASSERT_TRUE(m_loop.runUntil([&] { return isAnswered; }));
    }
    app::AgentStatus status() {
        app::AgentStatus status;
        ask(platform::bus::agent_method::kGetStatus, platform::bus::arguments(std::string()),
            [&](const auto& reply) {
                status =
                    platform::bus::agentStatusOf(reply.template read<platform::bus::Dictionary>());
            });
        return status;
    }
    std::vector<app::AgentReminder> reminders() {
        std::vector<app::AgentReminder> reminders;
        ask(platform::bus::agent_method::kList, platform::bus::arguments(std::string()),
            [&](const auto& reply) { reminders = platform::bus::agentRemindersOf(reply).listed; });
        return reminders;
    }

    tests::FakeClock m_clock{kNow};
    std::vector<std::string> m_capabilities{"actions", "body", "body-markup"};
    std::vector<std::string> m_started;
    bool m_canStart = true;
    storage::StartedStore m_store;
    tests::FakeRunLoop m_otherLoop;
    std::optional<tests::RecordingDaemon> m_notifications;
    std::optional<Bus> m_bus;
    std::optional<ReminderAgent> m_agent;
    std::optional<platform::bus::NameClaim> m_name;
};

} // namespace korvex::agent
