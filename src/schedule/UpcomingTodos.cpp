#include "schedule/UpcomingTodos.h"

#include "schedule/KeptGroups.h"
#include "schedule/UpcomingSections.h"

#include <algorithm>

namespace korvex::schedule {

struct UpcomingTodos::Contents final : GroupRules {
    Contents(store::ModelContext& context, base::Instant now, base::TimeZone itsZone)
        : zone(std::move(itsZone)), kept(context, UpcomingGroup::condition(), *this) {
        sections.emplace(now, zone);
        kept.start();
    }

    bool holds(const model::Entry& entry) const override {
        // Also what keeps an archived board from being shown: the board may come back.
        return !entry.schedule().isEmpty() && isOpenOrLingers(entry);
    }

    std::optional<EntryKey> keyOf(const model::Entry& entry) override {
        return isOpenOrLingers(entry) ? sections->keyOf(entry) : std::nullopt;
    }

    bool isOpenOrLingers(const model::Entry& entry) const {
        return entry.isOpenTodo() || (entry.isTodo() && lingering.contains(entry.id()));
    }

    void setNow(base::Instant now, const base::TimeZone& itsZone) {
        const auto before = sections->now();
        if (itsZone != zone || now < before || !sections->moveTo(now)) {
            zone = itsZone;
            sections.emplace(now, zone);
            kept.placeAll();
            return;
        }
        // Within a day only what falls due, or whose reminder passes, moves.
        kept.placeAnew(kept.entries().between(static_cast<std::uint64_t>(UpcomingSection::today),
                                              orderedBits(before), orderedBits(now)));
    }

    base::TimeZone zone;
    std::optional<UpcomingSections> sections;
    std::unordered_set<base::Uuid> lingering;
    KeptGroups<UpcomingGroup, emptySectionGroup> kept;
};

UpcomingTodos::UpcomingTodos(store::ModelContext& context, base::Instant now, base::TimeZone zone)
    : m_contents(std::make_unique<Contents>(context, now, std::move(zone))) {}

UpcomingTodos::~UpcomingTodos() = default;

const std::vector<UpcomingGroup>& UpcomingTodos::groups() const {
    return m_contents->kept.groups();
}

std::size_t UpcomingTodos::count() const {
    const auto& entries = m_contents->kept.entries();
    const auto& lingering = m_contents->lingering;
    const auto leaving =
        std::count_if(lingering.begin(), lingering.end(), [&](const base::Uuid& id) {
            const auto* held = entries.find(id);
            return held && held->key && held->entry->isCompleted();
        });
    return entries.shownCount() - static_cast<std::size_t>(leaving);
}

void UpcomingTodos::setNow(base::Instant now, const base::TimeZone& zone) {
    m_contents->setNow(now, zone);
}

void UpcomingTodos::linger(const base::Uuid& id) {
    if (m_contents->lingering.insert(id).second) {
        m_contents->kept.placeAnew(id);
    }
}

void UpcomingTodos::release(const base::Uuid& id) {
    if (m_contents->lingering.erase(id) > 0) {
        m_contents->kept.placeAnew(id);
    }
}

base::Signal<>& UpcomingTodos::didChange() {
    return m_contents->kept.didChange();
}

} // namespace korvex::schedule
