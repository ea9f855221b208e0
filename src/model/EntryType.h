#pragma once

#include <array>
#include <string_view>

namespace korvex::model {

enum class EntryType { text, todo };

inline constexpr std::array kAllEntryTypes{EntryType::text, EntryType::todo};

/// "text" or "todo", as stored.
constexpr std::string_view rawValue(EntryType type) {
    return type == EntryType::todo ? "todo" : "text";
}

/// Only exactly "todo" is a todo: whatever else a store holds reads as a text entry.
constexpr EntryType entryType(std::string_view raw) {
    return raw == "todo" ? EntryType::todo : EntryType::text;
}

/// Where a moved or inserted entry or board lands relative to its target.
enum class EntryPlacement { before, after };

} // namespace korvex::model
