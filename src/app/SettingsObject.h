#pragma once

#include <rapidjson/document.h>

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace korvex::app {

/// What a settings file holds: members with values of any kind, also of those that nobody here
/// knows, in their order. Where a name is there twice, the first counts.
class SettingsObject {
public:
    SettingsObject() = default;
    SettingsObject(const SettingsObject& other) { m_json.CopyFrom(other.m_json, allocator()); }
    SettingsObject& operator=(const SettingsObject&) = delete;

    /// Null for what is no JSON object, or is nested deeper than settings ever are: whoever copies
    /// or writes that would need as much of the stack.
    static std::unique_ptr<SettingsObject> parse(std::string_view text);

    /// Null where there is no such member.
    const rapidjson::Value* find(std::string_view key) const;
    std::optional<std::string> string(std::string_view key) const;
    /// The value's JSON: so 13 is another one than 13.0, which is no whole number.
    std::optional<std::string> json(std::string_view key) const;

    /// Gives the member this JSON, or takes it away; the others keep their places.
    void set(std::string_view key, const std::optional<std::string>& json);

    /// The contents of a file.
    std::string text() const;

private:
    rapidjson::Document::AllocatorType& allocator() { return m_json.GetAllocator(); }

    rapidjson::Document m_json{rapidjson::kObjectType};
};

std::string jsonOf(const rapidjson::Value& value);
std::string jsonOf(std::string_view text);

/// The text of a value that is a string, for as long as that lives.
std::string_view textOf(const rapidjson::Value& string);

} // namespace korvex::app
