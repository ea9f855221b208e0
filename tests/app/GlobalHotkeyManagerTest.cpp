#include "app/GlobalHotkeyManager.h"

#include "app/SettingsFile.h"
#include "support/RecordingLog.h"

#include <gtest/gtest.h>

#include <optional>
#include <vector>

namespace korvex::app {
namespace {

using State = HotkeyStatus::State;
using Kind = GlobalHotkeyManager::Issue::Kind;

constexpr QuickEntryShortcut kOther{40, QuickEntryShortcut::kOption | QuickEntryShortcut::kControl};
constexpr QuickEntryShortcut kCommandN{45, QuickEntryShortcut::kCommand};

/// A system that refuses what the test wants refused.
class SomeSystem final : public HotkeyBackend {
public:
    int installHandler() override {
        ++installs;
        return handlerFault;
    }
    HotkeyStatus registerShortcut(const QuickEntryShortcut& shortcut) override {
        asked.push_back(shortcut);
        return answer;
    }
    HotkeyStatus probe(const QuickEntryShortcut&) override { return answer; }
    void unregisterShortcut() override { asked.emplace_back(std::nullopt); }
    bool takesShortcuts() const override { return true; }
    KeyboardLayout& layout() override { return noLayout; }
    std::optional<std::uint32_t> keyCode(std::uint32_t) const override { return std::nullopt; }

    UnknownLayout noLayout;
    int handlerFault = 0;
    int installs = 0;
    HotkeyStatus answer{State::registered};
    /// Nothing where the shortcut was given back.
    std::vector<std::optional<QuickEntryShortcut>> asked;
};

class GlobalHotkeyManagerTest : public ::testing::Test {
protected:
    using Asked = std::vector<std::optional<QuickEntryShortcut>>;

