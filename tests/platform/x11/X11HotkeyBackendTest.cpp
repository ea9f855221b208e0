#include "platform/x11/X11HotkeyBackend.h"

#include "app/GlobalHotkeyManager.h"
#include "support/FakeRunLoop.h"
#include "support/Program.h"
#include "support/RecordingLog.h"
#include "support/XServer.h"

#include <gmock/gmock.h>

#include <chrono>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace korvex::platform::x11 {
namespace {

using namespace std::chrono_literals;
using app::HotkeyStatus;
using Shortcut = app::QuickEntryShortcut;
using ::testing::ElementsAre;
using ::testing::SizeIs;
using State = HotkeyStatus::State;
using Kind = app::GlobalHotkeyManager::Issue::Kind;

/// Another program on the same server.
class OtherClient {
public:
    explicit OtherClient(const std::string& display)
        : m_connection(xcb_connect(display.c_str(), nullptr)),
          m_root(xcb_setup_roots_iterator(xcb_get_setup(get())).data->root) {
        const Answer<xcb_xkb_use_extension_reply_t> reply(
            xcb_xkb_use_extension_reply(get(), xcb_xkb_use_extension(get(), 1, 0), nullptr));
    }

    /// 0, or the server's refusal.
    int grab(xcb_keycode_t keycode, std::uint16_t modifiers) {
        const Answer<xcb_generic_error_t> error(xcb_request_check(
            get(), xcb_grab_key_checked(get(), 0, m_root, modifiers, keycode, XCB_GRAB_MODE_ASYNC,
                                        XCB_GRAB_MODE_ASYNC)));
        return error ? error->error_code : 0;
    }
    void ungrab() {
        xcb_ungrab_key(get(), XCB_GRAB_ANY, m_root, XCB_MOD_MASK_ANY);
        sync();
    }
    /// What a window manager does that has just started.
    void becomeWindowManager() {
        const Answer<xcb_intern_atom_reply_t> atom(xcb_intern_atom_reply(
            get(), xcb_intern_atom(get(), 0, 24, "_NET_SUPPORTING_WM_CHECK"), nullptr));
        xcb_change_property(get(), XCB_PROP_MODE_REPLACE, m_root, atom->atom, XCB_ATOM_WINDOW, 32,
                            1, &m_root);
        sync();
    }
    void lockGroup(std::uint8_t group) {
        xcb_xkb_latch_lock_state(get(), XCB_XKB_ID_USE_CORE_KBD, 0, 0, 1, group, 0, 0, 0);
        sync();
    }

private:
    xcb_connection_t* get() const { return m_connection.get(); }
    void sync() {
        const Answer<xcb_get_input_focus_reply_t> reply(
            xcb_get_input_focus_reply(get(), xcb_get_input_focus(get()), nullptr));
    }

    Connection m_connection;
    xcb_window_t m_root;
};

constexpr xcb_keycode_t kSpaceKey = 65;
constexpr std::uint16_t kAltBit = XCB_MOD_MASK_1;
constexpr std::uint16_t kNumLockBit = XCB_MOD_MASK_2;
constexpr const char* kRefused = "Quick Entry shortcut unavailable: 10";

/// One that has Alt + Space for a menu of its own, as many have.
class WindowManager {
public:
    explicit WindowManager(const std::string& display)
        : m_display(display), m_process(tests::start({"env", "DISPLAY=" + display, "openbox"})) {}
    ~WindowManager() {
        ::kill(m_process, SIGTERM);
        ::waitpid(m_process, nullptr, 0);
    }
    WindowManager(const WindowManager&) = delete;
    WindowManager& operator=(const WindowManager&) = delete;

