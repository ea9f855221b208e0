#include "schedule/UpcomingGroup.h"

#include "model/Names.h"
#include "schedule/UpcomingSections.h"

#include <array>

namespace korvex::schedule {

namespace {

constexpr std::array<model::CaseName<UpcomingSection>, 7> kSections{{
    {UpcomingSection::overdue, "overdue", "Overdue"},
    {UpcomingSection::today, "today", "Today"},
    {UpcomingSection::next3Days, "next3Days", "Next 3 days"},
    {UpcomingSection::next7Days, "next7Days", "Next 7 days"},
    {UpcomingSection::next2Weeks, "next2Weeks", "Next 2 weeks"},
    {UpcomingSection::later, "later", "Later"},
    {UpcomingSection::reminderOnly, "reminderOnly", "Past Reminders"},
}};

} // namespace

std::string_view title(UpcomingSection section) {
    return kSections.at(static_cast<std::size_t>(section)).title;
}

std::string_view name(UpcomingSection section) {
    return kSections.at(static_cast<std::size_t>(section)).rawValue;
}

store::Condition UpcomingGroup::condition() {
    using model::Entry;
    using store::Condition;
    return Entry::openTodos() && Condition::any({Condition::isPresent(Entry::dueDayField),
                                                 Condition::isPresent(Entry::dueDateField),
                                                 Condition::isPresent(Entry::reminderDateField)});
}

std::vector<UpcomingGroup>
UpcomingGroup::groups(std::span<model::Entry* const> entries, base::Instant now,
                      const base::TimeZone& zone,
                      const std::unordered_set<base::Uuid>& includingCompletedIDs) {
    UpcomingSections sections(now, zone);
    std::vector<KeyedEntry> shown;
    shown.reserve(entries.size());
    visitEntries(
        entries, [](const model::Entry* entry) { return entry; },
        [&](model::Entry* entry) {
            if (entry->isCompleted() && !includingCompletedIDs.contains(entry->id())) {
                return;
            }
            if (const auto key = sections.keyOf(*entry)) {
                shown.push_back({*key, entry});
            }
        });
    return cutIntoGroups<UpcomingGroup>(inOrder(shown), emptySectionGroup);
}

} // namespace korvex::schedule
