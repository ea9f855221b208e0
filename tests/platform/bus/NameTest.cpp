#include "BusFixture.h"

#include "platform/bus/NameClaim.h"
#include "platform/bus/OfferedObject.h"
#include "platform/bus/SleepWatcher.h"

#include <chrono>
#include <thread>

namespace korvex::platform::bus {
namespace {

using State = NameClaim::State;

constexpr const char* kName = "dev.korvex.Test";

class NameTest : public tests::BusFixture {
protected:
    NameTest() { startDaemon(); }
    bool reaches(const NameClaim& claim, State state) {
        return m_loop.runUntil([&] { return claim.state() == state; });
    }

    Bus m_first{WhichBus::session, m_loop, m_log};
    Bus m_second{WhichBus::session, m_loop, m_log};
};

TEST_F(NameTest, ATakenNameSaysWhoseItIsAndIsOursOnceItIsFree) {
    connect(m_first);
    connect(m_second);
    std::vector<std::string> owners;
    NameWatch watch(m_second, kName);
    const auto watching =
        watch.changed().connect([&](const std::string& owner) { owners.push_back(owner); });
    ASSERT_TRUE(m_loop.runUntil([&] { return watch.isKnown(); }));
    std::optional<NameClaim> first(std::in_place, m_first, kName);
    ASSERT_TRUE(reaches(*first, State::owned));
    NameClaim second(m_second, kName);
    ASSERT_TRUE(reaches(second, State::taken));
    EXPECT_EQ(second.owner(), m_first.uniqueName());

    first.reset();
    ASSERT_TRUE(reaches(second, State::owned));
    first.emplace(m_first, kName);
    ASSERT_TRUE(reaches(*first, State::taken));
    ASSERT_TRUE(m_loop.runUntil([&] { return watch.owner() == m_second.uniqueName(); }));
    EXPECT_EQ(owners,
              (std::vector<std::string>{"", m_first.uniqueName(), "", m_second.uniqueName()}));
}

TEST_F(NameTest, TheNameOfAProgramThatWasKilledGoesToWhoWaitsForIt) {
    const auto child = ::fork();
    if (child == 0) {
        tests::FakeRunLoop loop;
        Bus bus(WhichBus::session, loop, m_log);
        const NameClaim theirs(bus, kName);
        bus.start();
        loop.runUntil([] { return false; }, std::chrono::seconds(60));
        ::_exit(0);
    }
    connect(m_first);
    const NameWatch watch(m_first, kName);
    ASSERT_TRUE(m_loop.runUntil([&] { return !watch.owner().empty(); }));
    const NameClaim ours(m_first, kName);
    EXPECT_TRUE(reaches(ours, State::taken));
    ::kill(child, SIGKILL);
    ::waitpid(child, nullptr, 0);
    EXPECT_TRUE(reaches(ours, State::owned));
}

TEST_F(NameTest, AnotherBusGetsTheNameTheObjectAndTheMatchesAgain) {
    NameClaim claim(m_first, kName);
    std::vector<State> states;
    const auto following = claim.changed().connect([&](State state) { states.push_back(state); });
    int calls = 0;
    const OfferedObject object(
        m_first, "/test",
        {.name = "test.Object", .methods = {Interface::method<>("Count", [&](IncomingCall& call) {
                                    ++calls;
                                    call.reply();
                                })}});
    int heard = 0;
    const auto hearing = m_first.match({.interface = "test.Object", .member = "Said"},
                                       [&](const auto&) { ++heard; });
    connect(m_first);
    for (int round = 1; round <= 3; ++round) {
        SCOPED_TRACE(round);
        ASSERT_TRUE(reaches(claim, State::owned));
        Bus other(WhichBus::session, m_loop, m_log);
        connect(other);
        settle(m_first); // its matches stand
        EXPECT_TRUE(other.send({.destination = kName,
                                .path = "/test",
                                .interface = "test.Object",
                                .member = "Count"}));
        EXPECT_TRUE(other.emit({.path = "/x", .interface = "test.Object", .member = "Said"}));
        EXPECT_TRUE(m_loop.runUntil([&] { return calls == round && heard == round; }));

        killDaemon();
        ASSERT_TRUE(tests::BusFixture::reaches(m_first, Bus::State::waiting));
        EXPECT_EQ(claim.state(), State::open);
        EXPECT_TRUE(claim.owner().empty());
        startDaemon();
        m_loop.advance(1);
    }
    EXPECT_EQ(states, (std::vector{State::owned, State::open, State::owned, State::open,
                                   State::owned, State::open}));
}

TEST_F(NameTest, ANameThatTheBusGivesToNobodyIsRefused) {
    connect(m_first);
    const NameClaim none(m_first, "org.freedesktop.DBus");
    EXPECT_TRUE(reaches(none, State::refused));
}

TEST_F(NameTest, OnlyWhoHasTheNameIsHeardUnderIt) {
    connect(m_first);
    connect(m_second);
    Bus stranger(WhichBus::session, m_loop, m_log);
    connect(stranger);
    std::vector<std::string> heard;
    const auto listening = m_first.match(
        {.sender = kName, .interface = "test.Object"},
        [&](const IncomingSignal& signal) { heard.push_back(signal.read<std::string>()); });
    const NameClaim claim(m_second, kName);
    ASSERT_TRUE(reaches(claim, State::owned));
    settle(m_first);
    const SignalAddress toUs{.path = "/x",
                             .interface = "test.Object",
                             .member = "Said",
                             .destination = m_first.uniqueName()};
    EXPECT_TRUE(stranger.emit({.path = "/org/freedesktop/DBus",
                               .interface = "org.freedesktop.DBus",
                               .member = "NameOwnerChanged",
                               .destination = m_first.uniqueName()},
                              arguments(kName, m_second.uniqueName(), stranger.uniqueName())));
    EXPECT_TRUE(stranger.emit(toUs, arguments("of a stranger")));
    settle(stranger);
    settle(m_first);
    EXPECT_TRUE(m_second.emit(toUs, arguments("to us")));
    EXPECT_TRUE(m_second.emit({.path = "/x", .interface = "test.Object", .member = "Said"},
                              arguments("to all")));
    EXPECT_TRUE(m_loop.runUntil([&] { return heard.size() >= 2; }));
    EXPECT_EQ(heard, (std::vector<std::string>{"to us", "to all"}));

    // What lies there already when it is asked for, and who has the name is not known yet.
    EXPECT_TRUE(stranger.emit(toUs, arguments("of a stranger")));
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    std::vector<std::string> heardAnew;
    const auto listeningAnew = m_first.match(
        {.sender = kName, .interface = "test.Object"},
        [&](const IncomingSignal& signal) { heardAnew.push_back(signal.read<std::string>()); });
    settle(m_first);
    EXPECT_TRUE(m_second.emit(toUs, arguments("to us")));
    EXPECT_TRUE(m_loop.runUntil([&] { return !heardAnew.empty(); }));
    EXPECT_EQ(heardAnew, std::vector<std::string>{"to us"});
}

TEST_F(NameTest, WhatABusAnswersTooLateIsFoundOutAfterAll) {
    connect(m_first);
    connect(m_second);
    const NameClaim theirs(m_second, "dev.korvex.Taken");
    ASSERT_TRUE(reaches(theirs, State::owned));
    m_daemon->hang();
    const NameClaim ours(m_first, kName);
    const NameClaim taken(m_first, "dev.korvex.Taken");
    m_loop.advance(Bus::kPatience.count());
    EXPECT_EQ(ours.state(), State::open);
    m_daemon->wake();
    EXPECT_TRUE(reaches(ours, State::owned)) << "the bus has given it all the same";
    EXPECT_EQ(taken.state(), State::open);
    m_loop.advance(kAskAgain.count());
    EXPECT_TRUE(reaches(taken, State::taken));
    EXPECT_TRUE(m_loop.runUntil([&] { return taken.owner() == m_second.uniqueName(); }));
}

TEST_F(NameTest, SleepIsToldByTheLoginManagerOfTheSystemsBus) {
    const tests::SessionBus system(m_folder / "system");
    const tests::ScopedEnvironment address("DBUS_SYSTEM_BUS_ADDRESS", system.address());
    Bus manager(WhichBus::system, m_loop, m_log);
    connect(manager);
    const NameClaim name(manager, "org.freedesktop.login1");
    Bus bus(WhichBus::system, m_loop, m_log);
    SleepWatcher watcher(bus);
    std::vector<std::string> told;
    const auto sleeping = watcher.fallingAsleep().connect([&] { told.emplace_back("sleep"); });
    const auto waking = watcher.woken().connect([&] { told.emplace_back("wake"); });
    connect(bus);
    ASSERT_TRUE(reaches(name, State::owned));
    settle(bus);
    for (const bool isStarting : {true, false}) {
        EXPECT_TRUE(manager.emit({.path = "/org/freedesktop/login1",
                                  .interface = "org.freedesktop.login1.Manager",
                                  .member = "PrepareForSleep"},
                                 arguments(isStarting)));
    }
    EXPECT_TRUE(m_loop.runUntil([&] { return told.size() >= 2; }));
    EXPECT_EQ(told, (std::vector<std::string>{"sleep", "wake"}));
}

} // namespace
} // namespace korvex::platform::bus
