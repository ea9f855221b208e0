#pragma once

#include "app/AppPreferences.h"
#include "app/HotkeyBackend.h"
#include "base/Log.h"
#include "base/Signal.h"

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace korvex::app {

/// Keeps the Quick Entry shortcut registered with the system, and knows why it is not. Main thread;
/// the backend, the log and followed preferences must outlive it.
class GlobalHotkeyManager {
public:
    struct Issue {
        enum class Kind {
            /// No shortcut, or one that the windows use themselves.
            invalid,
            /// The system refused it.
            unavailable,
        };
        Kind kind = Kind::invalid;
        /// Why it was refused.
        HotkeyStatus status = {};

        bool operator==(const Issue&) const = default;
    };

    GlobalHotkeyManager(HotkeyBackend& backend, base::LogSink& log);
    /// The system has the shortcut back.
    ~GlobalHotkeyManager();
    GlobalHotkeyManager(const GlobalHotkeyManager&) = delete;
    GlobalHotkeyManager& operator=(const GlobalHotkeyManager&) = delete;

    /// Registers the shortcut in the place of the one before; whether it is registered then. One
    /// that was refused is asked for anew. One that is no shortcut is logged as just that, and only
    /// one that the windows use as a conflict.
    bool update(const QuickEntryShortcut& shortcut);
    /// Registers the preferences' shortcut now, and whenever it is another one: apart from
    /// `update`, so that one can be tried that the preferences do not have.
    bool follow(AppPreferences& preferences);

    /// Why this one could not be registered now; absent where it could. What is registered stays.
    std::optional<Issue> issueOf(const QuickEntryShortcut& shortcut);
    /// The alternatives that could be registered now, so many at most.
    std::vector<QuickEntryShortcut> freeAlternatives(std::size_t most);
    /// Asks once more for what was asked for last and refused.
    void tryAgain();

    /// From then on nothing is registered and nothing is done at a press, as while the user tries
    /// shortcuts out; what is told of it stays.
    void pause();
    void resume();

    /// The one that is registered now.
    const std::optional<QuickEntryShortcut>& activeShortcut() const {
        return m_outcome.activeShortcut;
    }
    const std::optional<Issue>& issue() const { return m_outcome.issue; }
    /// Whether the user has to set the shortcut up with the desktop: then there is neither.
    bool isManagedByDesktop() const { return m_outcome.isManagedByDesktop; }
    /// Set where the desktop has keys of its own for it: its words for them.
    const std::optional<std::string>& trigger() const { return m_outcome.trigger; }
    /// Whether a press of some keys does something.
    bool isReady() const { return m_outcome.activeShortcut || m_outcome.trigger; }
    /// The same, or it may without being known here: where the desktop keeps the keys itself, they
    /// may run a command, and it may give its word for them any time.
    bool mayBeReady() const { return isReady() || !isRecordable(); }

    /// Whether a shortcut of the user's choice is registered, and not keys that the desktop has.
    bool isRecordable() const { return m_backend.takesShortcuts(); }
    KeyboardLayout& layout() { return m_backend.layout(); }
    std::optional<std::uint32_t> keyCode(std::uint32_t scanCode) const {
        return m_backend.keyCode(scanCode);
    }
    bool hasDesktopSettings() const { return m_backend.hasDesktopSettings(); }
    void openDesktopSettings() { m_backend.openDesktopSettings(); }

    /// What a press of it does.
    void setOnPress(std::function<void(const HotkeyPress&)> onPress) {
        m_onPress = std::move(onPress);
    }
    /// Emitted when something of what became of the shortcut is different.
    base::Signal<>& didChange() { return m_didChange; }

private:
    struct Outcome {
        std::optional<QuickEntryShortcut> activeShortcut;
        std::optional<Issue> issue;
        bool isManagedByDesktop = false;
        std::optional<std::string> trigger;

        bool operator==(const Outcome&) const = default;
    };

    /// Asks the system for what is wanted.
    void ask();
    /// Installs the handler if it is not there, or not any more.
    bool installHandler();
    /// What the backend says of the shortcut that is wanted.
    void take(const HotkeyStatus& status);
    void set(Outcome outcome);

    HotkeyBackend& m_backend;
    base::Logger m_log;
    std::function<void(const HotkeyPress&)> m_onPress;
    bool m_isPaused = false;
    std::optional<QuickEntryShortcut> m_wanted;
    Outcome m_outcome;
    base::Signal<> m_didChange;
    base::Subscription m_presses;
    base::Subscription m_statusChanges;
    base::Subscription m_preferenceChanges;
};

} // namespace korvex::app
