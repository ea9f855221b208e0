#include "BusFixture.h"

#include "platform/bus/NameWatch.h"
#include "platform/bus/OfferedObject.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <functional>
#include <utility>

namespace korvex::platform::bus {
namespace {

using State = Bus::State;

class BusTest : public tests::BusFixture {
protected:
    /// Calls a method of `other`, which has to live.
    [[nodiscard]] base::Subscription ask(Bus& bus, const Bus& other, const char* member,
                                         Bus::Answer answer) {
        return bus.call({.destination = other.uniqueName(),
                         .path = "/test",
                         .interface = "test.Object",
                         .member = member},
                        {}, std::move(answer));
    }

    Bus m_bus{WhichBus::session, m_loop, m_log};
};

TEST_F(BusTest, WithoutABusCallsFailLaterAndItIsLookedForLessAndLessOften) {
    std::optional<BusErrorCase> which;
    const auto early = m_bus.call({"a.b", "/", "a.b", "C"}, {},
                                  [&](const Reply& reply) { which = reply.error()->which(); });
    EXPECT_FALSE(which) << "not from within the call";
    m_loop.runPosted();
    EXPECT_EQ(which, BusErrorCase::noBus) << "before the start";

    m_bus.start();
    EXPECT_EQ(m_bus.state(), State::waiting);
    std::vector<double> pauses;
    for (int i = 0; i < 12; ++i) {
        pauses.push_back(std::round(m_loop.delays().at(0) * 1000));
        m_loop.advanceToNextTimer();
    }
    EXPECT_EQ(pauses, (std::vector<double>{100, 200, 400, 800, 1600, 3200, 6400, 12800, 25600,
                                           30000, 30000, 30000}));
    EXPECT_FALSE(m_bus.emit({"/", "a.b", "C"}));
    EXPECT_FALSE(m_bus.send({"a.b", "/", "a.b", "C"}));

    std::ofstream(socket()) << "no socket";
    m_loop.advanceToNextTimer();
    EXPECT_TRUE(reaches(m_bus, State::waiting));
    std::filesystem::remove(socket());
    startDaemon();
    m_loop.advanceToNextTimer();
    EXPECT_TRUE(reaches(m_bus, State::connected));
}

TEST_F(BusTest, AnAddressThatIsNoneIsAsGoodAsNoBus) {
    for (const char* address : {"nonsense", "unix:", "autolaunch:", "unix:path=/nowhere/bus",
                                "unix:path=/dev/null;unix:path=/nowhere"}) {
        SCOPED_TRACE(address);
        const tests::ScopedEnvironment set("DBUS_SESSION_BUS_ADDRESS", address);
        Bus bus(WhichBus::session, m_loop, m_log);
        bus.start();
        EXPECT_TRUE(reaches(bus, State::waiting));
    }
    startDaemon();
    const tests::ScopedEnvironment second("DBUS_SESSION_BUS_ADDRESS",
                                          "unix:path=/nowhere/bus;" + m_daemon->address());
    connect(m_bus);
}

TEST_F(BusTest, ABusThatEndsFailsWhatWaitsAndTheNextOneIsFoundSoon) {
    startDaemon();
    Bus slow(WhichBus::session, m_loop, m_log);
    connect(slow);
    connect(m_bus);
    std::vector<IncomingCall> kept;
    const OfferedObject object(
        slow, "/test",
        {.name = "test.Object", .methods = {Interface::method<>("Keep", [&](IncomingCall& call) {
                                    kept.push_back(std::move(call));
                                })}});
    std::vector<BusErrorCase> failures;
    std::vector<base::Subscription> again;
    const auto asked = ask(m_bus, slow, "Keep", [&](const Reply& reply) {
        failures.push_back(reply.error()->which());
        again.push_back(ask(m_bus, slow, "Keep", [&](const Reply& second) {
            failures.push_back(second.error()->which());
        }));
    });
    ASSERT_TRUE(m_loop.runUntil([&] { return kept.size() == 1; }));
    m_loop.advance(6); // it has held
    killDaemon();
    EXPECT_TRUE(m_loop.runUntil([&] { return failures.size() == 2; }));
    EXPECT_EQ(failures, (std::vector{BusErrorCase::noBus, BusErrorCase::noBus}));
    kept.front().reply(); // nobody is there to get it
    startDaemon();
    m_loop.advance(0.1);
    EXPECT_TRUE(reaches(m_bus, State::connected));
}

TEST_F(BusTest, WhoDoesNotAnswerIsWaitedForNoLongerThanTheLimit) {
    startDaemon();
    Bus slow(WhichBus::session, m_loop, m_log);
    connect(slow);
    connect(m_bus);
    std::vector<IncomingCall> kept;
    const OfferedObject object(
        slow, "/test",
        {.name = "test.Object",
         .methods = {Interface::method<>(
                         "Keep", [&](IncomingCall& call) { kept.push_back(std::move(call)); }),
                     Interface::method<>("Forget", [](IncomingCall&) {}),
                     Interface::method<>("Refuse", [](IncomingCall&) {
                         throw base::Error("Korvex.Test", 1, "Not today.");
                     })}});
    std::vector<std::string> answers;
    const auto note = [&](const Reply& reply) {
        answers.push_back(reply.error() ? reply.error()->errorDescription() : "done");
    };
    const auto late = ask(m_bus, slow, "Keep", note);
    auto unwanted = ask(m_bus, slow, "Keep", note);
    const auto forgotten = ask(m_bus, slow, "Forget", note);
    const auto refused = ask(m_bus, slow, "Refuse", note);
    ASSERT_TRUE(m_loop.runUntil([&] { return kept.size() == 2 && answers.size() == 2; }));
    unwanted.cancel();
    m_loop.advance(9.5);
    EXPECT_EQ(answers.size(), 2U);
    m_loop.advance(1);
    for (auto& call : kept) {
        call.reply();
    }
    settle(slow);
    settle(m_bus);
    EXPECT_EQ(answers,
              (std::vector<std::string>{
                  "The answer was an error. org.freedesktop.DBus.Error.Failed: The call was not "
                  "carried out.",
                  "The answer was an error. org.freedesktop.DBus.Error.Failed: Not today.",
                  "There was no answer in time."}));

    std::optional<BusError> nobody;
    const auto asked = m_bus.call({.destination = "dev.korvex.Nobody",
                                   .path = "/",
                                   .interface = "a.b",
                                   .member = "C",
                                   .start = MethodAddress::Start::never},
                                  {}, [&](const Reply& reply) { nobody = *reply.error(); });
    EXPECT_TRUE(m_loop.runUntil([&] { return nobody.has_value(); }));
    EXPECT_TRUE(nobody->isAboutNobody()) << nobody->name();
}

TEST_F(BusTest, ABusThatHangsHoldsNothingUp) {
    startDaemon();
    connect(m_bus);
    Bus heavy(WhichBus::session, m_loop, m_log);
    connect(heavy);
    m_daemon->hang();
    const auto start = std::chrono::steady_clock::now();
    int sent = 0;
    while (m_bus.emit({"/", "test.Object", "Said"}, arguments(std::string(10'000, 'x')))) {
        ++sent;
    }
    EXPECT_GT(sent, 1000);
    EXPECT_LT(sent, 10'000) << "what waits is bounded";
    int large = 0;
    while (large < 100 &&
           heavy.emit({"/", "test.Object", "Said"}, arguments(std::string(1'000'000, 'x')))) {
        ++large;
    }
    EXPECT_LT(large, 50) << "in bytes too, beyond what the system takes";
    std::optional<BusErrorCase> which;
    const auto asked = m_bus.call({"a.b", "/", "a.b", "C"}, {},
                                  [&](const Reply& reply) { which = reply.error()->which(); });
    m_loop.runPosted();
    EXPECT_EQ(which, BusErrorCase::busy);

    Bus another(WhichBus::session, m_loop, m_log);
    another.start();
    EXPECT_FALSE(
        m_loop.runUntil([&] { return another.isConnected(); }, std::chrono::milliseconds(20)));
    m_loop.advance(10);
    EXPECT_TRUE(reaches(another, State::waiting)) << "it is not waited for for ever";
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));

    m_daemon->wake();
    EXPECT_TRUE(m_loop.runUntil([&] { return !m_bus.hasUnsent(); }));
    m_loop.advance(1);
    EXPECT_TRUE(reaches(another, State::connected));
}

TEST_F(BusTest, ManySignalsLeaveTimeForOtherWork) {
    startDaemon();
    Bus loud(WhichBus::session, m_loop, m_log);
    connect(loud);
    connect(m_bus);
    int heard = 0;
    const auto hearing = m_bus.match({.interface = "test.Object"}, [&](const auto&) { ++heard; });
    settle(m_bus);
    constexpr int kMany = 500;
    int before = 0;
    int most = 0;
    std::function<void()> otherWork = [&] {
        most = std::max(most, heard - std::exchange(before, heard));
        if (heard < kMany) {
            m_loop.post(otherWork);
        }
    };
    for (int i = 0; i < kMany; ++i) {
        ASSERT_TRUE(loud.emit({"/", "test.Object", "Said"}));
    }
    otherWork();
    EXPECT_TRUE(m_loop.runUntil([&] { return heard == kMany; }));
    EXPECT_LE(most, 100);
}

TEST_F(BusTest, WhatComesWhileAHandlerRunsTheLoopWaitsUntilItIsDone) {
    startDaemon();
    Bus loud(WhichBus::session, m_loop, m_log);
    connect(loud);
    connect(m_bus);
    std::vector<std::uint32_t> heard;
    std::size_t within = 0;
    const auto hearing =
        m_bus.match({.interface = "test.Object"}, [&](const IncomingSignal& signal) {
            heard.push_back(signal.read<std::uint32_t>());
            if (heard.size() == 1) { // as a question to the user does
                m_loop.runUntil([] { return false; }, std::chrono::milliseconds(30));
                within = heard.size();
            }
        });
    settle(m_bus);
    for (const std::uint32_t number : {1U, 2U, 3U}) {
        ASSERT_TRUE(loud.emit({"/", "test.Object", "Said"}, arguments(number)));
    }
    EXPECT_TRUE(m_loop.runUntil([&] { return heard.size() == 3; }));
    EXPECT_EQ(within, 1U);
    EXPECT_EQ(heard, (std::vector<std::uint32_t>{1, 2, 3}));
    EXPECT_TRUE(m_bus.isConnected());
}

TEST_F(BusTest, PropertiesAreReadAndTheirChangesTold) {
    startDaemon();
    Bus owner(WhichBus::session, m_loop, m_log);
    connect(owner);
    connect(m_bus);
    std::uint32_t count = 1;
    OfferedObject object(
        owner, "/test",
        {.name = "test.Object",
         .properties = {Interface::property<std::uint32_t>("Count", [&] { return count; })},
         .signals = {{.name = "Said", .carries = "s"}}});
    std::vector<std::uint32_t> told;
    const auto take = [&](const Dictionary& values) {
        if (const auto* const value = find<std::uint32_t>(values, "Count")) {
            told.push_back(*value);
        }
    };
    const auto following =
        m_bus.match({.interface = "org.freedesktop.DBus.Properties", .member = "PropertiesChanged"},
                    [&](const IncomingSignal& signal) {
                        take(std::get<1>(signal.read<std::string, Dictionary>()));
                    });
    const auto asked = m_bus.call({.destination = owner.uniqueName(),
                                   .path = "/test",
                                   .interface = "org.freedesktop.DBus.Properties",
                                   .member = "GetAll"},
                                  arguments("test.Object"),
                                  [&](const Reply& reply) { take(reply.read<Dictionary>()); });
    ASSERT_TRUE(m_loop.runUntil([&] { return told.size() == 1; }));
    count = 2;
    object.propertyChanged("Count");
    ASSERT_TRUE(m_loop.runUntil([&] { return told.size() == 2; }));
    EXPECT_EQ(told, (std::vector<std::uint32_t>{1, 2}));
}

TEST_F(BusTest, AHandlerMayEndWhateverItBelongsTo) {
    startDaemon();
    Bus other(WhichBus::session, m_loop, m_log);
    connect(other);
    struct Owner {
        std::optional<Bus> bus;
        base::Subscription asked;
        base::Subscription hearing;
        std::optional<OfferedObject> object;
    };
    enum class From { answer, signal, method, state };
    for (const auto from : {From::answer, From::signal, From::method, From::state}) {
        SCOPED_TRACE(static_cast<int>(from));
        auto owner = std::make_unique<Owner>();
        auto& bus = owner->bus.emplace(WhichBus::session, m_loop, m_log);
        base::Subscription states;
        // The bus goes first of all.
        const auto end = [&] {
            owner->object.reset();
            owner->bus.reset();
            owner.reset();
        };
        if (from == From::state) {
            states = bus.stateChanged().connect([&](State state) {
                if (state == State::connected) {
                    end();
                }
            });
            bus.start();
        } else {
            connect(bus);
            owner->hearing = bus.match({.interface = "test.Object"}, [&](const auto&) { end(); });
            owner->object.emplace(
                bus, "/test",
                Interface{.name = "test.Object",
                          .methods = {Interface::method<>("End", [&](IncomingCall&) { end(); })}});
            settle(bus);
        }
        if (from == From::answer) {
            owner->asked =
                bus.call({"org.freedesktop.DBus", "/", "org.freedesktop.DBus.Peer", "Ping"}, {},
                         [&](const auto&) { end(); });
        } else if (from == From::signal) {
            other.emit({"/", "test.Object", "Said"});
        } else if (from == From::method) {
            other.send({bus.uniqueName(), "/test", "test.Object", "End"});
        }
        EXPECT_TRUE(m_loop.runUntil([&] { return !owner; }));
        settle(other);
    }
}

} // namespace
} // namespace korvex::platform::bus
