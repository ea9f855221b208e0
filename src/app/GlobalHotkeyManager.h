#pragma once

#include "app/AppPreferences.h"
#include "app/HotkeyBackend.h"
#include "base/Log.h"
#include "base/Signal.h"

#include <functional>
#include <optional>
#include <span>
#include <utility>

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

    /// The first of these that could be registered now; absent where none could.
    std::optional<QuickEntryShortcut> firstFree(std::span<const QuickEntryShortcut> shortcuts);

    /// The one that is registered now.
    const std::optional<QuickEntryShortcut>& activeShortcut() const {
        return m_outcome.activeShortcut;
    }
    const std::optional<Issue>& issue() const { return m_outcome.issue; }
    /// Whether the user has to set the shortcut up with the desktop: then there is neither.
    bool isManagedByDesktop() const { return m_outcome.isManagedByDesktop; }

    /// What a press of it does.
    void setOnPress(std::function<void(const HotkeyPress&)> onPress) {
        m_onPress = std::move(onPress);
    }
    /// Emitted when one of the three above is different.
    base::Signal<>& didChange() { return m_didChange; }

private:
    struct Outcome {
        std::optional<QuickEntryShortcut> activeShortcut;
        std::optional<Issue> issue;
        bool isManagedByDesktop = false;

        bool operator==(const Outcome&) const = default;
    };

    /// Installs the handler if it is not there, or not any more.
    bool installHandler();
    /// What the backend says of the shortcut that is wanted.
    void take(const HotkeyStatus& status);
    void set(Outcome outcome);

    HotkeyBackend& m_backend;
    base::Logger m_log;
    std::function<void(const HotkeyPress&)> m_onPress;
    std::optional<QuickEntryShortcut> m_wanted;
    Outcome m_outcome;
    base::Signal<> m_didChange;
    base::Subscription m_presses;
    base::Subscription m_statusChanges;
    base::Subscription m_preferenceChanges;
};

} // namespace korvex::app