    tests::RecordingLog log;
    SomeSystem system;
    GlobalHotkeyManager manager{system, log};
    int changes = 0;
    base::Subscription changed = manager.didChange().connect([this] { ++changes; });
};

TEST_F(GlobalHotkeyManagerTest, WhatConflictsOrIsInvalidNeverReachesTheSystem) {
    log.expectError("Quick Entry shortcut conflicts with an app command");
    log.expectError("Quick Entry shortcut is invalid");
    EXPECT_TRUE(manager.update({}));
    EXPECT_FALSE(manager.update(kCommandN));
    EXPECT_EQ(system.asked, (Asked{QuickEntryShortcut(), std::nullopt})) << "the former is free";
    EXPECT_EQ(manager.activeShortcut(), std::nullopt);
    EXPECT_EQ(manager.issue(), GlobalHotkeyManager::Issue{Kind::invalid});
    EXPECT_FALSE(manager.update({56, QuickEntryShortcut::kCommand}));
    EXPECT_EQ(manager.issue(), GlobalHotkeyManager::Issue{Kind::invalid});
    EXPECT_EQ(log.count("conflicts"), 1U);
    EXPECT_TRUE(manager.update({}));
    EXPECT_EQ(manager.issue(), std::nullopt);
}

TEST_F(GlobalHotkeyManagerTest, ARefusalLeavesTheFormerRemovedAndIsAskedForAnew) {
    log.expectError("Quick Entry shortcut unavailable: 10");
    EXPECT_TRUE(manager.update({}));
    EXPECT_TRUE(manager.update({}));
    EXPECT_EQ(system.asked, Asked{QuickEntryShortcut()}) << "nothing changes";
    system.answer = {State::conflict, 10};
    EXPECT_FALSE(manager.update(kOther));
    EXPECT_EQ(manager.activeShortcut(), std::nullopt);
    EXPECT_EQ(manager.issue(), (GlobalHotkeyManager::Issue{Kind::unavailable, system.answer}));
    EXPECT_FALSE(manager.update(kOther));
    EXPECT_EQ(changes, 2) << "the same refusal is no news";
    system.answer = {State::registered};
    EXPECT_TRUE(manager.update(kOther));
    EXPECT_EQ(manager.activeShortcut(), kOther);
    EXPECT_EQ(system.asked, (Asked{QuickEntryShortcut(), kOther, kOther, kOther}));
}

TEST_F(GlobalHotkeyManagerTest, WithoutAHandlerNothingIsRegistered) {
    log.expectError("Hot-key event handler unavailable: 1");
    system.handlerFault = 1;
    EXPECT_FALSE(manager.update({}));
    EXPECT_EQ(manager.issue(),
              (GlobalHotkeyManager::Issue{Kind::unavailable, {State::unavailable, 1}}));
    EXPECT_TRUE(system.asked.empty());
    EXPECT_TRUE(manager.freeAlternatives(3).empty());
    EXPECT_EQ(system.installs, 2) << "not once for each";
    system.handlerFault = 0;
    EXPECT_TRUE(manager.update({}));
}

TEST_F(GlobalHotkeyManagerTest, FollowsWhatTheSystemSaysLater) {
    log.expectError("Quick Entry shortcut unavailable: 10");
    std::vector<std::uint32_t> presses;
    manager.setOnPress([&](const HotkeyPress& press) { presses.push_back(press.timestamp); });
    system.didPress().emit({.timestamp = 1});
    manager.update({});
    system.didPress().emit({.timestamp = 2});
    system.didChangeStatus().emit({State::conflict, 10});
    EXPECT_EQ(manager.activeShortcut(), std::nullopt);
    EXPECT_TRUE(manager.issue());
    system.didPress().emit({.timestamp = 3});
    system.didChangeStatus().emit({State::registered});
    EXPECT_EQ(manager.activeShortcut(), QuickEntryShortcut());
    system.didPress().emit({.timestamp = 4});
    system.didChangeStatus().emit({State::unavailable, 10});
    const auto before = system.installs;
    EXPECT_TRUE(manager.update({}));
    EXPECT_EQ(system.installs, before + 1) << "what was lost is looked for again";
    EXPECT_EQ(presses, (std::vector<std::uint32_t>{2, 4})) << "while it is registered only";
}

TEST_F(GlobalHotkeyManagerTest, OnlyWhatCouldBeRegisteredIsFree) {
    const auto alternatives = QuickEntryShortcut::alternatives();
    EXPECT_EQ(manager.freeAlternatives(2), (std::vector{alternatives[0], alternatives[1]}));
    EXPECT_EQ(manager.issueOf(kCommandN), (GlobalHotkeyManager::Issue{Kind::invalid}));
    EXPECT_EQ(manager.issueOf(kOther), std::nullopt);
    EXPECT_TRUE(system.asked.empty());
    system.answer = {State::conflict, 10};
    EXPECT_TRUE(manager.freeAlternatives(2).empty());
    for (const auto& each : alternatives) {
        EXPECT_TRUE(each.isValid() && !each.conflictsWithAppCommand());
    }
}

TEST_F(GlobalHotkeyManagerTest, WhereTheDesktopManagesItThereIsNoIssue) {
    system.answer = {State::managedByDesktop};
    EXPECT_FALSE(manager.update({}));
    EXPECT_TRUE(manager.isManagedByDesktop());
    EXPECT_EQ(manager.issue(), std::nullopt);
    EXPECT_EQ(manager.activeShortcut(), std::nullopt);
}

TEST_F(GlobalHotkeyManagerTest, TakesTheDesktopsKeysWhichMayComeLater) {
    int presses = 0;
    manager.setOnPress([&](const HotkeyPress&) { ++presses; });
    system.answer = {State::asked};
    EXPECT_FALSE(manager.update({}));
    system.didPress().emit({});
    EXPECT_EQ(manager.issue(), std::nullopt);
    system.didChangeStatus().emit({.state = State::boundByDesktop, .trigger = "Alt+F9"});
    EXPECT_EQ(manager.trigger(), "Alt+F9");
    EXPECT_TRUE(manager.isReady() && !manager.activeShortcut());
    system.didPress().emit({});
    EXPECT_EQ(presses, 1);
    system.didChangeStatus().emit({State::declined, 1});
    EXPECT_FALSE(manager.isReady());
    EXPECT_TRUE(manager.issue());
    system.answer = {.state = State::boundByDesktop};
    manager.tryAgain();
    manager.tryAgain();
    EXPECT_EQ(manager.trigger(), "") << "for no keys yet";
    EXPECT_EQ(system.asked.size(), 2U) << "not for what it has";
}

TEST_F(GlobalHotkeyManagerTest, APauseGivesItBackForAsLong) {
    int presses = 0;
    manager.setOnPress([&](const HotkeyPress&) { ++presses; });
    manager.update({});
    manager.pause();
    system.didPress().emit({});
    EXPECT_EQ(presses, 0);
    EXPECT_EQ(manager.activeShortcut(), QuickEntryShortcut()) << "as it is told";
    manager.update(kOther);
    EXPECT_EQ(system.asked, (Asked{QuickEntryShortcut(), std::nullopt})) << "not yet";
    manager.resume();
    EXPECT_EQ(manager.activeShortcut(), kOther);
    system.didPress().emit({});
    EXPECT_EQ(presses, 1);

    manager.pause();
    manager.update({});
    manager.update(kOther);
    manager.resume();
    EXPECT_EQ(manager.activeShortcut(), kOther) << "what was asked for last";
}

TEST_F(GlobalHotkeyManagerTest, FollowsThePreferenceUntilItEnds) {
    const tests::SettingsFile file;
    auto defaults = file.open();
    AppPreferences preferences(defaults, log);
    {
        GlobalHotkeyManager following(system, log);
        EXPECT_TRUE(following.follow(preferences));
        preferences.setQuickEntryDefaultType(model::EntryType::text);
        preferences.setQuickEntryShortcut(kOther);
        EXPECT_EQ(following.activeShortcut(), kOther);
    }
    preferences.setQuickEntryShortcut({});
    EXPECT_EQ(system.asked, (Asked{QuickEntryShortcut(), kOther, std::nullopt}));
}

} // namespace
} // namespace korvex::app
