#include "app/QuickEntryShortcut.h"
#include "app/KeyCodes.h"

#include <gtest/gtest.h>

#include <map>
#include <set>
#include <string>
#include <tuple>

namespace korvex::app {
namespace {

constexpr auto kCommand = QuickEntryShortcut::kCommand;
constexpr auto kShift = QuickEntryShortcut::kShift;
constexpr auto kOption = QuickEntryShortcut::kOption;
constexpr auto kControl = QuickEntryShortcut::kControl;

class SomeLayout final : public KeyboardLayout {
public:
    std::string character(std::uint32_t keyCode) const override {
        const auto found = m_characters.find(keyCode);
        return found == m_characters.end() ? "" : found->second;
    }
    base::Signal<>& didChange() override { return m_didChange; }

private:
    std::map<std::uint32_t, std::string> m_characters = {
        {40, "k"}, {33, "ü"}, {27, "ß"}, {49, " "}, {96, "x"}};
    base::Signal<> m_didChange;
};

TEST(QuickEntryShortcut, IsShownAsItsModifiersInOneOrderAndItsKey) {
    struct Case {
        QuickEntryShortcut shortcut;
        const char* text;
    };
    const SomeLayout layout;
    for (const auto& [shortcut, text] : {
             Case{{}, "⌥ Space"},
             Case{{40, kCommand | kOption | kControl}, "⌃⌥⌘K"},
             Case{{40, kCommand | kShift | kOption | kControl}, "⌃⌥⇧⌘K"},
             Case{{96, kCommand}, "⌘F5"}, // whatever a layout makes of it
             Case{{36, kControl}, "⌃↩"},
             Case{{90, kOption}, "⌥F20"},
             Case{{33, kOption}, "⌥Ü"},
             Case{{27, kOption}, "⌥ß"},
             Case{{108, kOption}, "⌥Key 108"},
         }) {
        EXPECT_EQ(shortcut.displayString(layout), text);
    }
    EXPECT_EQ(QuickEntryShortcut().keyDisplayString(layout), "Space") << "alone without a blank";
}

TEST(QuickEntryShortcut, OnlyExactlyTheWindowsOwnCommandsConflict) {
    std::set<std::pair<std::uint32_t, std::uint32_t>> conflicts;
    for (std::uint32_t keyCode = 0; keyCode < kKeyCodeCount; ++keyCode) {
        for (std::uint32_t modifiers = 0; modifiers < 8192; modifiers += kCommand) {
            if (QuickEntryShortcut{keyCode, modifiers}.conflictsWithAppCommand()) {
                conflicts.emplace(keyCode, modifiers);
            }
        }
    }
    const decltype(conflicts) expected = {{43, kCommand},          {40, kCommand},
                                          {3, kCommand},           {45, kCommand},
                                          {17, kCommand | kShift}, {45, kCommand | kShift}};
    EXPECT_EQ(conflicts, expected);
}

TEST(QuickEntryShortcut, IsAKeyWithOneModifierThatTypesNothing) {
    for (const auto& [keyCode, modifiers, isValid] :
         {std::tuple(49U, 2048U, true), std::tuple(0U, kShift, false),
          std::tuple(0U, kCommand | kShift, true), std::tuple(127U, kCommand, true),
          std::tuple(128U, kCommand, false), std::tuple(53U, kCommand, true),
          std::tuple(54U, kCommand, false), std::tuple(56U, kCommand, false),
          std::tuple(63U, kCommand, false), std::tuple(64U, kCommand, true),
          std::tuple(49U, kCommand | 1024U, false), std::tuple(49U, 0U, false)}) {
        EXPECT_EQ((QuickEntryShortcut{keyCode, modifiers}.isValid()), isValid)
            << keyCode << " " << modifiers;
    }
}

TEST(QuickEntryShortcut, IsMadeOfAKeyEvent) {
    const auto shortcut = QuickEntryShortcut::of(
        {.keyCode = 40, .command = true, .shift = false, .option = true, .control = true});
    EXPECT_EQ(shortcut, (QuickEntryShortcut{40, kCommand | kOption | kControl}));
    EXPECT_EQ(QuickEntryShortcut::of({.keyCode = 1, .shift = true}),
              (QuickEntryShortcut{1, kShift}));
}

TEST(KeyCodes, EachKeyHasItsOwnNameAndIsFoundByIt) {
    std::set<std::string_view> names;
    for (std::uint32_t keyCode = 0; keyCode < 2 * kKeyCodeCount; ++keyCode) {
        if (const auto name = xkbKeyName(keyCode)) {
            EXPECT_TRUE(names.insert(*name).second) << *name;
            EXPECT_EQ(keyCodeOfXkbKey(*name), keyCode);
        }
    }
    EXPECT_EQ(names.size(), 120U);
    for (int number = 1; number <= 20; ++number) {
        const auto name = (number < 10 ? "FK0" : "FK") + std::to_string(number);
        EXPECT_EQ(fixedKeyText(keyCodeOfXkbKey(name).value_or(0)), "F" + std::to_string(number));
    }
    EXPECT_EQ(keyCodeOfXkbKey(""), std::nullopt);
    EXPECT_EQ(keyCodeOfXkbKey("I999"), std::nullopt);
}

} // namespace
} // namespace korvex::app
