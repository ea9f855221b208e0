#include "platform/x11/XkbKeyboard.h"

#include "app/KeyCodes.h"

#include <xkbcommon/xkbcommon-keysyms.h>
#include <xkbcommon/xkbcommon-x11.h>

#include <algorithm>
#include <array>
#include <string_view>

namespace korvex::platform::x11 {

namespace {

using Shortcut = app::QuickEntryShortcut;

constexpr int kModifierCount = 8;

/// A dead key types nothing by itself; what stands on it is the accent.
struct DeadKey {
    xkb_keysym_t symbol;
    std::string_view text;
};
constexpr DeadKey kDeadKeys[] = {
    {XKB_KEY_dead_grave, "`"},       {XKB_KEY_dead_acute, "´"},     {XKB_KEY_dead_circumflex, "^"},
    {XKB_KEY_dead_tilde, "~"},       {XKB_KEY_dead_macron, "¯"},    {XKB_KEY_dead_breve, "˘"},
    {XKB_KEY_dead_abovedot, "˙"},    {XKB_KEY_dead_diaeresis, "¨"}, {XKB_KEY_dead_abovering, "˚"},
    {XKB_KEY_dead_doubleacute, "˝"}, {XKB_KEY_dead_caron, "ˇ"},     {XKB_KEY_dead_cedilla, "¸"},
    {XKB_KEY_dead_ogonek, "˛"},      {XKB_KEY_dead_stroke, "/"},
};

/// The keypad's keys move the caret while Num Lock is off, but show their digits.
struct KeypadKey {
    std::uint32_t keyCode;
    std::string_view text;
};
constexpr KeypadKey kKeypad[] = {
    {65, "."}, {67, "*"}, {69, "+"}, {75, "/"}, {78, "-"}, {81, "="}, {82, "0"}, {83, "1"},
    {84, "2"}, {85, "3"}, {86, "4"}, {87, "5"}, {88, "6"}, {89, "7"}, {91, "8"}, {92, "9"},
};

std::string_view deadKeyText(xkb_keysym_t symbol) {
    const auto* const found =
        std::find_if(std::begin(kDeadKeys), std::end(kDeadKeys),
                     [&](const DeadKey& each) { return each.symbol == symbol; });
    return found == std::end(kDeadKeys) ? std::string_view() : found->text;
}

std::string_view keypadText(std::uint32_t keyCode) {
    const auto* const found =
        std::find_if(std::begin(kKeypad), std::end(kKeypad),
                     [&](const KeypadKey& each) { return each.keyCode == keyCode; });
    return found == std::end(kKeypad) ? std::string_view() : found->text;
}

/// Every set of bits out of these.
std::vector<std::uint16_t> subsets(std::uint16_t bits) {
    std::vector<std::uint16_t> all;
    auto subset = bits;
    while (true) {
        all.push_back(subset);
        if (subset == 0) {
            return all;
        }
        subset = static_cast<std::uint16_t>((subset - 1) & bits);
    }
}

} // namespace

XkbKeyboard::XkbKeyboard(xcb_connection_t* connection)
    : m_connection(connection), m_context(xkb_context_new(XKB_CONTEXT_NO_FLAGS)) {}

bool XkbKeyboard::load() {
    m_keymap.reset();
    m_lockCombinations.clear();
    const auto device = xkb_x11_get_core_keyboard_device_id(m_connection);
    if (device < 0 || !m_context) {
        return false;
    }
    m_keymap.reset(xkb_x11_keymap_new_from_device(m_context.get(), m_connection, device,
                                                  XKB_KEYMAP_COMPILE_NO_FLAGS));
    if (!m_keymap) {
        return false;
    }
    const Answer<xcb_xkb_get_state_reply_t> state(xcb_xkb_get_state_reply(
        m_connection, xcb_xkb_get_state(m_connection, XCB_XKB_ID_USE_CORE_KBD), nullptr));
    m_group = state ? state->group : 0;
    loadModifiers();
    m_didChange.emit();
    return true;
}

void XkbKeyboard::setGroup(xkb_layout_index_t group) {
    if (m_group != group) {
        m_group = group;
        m_didChange.emit();
    }
}

void XkbKeyboard::loadModifiers() {
    std::uint16_t meta = 0;
    std::uint16_t locks = XCB_MOD_MASK_LOCK;
    m_alt = 0;
    m_super = 0;
    const Answer<xcb_get_modifier_mapping_reply_t> mapping(xcb_get_modifier_mapping_reply(
        m_connection, xcb_get_modifier_mapping(m_connection), nullptr));
    const auto* const keycodes =
        mapping ? xcb_get_modifier_mapping_keycodes(mapping.get()) : nullptr;
    const int keycodesEach = mapping ? mapping->keycodes_per_modifier : 0;
    for (int i = 0; i < kModifierCount * keycodesEach; ++i) {
        const auto bit = static_cast<std::uint16_t>(1U << (i / keycodesEach));
        if (bit <= XCB_MOD_MASK_CONTROL) {
            continue; // Shift, Lock and Control are what their names say
        }
        const auto has = [&, keycode = keycodes[i]](xkb_keysym_t symbol) {
            return hasSymbol(keycode, symbol);
        };
        // Of several bits the first one counts; locks may be any.
        m_alt = m_alt == 0 && (has(XKB_KEY_Alt_L) || has(XKB_KEY_Alt_R)) ? bit : m_alt;
        meta = meta == 0 && (has(XKB_KEY_Meta_L) || has(XKB_KEY_Meta_R)) ? bit : meta;
        m_super = m_super == 0 && (has(XKB_KEY_Super_L) || has(XKB_KEY_Super_R)) ? bit : m_super;
        if (has(XKB_KEY_Num_Lock) || has(XKB_KEY_Scroll_Lock)) {
            locks = static_cast<std::uint16_t>(locks | bit);
        }
    }
    m_alt = m_alt == 0 ? meta : m_alt;
    m_lockCombinations = subsets(locks);
}

bool XkbKeyboard::hasSymbol(xcb_keycode_t keycode, xkb_keysym_t symbol) const {
    const auto groups = xkb_keymap_num_layouts_for_key(m_keymap.get(), keycode);
    for (xkb_layout_index_t group = 0; group < groups; ++group) {
        const auto levels = xkb_keymap_num_levels_for_key(m_keymap.get(), keycode, group);
        for (xkb_level_index_t level = 0; level < levels; ++level) {
            const xkb_keysym_t* symbols = nullptr;
            const auto count =
                xkb_keymap_key_get_syms_by_level(m_keymap.get(), keycode, group, level, &symbols);
            if (std::find(symbols, symbols + count, symbol) != symbols + count) {
                return true;
            }
        }
    }
    return false;
}

std::optional<XkbKeyboard::Combination> XkbKeyboard::combination(const Shortcut& shortcut) const {
    const auto name = app::xkbKeyName(shortcut.keyCode);
    if (!m_keymap || !name) {
        return std::nullopt;
    }
    const auto keycode = xkb_keymap_key_by_name(m_keymap.get(), std::string(*name).c_str());
    if (keycode == XKB_KEYCODE_INVALID || keycode > 0xFF) {
        return std::nullopt; // the core protocol knows eight bits
    }
    std::uint16_t modifiers = 0;
    const std::pair<std::uint32_t, std::uint16_t> bits[] = {
        {Shortcut::kShift, XCB_MOD_MASK_SHIFT},
        {Shortcut::kCommand, XCB_MOD_MASK_CONTROL},
        {Shortcut::kOption, m_alt},
        {Shortcut::kControl, m_super},
    };
    for (const auto& [modifier, bit] : bits) {
        if ((shortcut.modifiers & modifier) != 0) {
            if (bit == 0) {
                return std::nullopt;
            }
            modifiers = static_cast<std::uint16_t>(modifiers | bit);
        }
    }
    return Combination{static_cast<xcb_keycode_t>(keycode), modifiers};
}

std::optional<std::uint32_t> XkbKeyboard::keyCode(xcb_keycode_t keycode) const {
    const auto* const name = m_keymap ? xkb_keymap_key_get_name(m_keymap.get(), keycode) : nullptr;
    return name ? app::keyCodeOfXkbKey(name) : std::nullopt;
}

std::string XkbKeyboard::character(std::uint32_t keyCode) const {
    const auto text = keypadText(keyCode);
    const auto place = combination({keyCode, 0});
    if (!text.empty() || !place) {
        return std::string(text);
    }
    // A key of fewer groups than the keyboard has goes round.
    const auto groups = xkb_keymap_num_layouts_for_key(m_keymap.get(), place->keycode);
    const xkb_keysym_t* symbols = nullptr;
    if (groups == 0 || xkb_keymap_key_get_syms_by_level(m_keymap.get(), place->keycode,
                                                        m_group % groups, 0, &symbols) != 1) {
        return {};
    }
    if (const auto dead = deadKeyText(symbols[0]); !dead.empty()) {
        return std::string(dead);
    }
    std::array<char, 8> utf8{};
    const auto size = xkb_keysym_to_utf8(symbols[0], utf8.data(), utf8.size());
    // Escape and its like have control characters.
    return size > 1 && static_cast<unsigned char>(utf8[0]) > ' ' && utf8[0] != '\x7f'
               ? std::string(utf8.data())
               : std::string();
}

} // namespace korvex::platform::x11
