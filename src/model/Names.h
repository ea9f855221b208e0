#pragma once

#include <optional>
#include <string_view>
#include <utility>

namespace korvex::model {

/// A row of the table beside an enumeration: the case, its stored raw value, its title in English.
template <typename Case>
struct CaseName {
    Case which;
    std::string_view rawValue;
    std::string_view title;
};

template <typename Case, typename Table>
std::optional<Case> caseWithRawValue(const Table& table, std::string_view rawValue) {
    for (const CaseName<Case>& row : table) {
        if (row.rawValue == rawValue) {
            return row.which;
        }
    }
    return std::nullopt;
}

} // namespace korvex::model
