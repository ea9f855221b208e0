#pragma once

#include <string_view>

namespace korvex::model {

enum class EntryType { text, todo };

/// "text" or "todo", as stored.
constexpr std::string_view rawValue(EntryType type) {
    return type == EntryType::todo ? "todo" : "text";
}

/// Only exactly "todo" is a todo: whatever else a store holds reads as a text entry.
constexpr EntryType entryType(std::string_view raw) {
    return raw == "todo" ? EntryType::todo : EntryType::text;
}

} // namespace korvex::model
