#pragma once

#include "app/KeyboardLayout.h"
#include "app/QuickEntryShortcut.h"
#include "base/Signal.h"

#include <cstdint>
#include <optional>
#include <string>

namespace korvex::app {

/// What became of a shortcut that the system was asked for.
struct HotkeyStatus {
    enum class State {
        registered,
        /// It is reported, for keys that the desktop keeps itself: `trigger` says which.
        boundByDesktop,
        /// The system has not answered yet; `didChangeStatus` says what it does.
        asked,
        /// Another program has it.
        conflict,
        /// The desktop has asked the user, who does not want it.
        declined,
        /// It cannot be had here, or not now.
        unavailable,
        /// Programs cannot ask for one: the user sets it up in the desktop's own settings.
        managedByDesktop,
    };
    /// As `code` of one that is unavailable: the keyboard has no such key, or no such modifier.
    static constexpr int kNoSuchKey = -1;

    State state = State::unavailable;
    /// The system's own number for the reason; 0 where there is none.
    int code = 0;
    /// The desktop's words for the keys; empty where it has none for it yet.
    std::string trigger = {};

    bool operator==(const HotkeyStatus&) const = default;
};

/// A press of the shortcut, with what its window may need to come to the front.
struct HotkeyPress {
    /// When it was pressed, as the X server counts; 0 elsewhere.
    std::uint32_t timestamp = 0;
    /// What a Wayland desktop gives for it; empty elsewhere.
    std::string activationToken;
};

/// The system's way to have one key combination reported wherever it is pressed. Main thread, where
/// its signals are emitted too.
class HotkeyBackend {
public:
    virtual ~HotkeyBackend() = default;

    /// Gets ready to hear of presses; 0, or the system's number for why it cannot. Asked before
    /// each shortcut is asked for, since what was ready may be lost; while it is, nothing happens.
    /// Where it cannot, no shortcut is asked for until somebody asks again.
    virtual int installHandler() = 0;

    /// Asks for this shortcut, in the place of one that was asked for before. One that is refused
    /// is remembered: where it can be had later, `didChangeStatus` says so.
    virtual HotkeyStatus registerShortcut(const QuickEntryShortcut& shortcut) = 0;
    /// What asking for this one would come to, just now; what is registered stays. After
    /// `installHandler`.
    virtual HotkeyStatus probe(const QuickEntryShortcut& shortcut) = 0;
    /// Nothing is wanted any more.
    virtual void unregisterShortcut() = 0;

    /// Whether it is the shortcut that is asked for; else the desktop has keys of its own for it.
    virtual bool takesShortcuts() const = 0;
    /// What the keys of this system's keyboard show.
    virtual KeyboardLayout& layout() = 0;
    /// The number by which shortcuts know a key that the window system tells of by this one; absent
    /// for a key that none can have.
    virtual std::optional<std::uint32_t> keyCode(std::uint32_t scanCode) const = 0;

    /// Whether the desktop shows its settings of the keys when it is asked to.
    virtual bool hasDesktopSettings() const { return false; }
    virtual void openDesktopSettings() {}

    /// Once for each press, however long it is held.
    base::Signal<const HotkeyPress&>& didPress() { return m_didPress; }
    /// What was registered is lost, or what was refused is registered.
    base::Signal<const HotkeyStatus&>& didChangeStatus() { return m_didChangeStatus; }

private:
    base::Signal<const HotkeyPress&> m_didPress;
    base::Signal<const HotkeyStatus&> m_didChangeStatus;
};

} // namespace korvex::app
