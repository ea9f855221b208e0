#include "app/QuickEntryShortcut.h"

#include "app/KeyCodes.h"

#include <rapidjson/document.h>
#include <unicode/unistr.h>

#include <algorithm>

namespace korvex::app {

namespace {

constexpr std::uint32_t kSpace = 49;
/// Command, Shift, Caps Lock, Option, Control and Function, at the left and the right.
constexpr std::uint32_t kFirstModifierKey = 54;
constexpr std::uint32_t kLastModifierKey = 63;

/// What the windows have the command key for: settings, search, find, new and their like.
constexpr QuickEntryShortcut kAppCommands[] = {
    {43, QuickEntryShortcut::kCommand},
    {40, QuickEntryShortcut::kCommand},
    {3, QuickEntryShortcut::kCommand},
    {45, QuickEntryShortcut::kCommand},
    {17, QuickEntryShortcut::kCommand | QuickEntryShortcut::kShift},
    {45, QuickEntryShortcut::kCommand | QuickEntryShortcut::kShift},
};

constexpr QuickEntryShortcut kAlternatives[] = {
    {kSpace, QuickEntryShortcut::kCommand | QuickEntryShortcut::kOption},
    {45, QuickEntryShortcut::kCommand | QuickEntryShortcut::kOption},
    {kSpace, QuickEntryShortcut::kShift | QuickEntryShortcut::kControl},
    {kSpace, QuickEntryShortcut::kCommand | QuickEntryShortcut::kShift},
    {40, QuickEntryShortcut::kCommand | QuickEntryShortcut::kOption},
    {45, QuickEntryShortcut::kShift | QuickEntryShortcut::kControl},
};

struct Symbol {
    std::uint32_t modifier;
    const char* text;
};
constexpr Symbol kSymbols[] = {{QuickEntryShortcut::kControl, "⌃"},
                               {QuickEntryShortcut::kOption, "⌥"},
                               {QuickEntryShortcut::kShift, "⇧"},
                               {QuickEntryShortcut::kCommand, "⌘"}};

/// In the user's locale: a Turkish keyboard says İ on its i. A ß stays one: two letters would read
/// as two keys.
std::string uppercased(const std::string& character) {
    const auto typed = icu::UnicodeString::fromUTF8(character);
    const auto upper = icu::UnicodeString(typed).toUpper();
    std::string result;
    (upper.countChar32() > typed.countChar32() ? typed : upper).toUTF8String(result);
    return result;
}

constexpr const char* kKeyCodeMember = "keyCode";
constexpr const char* kModifiersMember = "modifiers";

std::optional<std::uint32_t> number(const rapidjson::Document& json, const char* name) {
    const auto member = json.FindMember(name);
    return member != json.MemberEnd() && member->value.IsUint()
               ? std::optional<std::uint32_t>(member->value.GetUint())
               : std::nullopt;
}

} // namespace

bool QuickEntryShortcut::isValid() const {
    const auto isModifierKey = keyCode >= kFirstModifierKey && keyCode <= kLastModifierKey;
    constexpr auto kOneOf = kCommand | kOption | kControl;
    return keyCode < kKeyCodeCount && !isModifierKey && (modifiers & kOneOf) != 0 &&
           (modifiers & ~(kOneOf | kShift)) == 0;
}

QuickEntryShortcut QuickEntryShortcut::of(const KeyEvent& event) {
    return {event.keyCode, (event.command ? kCommand : 0) | (event.shift ? kShift : 0) |
                               (event.option ? kOption : 0) | (event.control ? kControl : 0)};
}

bool QuickEntryShortcut::conflictsWithAppCommand() const {
    return std::find(std::begin(kAppCommands), std::end(kAppCommands), *this) !=
           std::end(kAppCommands);
}

std::string QuickEntryShortcut::displayString(const KeyboardLayout& layout) const {
    std::string text;
    for (const auto& symbol : kSymbols) {
        text += (modifiers & symbol.modifier) != 0 ? symbol.text : "";
    }
    // Its name is a word, which would run into the symbols.
    return text + (keyCode == kSpace ? " " : "") + keyDisplayString(layout);
}

std::string QuickEntryShortcut::keyDisplayString(const KeyboardLayout& layout) const {
    if (const auto text = fixedKeyText(keyCode)) {
        return std::string(*text);
    }
    const auto character = uppercased(layout.character(keyCode));
    return character.empty() ? "Key " + std::to_string(keyCode) : character;
}

std::span<const QuickEntryShortcut> QuickEntryShortcut::alternatives() {
    return kAlternatives;
}

base::Bytes QuickEntryShortcut::json() const {
    const auto text = std::string("{\"") + kKeyCodeMember + "\":" + std::to_string(keyCode) +
                      ",\"" + kModifiersMember + "\":" + std::to_string(modifiers) + "}";
    return {text.begin(), text.end()};
}

std::optional<QuickEntryShortcut> QuickEntryShortcut::ofJson(std::span<const std::uint8_t> bytes) {
    rapidjson::Document json;
    json.Parse<rapidjson::kParseIterativeFlag>(reinterpret_cast<const char*>(bytes.data()),
                                               bytes.size());
    if (json.HasParseError() || !json.IsObject()) {
        return std::nullopt;
    }
    const auto keyCode = number(json, kKeyCodeMember);
    const auto modifiers = number(json, kModifiersMember);
    return keyCode && modifiers ? std::optional<QuickEntryShortcut>({*keyCode, *modifiers})
                                : std::nullopt;
}

} // namespace korvex::app
