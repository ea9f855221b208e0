#pragma once

#include <filesystem>
#include <set>
#include <string>

namespace korvex::tests {

/// The names in a folder, hidden ones too.
inline std::set<std::string> namesIn(const std::filesystem::path& folder) {
    std::set<std::string> names;
    for (const auto& each : std::filesystem::directory_iterator(folder)) {
        names.insert(each.path().filename().string());
    }
    return names;
}

} // namespace korvex::tests
