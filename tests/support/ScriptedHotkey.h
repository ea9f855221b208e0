#pragma once

#include "app/QuickEntrySetup.h"
#include "support/SilentLog.h"

#include <algorithm>
#include <filesystem>
#include <utility>
#include <vector>

namespace korvex::tests {

/// A system with the answers that a test wants for shortcuts, and a keyboard of letters.
class ScriptedHotkeySystem final : public app::HotkeyBackend {
public:
    using State = app::HotkeyStatus::State;
    using Shortcut = app::QuickEntryShortcut;

    int installHandler() override { return 0; }
    app::HotkeyStatus registerShortcut(const Shortcut& shortcut) override {
        wanted = shortcut;
        return statusOf(shortcut);
    }
    app::HotkeyStatus probe(const Shortcut& shortcut) override { return statusOf(shortcut); }
    void unregisterShortcut() override { wanted.reset(); }
    bool takesShortcuts() const override {
        return status.state == State::registered || status.state == State::unavailable;
    }
    app::KeyboardLayout& layout() override { return keys; }
    /// As an X server numbers keys of a usual keyboard.
    std::optional<std::uint32_t> keyCode(std::uint32_t scanCode) const override {
        switch (scanCode) {
        case 9:
            return 53; // Escape
        case 57:
            return 45; // N
        case 65:
            return 49; // Space
        default:
            return std::nullopt;
        }
    }
    bool hasDesktopSettings() const override { return status.state == State::boundByDesktop; }
    void openDesktopSettings() override { ++settingsOpened; }

    class Layout final : public app::KeyboardLayout {
    public:
        std::string character(std::uint32_t keyCode) const override {
            return keyCode == 45 ? letterOf45 : keyCode == 40 ? "k" : "";
        }
        base::Signal<>& didChange() override { return m_didChange; }

        std::string letterOf45 = "n";

    private:
        base::Signal<> m_didChange;
    };

    Layout keys;
    app::HotkeyStatus status{State::registered};
    /// What other programs have.
    std::vector<Shortcut> taken;
    std::optional<Shortcut> wanted;
    int settingsOpened = 0;

    /// The system says this from now on.
    void say(const app::HotkeyStatus& now, std::vector<Shortcut> others = {}) {
        status = now;
        taken = std::move(others);
        didChangeStatus().emit(statusOf(wanted.value_or(Shortcut())));
    }

private:
    app::HotkeyStatus statusOf(const Shortcut& shortcut) const {
        constexpr int kTaken = 10;
        return std::find(taken.begin(), taken.end(), shortcut) == taken.end()
                   ? status
                   : app::HotkeyStatus{State::conflict, kTaken};
    }
};

/// What windows know of it.
struct ScriptedQuickEntry {
    explicit ScriptedQuickEntry(const std::filesystem::path& folder)
        : setup{.hotkey = hotkey,
                .autostart =
                    app::AutostartFile(folder / "autostart",
                                       {.id = "korvex", .name = "Korvex", .command = {"korvex"}}),
                .command = "korvex quick-entry"} {}

    /// What is refused is logged as an error, and that it is refused is what tests want.
    SilentLog log;
    ScriptedHotkeySystem system;
    app::GlobalHotkeyManager hotkey{system, log};
    app::QuickEntrySetup setup;
};

} // namespace korvex::tests
