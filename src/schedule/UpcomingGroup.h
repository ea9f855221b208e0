#pragma once

#include "base/Calendar.h"
#include "base/Uuid.h"
#include "model/Entry.h"
#include "store/Condition.h"

#include <optional>
#include <span>
#include <string_view>
#include <unordered_set>
#include <vector>

namespace korvex::schedule {

/// The sections of Upcoming, in display order.
enum class UpcomingSection {
    overdue,
    today,
    next3Days,
    next7Days,
    next2Weeks,
    later,
    reminderOnly,
};
/// The English title: "Overdue", "Today", "Next 3 days" …
std::string_view title(UpcomingSection section);
/// The name in the command line's JSON: "overdue", "next3Days" …
std::string_view name(UpcomingSection section);

/// The open scheduled todos of one section, in order.
struct UpcomingGroup {
    UpcomingSection section = UpcomingSection::overdue;
    std::vector<model::Entry*> entries;

    bool operator==(const UpcomingGroup&) const = default;

    /// Every entry that can be upcoming, and some that are not: as much as the store can tell.
    static store::Condition condition();
    /// What is upcoming among any entries, at a moment, in a zone: sections in order, none empty.
    /// `includingCompletedIDs` are completed todos that are to be seen a little longer. Throws only
    /// what loading an entry's board may throw.
    static std::vector<UpcomingGroup>
    groups(std::span<model::Entry* const> entries, base::Instant now, const base::TimeZone& zone,
           const std::unordered_set<base::Uuid>& includingCompletedIDs = {});
};

} // namespace korvex::schedule
