#include "app/QuickEntryShortcut.h"

#include <rapidjson/document.h>

#include <string>

namespace korvex::app {

namespace {

constexpr std::uint32_t kKeyCodes = 128;
/// Command, Shift, Caps Lock, Option, Control and Function, at the left and the right.
constexpr std::uint32_t kFirstModifierKey = 54;
constexpr std::uint32_t kLastModifierKey = 63;

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
    return keyCode < kKeyCodes && !isModifierKey && (modifiers & kOneOf) != 0 &&
           (modifiers & ~(kOneOf | kShift)) == 0;
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
