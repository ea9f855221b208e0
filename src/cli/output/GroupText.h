#pragma once

#include "cli/output/ListText.h"

#include <vector>

namespace korvex::cli {

/// Entries of any boards under a title.
struct TitledEntries {
    std::string title;
    std::span<model::Entry* const> entries;
};

/// Groups for people: each has its title and then one entry a line with short identifier, date,
/// board, mark and text; all groups are aligned with each other. What is completed has its day in
/// the title, and in its line only the time.
void printGroups(Session& session, const std::vector<TitledEntries>& groups, ListDate date);

} // namespace korvex::cli
