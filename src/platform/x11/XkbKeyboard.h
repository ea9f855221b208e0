#pragma once

#include "app/KeyboardLayout.h"
#include "app/QuickEntryShortcut.h"
#include "base/Signal.h"
#include "platform/x11/Xcb.h"

#include <xkbcommon/xkbcommon.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace korvex::platform::x11 {

/// The keyboard of an X server as it is mapped now. Main thread; the connection must outlive it.
class XkbKeyboard final : public app::KeyboardLayout {
public:
    /// What a key combination is to the server.
    struct Combination {
        xcb_keycode_t keycode = 0;
        std::uint16_t modifiers = 0;

        bool operator==(const Combination&) const = default;
    };

    /// Empty until it is loaded.
    explicit XkbKeyboard(xcb_connection_t* connection);

    /// Reads the keyboard anew; false where the server has none that it can describe.
    bool load();
    /// Another group of the layout is the current one.
    void setGroup(xkb_layout_index_t group);

    /// The shortcut without locks; absent where the keyboard has no such key or modifier.
    std::optional<Combination> combination(const app::QuickEntryShortcut& shortcut) const;
    /// Every set of locks that can be on with it: Caps Lock, Num Lock, Scroll Lock.
    const std::vector<std::uint16_t>& lockCombinations() const { return m_lockCombinations; }
    /// The number by which shortcuts know the key; absent for a key that none can have.
    std::optional<std::uint32_t> keyCode(xcb_keycode_t keycode) const;

    std::string character(std::uint32_t keyCode) const override;
    base::Signal<>& didChange() override { return m_didChange; }

private:
    template <auto unref>
    struct Unref {
        template <typename T>
        void operator()(T* object) const {
            unref(object);
        }
    };
    using Context = std::unique_ptr<xkb_context, Unref<xkb_context_unref>>;
    using Keymap = std::unique_ptr<xkb_keymap, Unref<xkb_keymap_unref>>;

    void loadModifiers();
    /// Whether the key has the symbol, on any level of any group.
    bool hasSymbol(xcb_keycode_t keycode, xkb_keysym_t symbol) const;

    xcb_connection_t* m_connection;
    Context m_context;
    Keymap m_keymap;
    xkb_layout_index_t m_group = 0;
    /// Bits of the modifiers; 0 where no key has it.
    std::uint16_t m_alt = 0;
    std::uint16_t m_super = 0;
    std::vector<std::uint16_t> m_lockCombinations;
    base::Signal<> m_didChange;
};

} // namespace korvex::platform::x11