    /// Waits until it has. Seldom looked at: looking takes the key for a moment.
    bool hasAltSpace() const {
        for (int i = 0; i < 30; ++i) {
            std::this_thread::sleep_for(500ms);
            if (OtherClient(m_display).grab(kSpaceKey, kAltBit) == XCB_ACCESS) {
                return true;
            }
        }
        return false;
    }

private:
    std::string m_display;
    pid_t m_process;
};

class X11HotkeyBackendTest : public ::testing::Test {
protected:
    void SetUp() override {
        manager.setOnPress([this](const app::HotkeyPress& press) { presses.push_back(press); });
    }

    void xdotool(std::vector<std::string> arguments) { command("xdotool", std::move(arguments)); }
    void command(const std::string& program, std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), {"env", "DISPLAY=" + server.display(), program});
        ASSERT_EQ(tests::run(arguments), 0) << program;
    }

    /// Lets events come until nothing has come for a while, and what they started end.
    void settle() {
        const auto end =
            std::chrono::steady_clock::now() + 1s; // of a key that repeats there is none
        do {
            runLoop.advance(0);
        } while (takesEvents(100ms) && std::chrono::steady_clock::now() < end);
        runLoop.advance(2 * X11HotkeyBackend::kQuiet.count());
    }
    bool takesEvents(std::chrono::milliseconds patience) {
        const auto before = runLoop.readyCount();
        return runLoop.runUntil([&] { return runLoop.readyCount() > before; }, patience);
    }
    /// How many presses that made.
    std::size_t pressesOf(const std::string& keys) {
        settle();
        const auto before = presses.size();
        xdotool({"key", keys});
        settle();
        return presses.size() - before;
    }
    std::string label(std::uint32_t keyCode) {
        return Shortcut{keyCode, Shortcut::kOption}.keyDisplayString(backend.layout());
    }

    tests::XServer server;
    tests::RecordingLog log;
    tests::FakeRunLoop runLoop;
    X11HotkeyBackend backend{runLoop, server.display()};
    app::GlobalHotkeyManager manager{backend, log};
    std::vector<app::HotkeyPress> presses;
};

TEST_F(X11HotkeyBackendTest, IsPressedWhateverTheLocksAre) {
    ASSERT_TRUE(manager.update({}));
    EXPECT_EQ(pressesOf("alt+space"), 1U);
    EXPECT_NE(presses.front().timestamp, 0U);
    for (const auto* const lock : {"Num_Lock", "Caps_Lock", "Num_Lock", "Caps_Lock"}) {
        xdotool({"key", lock});
        EXPECT_EQ(pressesOf("alt+space"), 1U) << "after " << lock;
    }
    EXPECT_EQ(pressesOf("alt+shift+space"), 0U);
    EXPECT_EQ(pressesOf("space"), 0U);

    constexpr auto kAll =
        Shortcut::kCommand | Shortcut::kShift | Shortcut::kOption | Shortcut::kControl;
    ASSERT_TRUE(manager.update({45, kAll}));
    EXPECT_EQ(pressesOf("ctrl+alt+shift+super+n"), 1U);
    EXPECT_EQ(pressesOf("alt+space"), 0U) << "the former is free";
}

TEST_F(X11HotkeyBackendTest, AHeldKeyIsPressedOnce) {
    ASSERT_TRUE(manager.update({}));
    settle();
    xdotool({"keydown", "alt", "keydown", "space"});
    std::this_thread::sleep_for(1s);
    settle();
    EXPECT_THAT(presses, SizeIs(1));
    EXPECT_TRUE(takesEvents(1s)) << "the server repeats it";
    xdotool({"keyup", "alt"});
    std::this_thread::sleep_for(1s);
    settle();
    EXPECT_THAT(presses, SizeIs(1)) << "also when only the modifier is let go";
    xdotool({"keyup", "space"});
    EXPECT_EQ(pressesOf("alt+space"), 1U);
}

