#include "platform/bus/PortalHotkeyBackend.h"

#include "BusFixture.h"
#include "MockPortal.h"
#include "app/GlobalHotkeyManager.h"
#include "app/Launch.h"

#include <gmock/gmock.h>

namespace korvex::platform::bus {
namespace {

using ::testing::ElementsAre;
using Shortcut = app::QuickEntryShortcut;
using State = app::HotkeyStatus::State;
using Kind = tests::MockPortal::Kind;

class PortalHotkeyBackendTest : public tests::BusFixture {
protected:
    void SetUp() override {
        manager.setOnPress(
            [this](const app::HotkeyPress& press) { tokens.push_back(press.activationToken); });
    }

    tests::MockPortal& startPortal(Kind kind = Kind::full) {
        desktop = std::make_unique<Bus>(WhichBus::session, m_loop, m_log);
        portal = std::make_unique<tests::MockPortal>(*desktop, kind);
        connect(*desktop);
        EXPECT_TRUE(m_loop.runUntil([&] { return portal->isThere(); }));
        return *portal;
    }
    void endPortal() {
        portal.reset();
        desktop.reset();
    }
    bool comesTo(const std::function<bool()>& condition) { return m_loop.runUntil(condition); }
    bool isBound() {
        return comesTo([this] { return manager.trigger().has_value(); });
    }
    bool isManaged() {
        return comesTo([this] { return manager.isManagedByDesktop(); });
    }

