#include "services/SearchResult.h"

namespace korvex::services {

std::string_view SearchResult::kind() const {
    if (!entryType) {
        return "Board";
    }
    if (*entryType == model::EntryType::text) {
        return "Text";
    }
    return isCompleted ? "Completed Todo" : "Todo";
}

std::string_view SearchResult::symbol() const {
    if (!entryType) {
        return "rectangle.stack";
    }
    if (*entryType == model::EntryType::text) {
        return "text.alignleft";
    }
    return isCompleted ? "checkmark.circle" : "circle";
}

} // namespace korvex::services