TEST_F(X11HotkeyBackendTest, WhatAnotherProgramHasIsRefusedWhole) {
    log.expectError(kRefused);
    OtherClient other(server.display());
    ASSERT_EQ(other.grab(kSpaceKey, kAltBit | kNumLockBit), 0);
    EXPECT_FALSE(manager.update({}));
    EXPECT_EQ(manager.issue(),
              (app::GlobalHotkeyManager::Issue{Kind::unavailable, {State::conflict, XCB_ACCESS}}));
    EXPECT_EQ(pressesOf("alt+space"), 0U);
    EXPECT_EQ(other.grab(kSpaceKey, kAltBit), 0) << "nothing is kept of it";

    // The first that it could have instead, which it does not take by looking.
    const auto alternatives = Shortcut::alternatives();
    ASSERT_EQ(other.grab(kSpaceKey, kAltBit | XCB_MOD_MASK_CONTROL), 0);
    EXPECT_THAT(manager.freeAlternatives(1), ElementsAre(alternatives[1]));
    EXPECT_EQ(pressesOf("ctrl+alt+n"), 0U);
    other.ungrab();
    EXPECT_THAT(manager.freeAlternatives(1), ElementsAre(alternatives[0]));
    EXPECT_TRUE(manager.update({}));
    EXPECT_EQ(manager.issueOf(Shortcut()), std::nullopt) << "its own";
    EXPECT_EQ(pressesOf("alt+space"), 1U);
    EXPECT_EQ(other.grab(kSpaceKey, kAltBit), XCB_ACCESS);
}

TEST_F(X11HotkeyBackendTest, WhatAWindowManagerLeavesIsTaken) {
    log.expectError(kRefused);
    OtherClient windowManager(server.display());
    ASSERT_EQ(windowManager.grab(kSpaceKey, kAltBit), 0);
    EXPECT_FALSE(manager.update({}));
    windowManager.ungrab();
    EXPECT_EQ(pressesOf("alt+space"), 0U);
    OtherClient(server.display()).becomeWindowManager();
    settle();
    EXPECT_EQ(manager.activeShortcut(), Shortcut());
    EXPECT_EQ(manager.issue(), std::nullopt);
    EXPECT_EQ(pressesOf("alt+space"), 1U);

    // Another program ends without a word.
    manager.update({45, Shortcut::kOption});
    ASSERT_EQ(windowManager.grab(kSpaceKey, kAltBit), 0);
    EXPECT_FALSE(manager.update({}));
    runLoop.advance(X11HotkeyBackend::kAskAgain.count());
    EXPECT_EQ(manager.activeShortcut(), std::nullopt);
    windowManager.ungrab();
    runLoop.advance(X11HotkeyBackend::kAskAgain.count());
    EXPECT_EQ(manager.activeShortcut(), Shortcut());
    EXPECT_EQ(pressesOf("alt+space"), 1U);
}

TEST_F(X11HotkeyBackendTest, StandsBesideARealWindowManagerWhichComesAndGoes) {
    log.expectError(kRefused);
    {
        const WindowManager first(server.display());
        ASSERT_TRUE(first.hasAltSpace());
        EXPECT_FALSE(manager.update({}));
        const auto free = manager.freeAlternatives(1);
        ASSERT_THAT(free, SizeIs(1));
        EXPECT_TRUE(manager.update(free.front()));
        EXPECT_EQ(pressesOf("ctrl+alt+space"), 1U);
    }
    EXPECT_EQ(pressesOf("ctrl+alt+space"), 1U);
    const WindowManager second(server.display());
    ASSERT_TRUE(second.hasAltSpace());
    EXPECT_EQ(pressesOf("ctrl+alt+space"), 1U);
    EXPECT_EQ(pressesOf("alt+space"), 0U);
    xdotool({"key", "Escape"}); // its menu
}