    std::unique_ptr<Bus> desktop;
    std::unique_ptr<tests::MockPortal> portal;
    PortalHotkeyBackend backend{"Open Quick Entry", m_loop, m_log};
    app::GlobalHotkeyManager manager{backend, m_log};
    std::vector<std::string> tokens;
};

TEST_F(PortalHotkeyBackendTest, IsBoundOnceAndPressedWithTheDesktopsLeave) {
    startDaemon();
    auto& there = startPortal();
    EXPECT_FALSE(manager.update({45, Shortcut::kCommand | Shortcut::kOption}));
    EXPECT_EQ(manager.issue(), std::nullopt) << "nobody has answered";
    ASSERT_TRUE(isBound());
    EXPECT_EQ(manager.trigger(), "Alt+Space");
    EXPECT_EQ(there.program(), app::kDesktopName);
    EXPECT_EQ(*find<std::string>(there.proposal, "description"), "Open Quick Entry");
    EXPECT_EQ(*find<std::string>(there.proposal, "preferred_trigger"), "CTRL+ALT+n");
    EXPECT_FALSE(manager.isRecordable());

    there.press("leave");
    ASSERT_TRUE(comesTo([this] { return !tokens.empty(); }));
    there.setTrigger("Meta+N");
    ASSERT_TRUE(comesTo([this] { return manager.trigger() == "Meta+N"; }));
    EXPECT_TRUE(manager.update({}));
    EXPECT_EQ(there.bindings, 1) << "the keys are the desktop's";
    EXPECT_THAT(tokens, ElementsAre("leave"));

    ASSERT_TRUE(comesTo([this] { return manager.hasDesktopSettings(); }));
    manager.openDesktopSettings();
    EXPECT_TRUE(comesTo([&] { return there.settingsOpened == 1; }));

    manager.pause();
    EXPECT_TRUE(comesTo([&] { return there.closings == 1; }));
    there.press("while nobody listens");
    settle(*desktop);
    manager.resume();
    EXPECT_TRUE(comesTo([&] { return there.bindings == 2; }));
    EXPECT_TRUE(isBound());
    EXPECT_THAT(tokens, ElementsAre("leave"));
}

TEST_F(PortalHotkeyBackendTest, WaitsAsLongAsTheUserThinksAndTakesNoForAnAnswer) {
    startDaemon();
    auto& there = startPortal(Kind::withoutRegistry);
    there.asksUser = true;
    manager.update({});
    ASSERT_TRUE(comesTo([&] { return there.bindings == 1; }));
    // That it is being asked is known by now.
    static_cast<void>(m_loop.runUntil([] { return false; }, std::chrono::milliseconds(100)));
    m_loop.advance(3600);
    EXPECT_FALSE(manager.isManagedByDesktop());
    there.answer(1);
    ASSERT_TRUE(comesTo([this] { return manager.issue().has_value(); }));
    EXPECT_EQ(manager.issue()->status, (app::HotkeyStatus{State::declined, 1}));
    m_loop.advance(3600);
    EXPECT_EQ(there.bindings, 1) << "nobody is asked twice";
    there.asksUser = false;
    manager.tryAgain();
    EXPECT_EQ(manager.issue(), std::nullopt);
    EXPECT_TRUE(isBound());
}

TEST_F(PortalHotkeyBackendTest, APortalThatLeavesTheShortcutOutIsAskedAgain) {
    startDaemon();
    auto& there = startPortal();
    there.bindsNothing = true;
    manager.update({});
    ASSERT_TRUE(comesTo([this] { return manager.issue().has_value(); }));
    there.bindsNothing = false;
    manager.tryAgain();
    EXPECT_TRUE(isBound());
    EXPECT_EQ(there.sessions, 2) << "a session binds once";
}

TEST_F(PortalHotkeyBackendTest, WhatBreaksOffIsNoAnswer) {
    startDaemon();
    auto& there = startPortal();
    manager.update({});
    ASSERT_TRUE(isBound());
    there.usersAnswer = 2; // it could not ask, as while the screen is locked
    there.endSession();
    ASSERT_TRUE(isManaged());
    EXPECT_EQ(manager.trigger(), std::nullopt);
    m_loop.advance(PortalHotkeyBackend::kFirstPause.count());
    ASSERT_TRUE(comesTo([&] { return there.bindings == 2 && there.closings == 1; }));
    EXPECT_EQ(manager.issue(), std::nullopt);
    EXPECT_TRUE(manager.isManagedByDesktop());
    there.usersAnswer = 0;
    m_loop.advance(PortalHotkeyBackend::kFirstPause.count());
    settle(*desktop);
    EXPECT_EQ(there.bindings, 2) << "not so soon again";
    m_loop.advance(PortalHotkeyBackend::kFirstPause.count());
    EXPECT_TRUE(isBound());
}

TEST_F(PortalHotkeyBackendTest, ASessionThatWasNotAnsweredInTimeIsNotLeftBehind) {
    startDaemon();
    auto& there = startPortal();
    there.isTooSlow = true;
    manager.update({});
    ASSERT_TRUE(comesTo([&] { return there.bindings == 1; }));
    m_loop.advance(Bus::kPatience.count());
    EXPECT_TRUE(comesTo([&] { return there.closings == 1; }));
    there.isTooSlow = false;
    m_loop.advance(PortalHotkeyBackend::kFirstPause.count());
    EXPECT_TRUE(isBound());
    EXPECT_EQ(there.sessions, 2);
}

TEST_F(PortalHotkeyBackendTest, WithoutSuchAPortalTheDesktopManagesIt) {
    manager.update({});
    EXPECT_TRUE(isManaged()) << "there is not even a bus";
    startDaemon();
    m_loop.advanceToNextTimer();
    endPortal();
    startPortal(Kind::withoutShortcuts);
    settle(*desktop);
    EXPECT_TRUE(isManaged());
    endPortal();
    startPortal();
    EXPECT_TRUE(isBound()) << "an update of the desktop has brought one";
}

TEST_F(PortalHotkeyBackendTest, OutlivesThePortalAndTheBus) {
    startDaemon();
    startPortal();
    manager.update({});
    ASSERT_TRUE(isBound());
    endPortal();
    ASSERT_TRUE(isManaged());
    EXPECT_EQ(manager.trigger(), std::nullopt);
    EXPECT_FALSE(m_loop.delays().empty()) << "it starts one itself, if it can, in a while";
    startPortal();
    ASSERT_TRUE(isBound());
    EXPECT_EQ(portal->program(), app::kDesktopName) << "the new one is told";
    portal->press("a");
    EXPECT_TRUE(comesTo([this] { return tokens.size() == 1; }));

    killDaemon();
    ASSERT_TRUE(isManaged());
    endPortal();
    startDaemon();
    startPortal();
    m_loop.advance(1);
    EXPECT_TRUE(isBound());
    portal->press("b");
    EXPECT_TRUE(comesTo([this] { return tokens.size() == 2; }));
}

} // namespace
} // namespace korvex::platform::bus
