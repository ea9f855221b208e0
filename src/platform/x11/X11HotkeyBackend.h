#pragma once

#include "app/HotkeyBackend.h"
#include "base/RunLoop.h"
#include "platform/x11/XkbKeyboard.h"

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace korvex::platform::x11 {

/// A shortcut as grabs of a key on an X server, by a connection of its own: whatever the locks are,
/// under every layout, and after each change of the keyboard. For X11 sessions only; an X server
/// beside a Wayland desktop reports keys only while one of its own windows has the focus. Numbers
/// of failures are the X protocol's own. Main thread; the run loop must outlive it.
class X11HotkeyBackend final : public app::HotkeyBackend {
public:
    /// Changes of the keyboard come in dozens; it is looked at once they have ceased for so long.
    static constexpr std::chrono::duration<double> kQuiet{0.1};
    /// Whoever has a key gives it up without a word: so often it is asked for again.
    static constexpr std::chrono::duration<double> kAskAgain{30.0};

    /// `display` as in `DISPLAY`; empty is what that says.
    explicit X11HotkeyBackend(base::RunLoop& runLoop, std::string display = {});
    ~X11HotkeyBackend() override;

    /// Connects to the server.
    int installHandler() override;
    app::HotkeyStatus registerShortcut(const app::QuickEntryShortcut& shortcut) override;
    app::HotkeyStatus probe(const app::QuickEntryShortcut& shortcut) override;
    void unregisterShortcut() override;

    /// Null before the handler is installed.
    XkbKeyboard* keyboard() { return m_keyboard.get(); }

private:
    struct Grab {
        xcb_window_t root = 0;
        XkbKeyboard::Combination combination;

        bool operator==(const Grab&) const = default;
    };

    /// 0, or the connection's fault.
    int connect();
    bool startXkb();
    void watchRoots();
    std::vector<xcb_window_t> roots() const;

    /// What is to be grabbed for the shortcut; nothing where it cannot be typed.
    std::vector<Grab> grabsFor(const app::QuickEntryShortcut& shortcut) const;
    /// All of them or none.
    app::HotkeyStatus tryToGrab(const std::vector<Grab>& grabs);
    void ungrab(const std::vector<Grab>& grabs);
    /// Has just what is wanted grabbed.
    app::HotkeyStatus grabWanted();
    /// Asks again for what is wanted, on the keyboard as it is now.
    void rebuild();
    void askAgainLater();
    /// Whether that key is one that is grabbed.
    bool isOurs(xcb_keycode_t keycode) const;
    /// Takes in what the server has sent; never waits.
    void readEvents();
    void take(const xcb_generic_event_t& event);
    void takePress(const xcb_key_press_event_t& press);
    void setStatus(const app::HotkeyStatus& status);
    /// While it waits for a reply, the connection takes in events that its descriptor then does not
    /// tell of.
    void readEventsSoon();
    /// The server is gone.
    void lose();

    base::RunLoop& m_runLoop;
    std::string m_display;
    Connection m_connection;
    std::unique_ptr<base::RunLoop::Watch> m_watch;
    std::unique_ptr<XkbKeyboard> m_keyboard;
    std::uint8_t m_xkbEvent = 0;
    xcb_atom_t m_windowManagerAtom = XCB_ATOM_NONE;
    std::optional<app::QuickEntryShortcut> m_wanted;
    /// What is grabbed.
    std::vector<Grab> m_grabs;
    app::HotkeyStatus m_status;
    /// The key is held since it was reported.
    bool m_isDown = false;
    std::unique_ptr<base::RunLoop::Timer> m_rebuildTimer;
    std::unique_ptr<base::RunLoop::Timer> m_askTimer;
    std::unique_ptr<base::RunLoop::Timer> m_readTimer;
};

} // namespace korvex::platform::x11