TEST_F(X11HotkeyBackendTest, StaysWithItsKeyThroughLayoutsWhichChangeWhatTheKeysShow) {
    constexpr std::uint32_t kQ = 12;
    constexpr std::uint32_t kEqual = 24;
    ASSERT_TRUE(manager.update({kQ, Shortcut::kOption}));
    settle();
    EXPECT_EQ(label(kQ), "Q");
    EXPECT_EQ(label(kEqual), "=");
    EXPECT_EQ(label(83), "1") << "on the keypad";
    EXPECT_EQ(label(49), "Space");
    EXPECT_EQ(pressesOf("alt+q"), 1U);
    int changes = 0;
    const auto changed = backend.layout().didChange().connect([&] { ++changes; });
    command("setxkbmap", {"fr"});
    settle();
    EXPECT_EQ(changes, 1) << "once for all that a switch changes";
    EXPECT_EQ(label(kQ), "A");
    EXPECT_EQ(pressesOf("alt+a"), 1U) << "the same key";
    EXPECT_EQ(pressesOf("alt+q"), 0U);

    command("setxkbmap", {"de,ru"});
    settle();
    EXPECT_EQ(label(kEqual), "´") << "a dead key";
    EXPECT_EQ(label(33), "Ü");
    OtherClient(server.display()).lockGroup(1);
    settle();
    EXPECT_EQ(label(kQ), "Й");
    const auto before = presses.size();
    xdotool({"keydown", "alt", "key", "24", "keyup", "alt"}); // by its number
    settle();
    EXPECT_EQ(presses.size(), before + 1) << "in the second group too";
}

TEST_F(X11HotkeyBackendTest, EachKeyCodeIsTheKeyThatShowsIt) {
    ASSERT_EQ(backend.installHandler(), 0);
    constexpr std::string_view kShown = "ASDFHGZXCV BQWERYT123465=97-80]OU[IP LJ'K;\\,/NM.";
    for (std::uint32_t keyCode = 0; keyCode < kShown.size(); ++keyCode) {
        if (kShown[keyCode] != ' ') { // others stand on some keyboards only, or show no letter
            EXPECT_EQ(label(keyCode), std::string(1, kShown[keyCode])) << keyCode;
        }
    }
}

TEST_F(X11HotkeyBackendTest, FollowsAModifierThatMoves) {
    ASSERT_TRUE(manager.update({}));
    EXPECT_EQ(pressesOf("alt+space"), 1U);
    command("xmodmap", {"-e", "clear mod1", "-e", "clear mod3", "-e", "add mod3 = Alt_L"});
    EXPECT_EQ(pressesOf("alt+space"), 1U);
    EXPECT_EQ(OtherClient(server.display()).grab(kSpaceKey, kAltBit), 0)
        << "the former bit is free";
    EXPECT_EQ(OtherClient(server.display()).grab(kSpaceKey, XCB_MOD_MASK_3), XCB_ACCESS);
}

TEST_F(X11HotkeyBackendTest, AKeyOfTheKeyboardIsKnownByItsNumber) {
    ASSERT_EQ(backend.installHandler(), 0);
    EXPECT_EQ(backend.keyCode(kSpaceKey), 49U);
    EXPECT_EQ(backend.keyCode(24), 12U);
    EXPECT_EQ(backend.keyCode(255), std::nullopt);
}

TEST_F(X11HotkeyBackendTest, TellsWhyWithoutAServer) {
    log.expectError("Hot-key event handler unavailable: 1");
    log.expectError("Quick Entry shortcut unavailable: 1");
    X11HotkeyBackend nowhere(runLoop, ":47110815");
    app::GlobalHotkeyManager lost(nowhere, log);
    EXPECT_FALSE(lost.update({}));
    EXPECT_EQ(runLoop.watchCount(), 0U);

    ASSERT_TRUE(manager.update({}));
    server.stop();
    settle();
    EXPECT_EQ(manager.activeShortcut(), std::nullopt);
    EXPECT_EQ(runLoop.watchCount(), 0U);
    EXPECT_FALSE(manager.update({}));
    server.startAgain();
    EXPECT_TRUE(manager.update({}));
    EXPECT_EQ(pressesOf("alt+space"), 1U);

    log.expectError("Quick Entry shortcut unavailable: -1");
    EXPECT_FALSE(manager.update({66, Shortcut::kOption}));
}

} // namespace
} // namespace korvex::platform::x11
