#pragma once

#include "app/HotkeyBackend.h"

namespace korvex::app {

/// Where programs can ask for no shortcut: the user sets one up with the desktop. Main thread.
class ManagedHotkeyBackend final : public HotkeyBackend {
public:
    int installHandler() override { return 0; }
    HotkeyStatus registerShortcut(const QuickEntryShortcut&) override { return kStatus; }
    HotkeyStatus probe(const QuickEntryShortcut&) override { return kStatus; }
    void unregisterShortcut() override {}
    bool takesShortcuts() const override { return false; }
    KeyboardLayout& layout() override { return m_layout; }
    std::optional<std::uint32_t> keyCode(std::uint32_t) const override { return std::nullopt; }

private:
    inline static const HotkeyStatus kStatus{HotkeyStatus::State::managedByDesktop};

    UnknownLayout m_layout;
};

} // namespace korvex::app
