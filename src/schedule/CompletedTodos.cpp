#include "schedule/CompletedTodos.h"

#include "schedule/CompletedCriteria.h"
#include "schedule/KeptGroups.h"

namespace korvex::schedule {

struct CompletedTodos::Contents final : GroupRules {
    Contents(store::ModelContext& context, services::FoldedTexts& itsTexts, base::Instant itsNow,
             base::TimeZone zone, std::string itsLocale)
        : texts(itsTexts),
          now(itsNow),
          locale(std::move(itsLocale)),
          calendar(std::move(zone), locale),
          kept(context, CompletedFilter{}.condition(now, calendar), *this) {
        makeReady();
        kept.start();
    }

    bool holds(const model::Entry& entry) const override {
        return entry.isTodo() && (entry.isCompleted() || lingering.contains(entry.id()));
    }

    std::optional<EntryKey> keyOf(const model::Entry& entry) override {
        if (!entry.isCompleted()) {
            // It has forgotten when it was completed.
            const auto stays = lingering.find(entry.id());
            return stays != lingering.end() ? stays->second : std::nullopt;
        }
        auto key = criteria->keyOf(entry);
        if (!key || !criteria->matchesQuery(entry)) {
            return std::nullopt;
        }
        key->group = dayKey(entry, criteria->days());
        return key;
    }

    void makeReady() {
        interval = filter.interval(now, calendar);
        criteria.emplace(filter, now, calendar, texts);
    }

    void setFilter(CompletedFilter itsFilter) {
        if (itsFilter != filter) {
            filter = std::move(itsFilter);
            makeReady();
            kept.placeAll();
        }
    }

    void setNow(base::Instant itsNow, const base::TimeZone& zone) {
        now = itsNow;
        if (zone != calendar.timeZone()) {
            criteria.reset();
            calendar = base::Calendar(zone, locale);
        } else if (filter.interval(now, calendar) == interval) {
            return;
        }
        makeReady();
        kept.placeAll();
    }

    services::FoldedTexts& texts;
    base::Instant now;
    std::string locale;
    base::Calendar calendar;
    CompletedFilter filter;
    std::optional<base::DateInterval> interval;
    std::optional<CompletedCriteria> criteria;
    /// Where each stood when it was restored.
    std::unordered_map<base::Uuid, std::optional<EntryKey>> lingering;
    KeptGroups<CompletedTodoGroup, emptyDayGroup> kept;
};

CompletedTodos::CompletedTodos(store::ModelContext& context, services::FoldedTexts& texts,
                               base::Instant now, base::TimeZone zone, std::string locale)
    : m_contents(
          std::make_unique<Contents>(context, texts, now, std::move(zone), std::move(locale))) {}

CompletedTodos::~CompletedTodos() = default;

const std::vector<CompletedTodoGroup>& CompletedTodos::groups() const {
    return m_contents->kept.groups();
}

bool CompletedTodos::hasAny() const {
    return !m_contents->kept.entries().isEmpty();
}

const CompletedFilter& CompletedTodos::filter() const {
    return m_contents->filter;
}

void CompletedTodos::setFilter(CompletedFilter filter) {
    m_contents->setFilter(std::move(filter));
}

void CompletedTodos::setNow(base::Instant now, const base::TimeZone& zone) {
    m_contents->setNow(now, zone);
}

void CompletedTodos::linger(const base::Uuid& id) {
    m_contents->lingering.try_emplace(id, m_contents->kept.keyOf(id));
}

void CompletedTodos::release(const base::Uuid& id) {
    if (m_contents->lingering.erase(id) > 0) {
        m_contents->kept.placeAnew(id);
    }
}

base::Signal<>& CompletedTodos::didChange() {
    return m_contents->kept.didChange();
}

} // namespace korvex::schedule
