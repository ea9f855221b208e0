#include "schedule/MissedReminders.h"

#include "model/Board.h"
#include "store/StoreError.h"

#include <algorithm>
#include <utility>

namespace korvex::schedule {

namespace {

using model::Entry;

/// Seconds that a list is to be in sight before what is done in its window says that it was read.
constexpr double kReadingTime = 1.5;
/// Seconds.
constexpr double kJustBefore = 0.001;
/// To look up so many records one by one costs as much as to read all.
constexpr std::size_t kManyInserted = 512;

constexpr store::FieldReference kReminder{Entry::reminderDateField};

base::Instant justBefore(base::Instant moment) {
    return moment - kJustBefore;
}

} // namespace

MissedReminders::MissedReminders(store::ModelContext& context, ReminderCenter& center,
                                 ScheduleClock& clock, std::optional<Seen> seen)
    : m_context(context),
      m_center(center),
      m_clock(clock),
      m_seen(std::move(seen)),
      m_seenUntil(m_seen && m_seen->until ? *m_seen->until : base::Instant::distantPast()),
      m_until(m_seenUntil),
      m_listedAt(clock.now()) {
    if (!m_seen) {
        return;
    }
    if (!m_seen->until) {
        m_isFirst = true;
        setSeen(m_listedAt);
        m_until = m_seenUntil;
    }
    m_keptListedUntil = m_seen->listedUntil;
    if (m_keptListedUntil && *m_keptListedUntil > m_until) {
        m_until = *m_keptListedUntil;
        m_isBehind = true;
    }
    catchUp();
    m_subscriptions.push_back(
        context.didChange().connect([this](const auto& changes) { follow(changes); }));
    m_subscriptions.push_back(clock.didTick().connect([this](base::Instant) { catchUp(); }));
    m_subscriptions.push_back(center.didChange().connect([this] { catchUp(); }));
}

std::optional<bool> MissedReminders::areShown() const {
    const auto& status = m_center.status();
    if (status.authorization == AuthorizationStatus::unavailable && status.reason.empty()) {
        return std::nullopt;
    }
    return showsNotifications(status.authorization) && status.canAct && !status.isQuieted;
}

std::optional<MissedReminders::Cause> MissedReminders::causeNow() const {
    if (areShown() != false) {
        return std::nullopt;
    }
    const auto& status = m_center.status();
    if (!showsNotifications(status.authorization)) {
        return Cause::notShown;
    }
    // What came due before this was started may have been shown like any other.
    return !m_wereShown       ? std::nullopt
           : status.isQuieted ? std::optional(Cause::quieted)
                              : std::optional(Cause::unanswerable);
}

void MissedReminders::catchUp() {
    const auto before = m_entries;
    const auto causeBefore = cause();
    try {
        if (std::exchange(m_isBehind, false)) {
            readAgain();
        }
        moveTo(m_clock.now());
        list();
        keepListed();
    } catch (const store::StoreError&) {
        // Whoever asks the store next says what is wrong with it.
        m_isBehind = true;
    }
    if (m_entries != before || cause() != causeBefore) {
        m_didChange.emit();
    }
}

void MissedReminders::moveTo(base::Instant now) {
    const auto shown = areShown();
    if (now < m_until) {
        // The clock was set back: what is to come once more is to be told of once more.
        std::erase_if(m_items, [&](const Item& each) { return each.date > now; });
        m_seenUntil = std::min(m_seenUntil, now);
        m_until = now;
    }
    if (shown == false) {
        if (m_wereShown != false) {
            beginListing(now);
        }
        const auto found = read(m_until, now);
        m_items.insert(m_items.end(), found.begin(), found.end());
    } else if (shown && m_items.empty()) {
        const auto latest = latestUntil(now);
        if (latest && *latest > m_seenUntil) {
            setSeen(*latest);
        }
    }
    if (shown) {
        m_until = now;
        m_wereShown = shown;
    }
}

void MissedReminders::beginListing(base::Instant now) {
    const auto waiting = m_center.status().waitingSince;
    if (!waiting) {
        return;
    }
    const auto before = justBefore(*waiting);
    if (!m_wereShown && std::exchange(m_isFirst, false)) {
        // Nobody has seen any; what the agent could not show is known to have been missed.
        m_until = m_seenUntil = std::min(before, m_seenUntil);
        m_seen->keep(m_seenUntil);
        return;
    }
    if (!m_wereShown) {
        // Notifications have shown what came due before that while this did not run.
        m_until = std::max(m_until, std::min(before, now));
        m_seenUntil =
            std::max(m_seenUntil, m_items.empty() ? m_until : justBefore(m_items[0].date));
        return;
    }
    // What came due was taken to be shown until it was known that it could not be.
    const auto since = std::max(before, m_acknowledgedUntil);
    if (since < m_until) {
        m_until = since;
        std::erase_if(m_items, [&](const Item& each) { return each.date > m_until; });
        if (m_until < m_seenUntil) {
            m_seenUntil = m_until;
            m_seen->keep(m_until);
        }
    }
}

std::vector<MissedReminders::Item> MissedReminders::read(base::Instant after, base::Instant until) {
    std::vector<Item> items;
    if (until <= after) {
        return items;
    }
    // The index of reminders has those that are present, and only a comparison says so to SQLite.
    const auto found = m_context.fetch<Entry>({
        .condition = kReminder > store::Value{after.seconds} &&
                     kReminder <= store::Value{until.seconds} && Entry::openTodos(),
    });
    for (auto* const entry : found) {
        if (const auto date = entry->reminderDate(); date && date->isValid()) {
            items.push_back({*date, entry->id(), entry, causeNow()});
            m_listedAt = m_clock.now();
        }
    }
    std::sort(items.begin(), items.end());
    return items;
}

void MissedReminders::readAgain() {
    auto items = read(m_seenUntil, m_until);
    for (auto& each : items) {
        if (const auto* const before = itemOf(each.id)) {
            each.cause = before->cause;
        }
    }
    m_items = std::move(items);
}

std::optional<base::Instant> MissedReminders::latestUntil(base::Instant now) const {
    const auto found = m_context.fetch<Entry>({
        .condition = kReminder <= store::Value{now.seconds} && Entry::openTodos(),
        .order = {{.field = Entry::reminderDateField, .ascending = false}},
        .limit = 1,
    });
    return found.empty() ? std::nullopt : found.front()->reminderDate();
}

void MissedReminders::follow(const store::ChangeSet& changes) {
    if (m_isBehind || changes.isReplacement || changes.inserted.size() > kManyInserted) {
        m_isBehind = true;
        catchUp();
        return;
    }
    auto isDifferent = false;
    try {
        for (const auto& id : changes.deleted) {
            isDifferent = drop(id) || isDifferent;
        }
        for (const auto* const ids : {&changes.inserted, &changes.updated}) {
            for (const auto& id : *ids) {
                auto* const entry = m_context.find<Entry>(id);
                // A board may be archived now, or not any more.
                isDifferent = (entry ? place(*entry) : !m_items.empty()) || isDifferent;
            }
        }
    } catch (const store::StoreError&) {
        m_isBehind = true;
    }
    if (isDifferent) {
        tell();
    }
}

bool MissedReminders::place(Entry& entry) {
    const auto* const before = itemOf(entry.id());
    const auto cause = before ? before->cause : causeNow();
    const auto wasMissed = drop(entry.id());
    // What was not missed when it came due is not, however it changes.
    const auto date = wasMissed || areShown() == false ? missedAt(entry) : std::nullopt;
    if (!date) {
        return wasMissed;
    }
    if (!wasMissed) {
        m_listedAt = m_clock.now();
    }
    const Item item{*date, entry.id(), &entry, cause};
    m_items.insert(std::lower_bound(m_items.begin(), m_items.end(), item), item);
    return true;
}

bool MissedReminders::drop(const base::Uuid& id) {
    return std::erase_if(m_items, [&](const Item& each) { return each.id == id; }) > 0;
}

std::optional<base::Instant> MissedReminders::missedAt(const Entry& entry) const {
    if (!entry.isLive() ||
        !(entry.isOpenTodo() || (entry.isTodo() && m_lingering.contains(entry.id())))) {
        return std::nullopt;
    }
    const auto date = entry.reminderDate();
    return date && date->isValid() && *date > m_seenUntil && *date <= m_until ? date : std::nullopt;
}

const MissedReminders::Item* MissedReminders::itemOf(const base::Uuid& id) const {
    const auto found = std::find_if(m_items.begin(), m_items.end(),
                                    [&](const Item& each) { return each.id == id; });
    return found == m_items.end() ? nullptr : &*found;
}

std::optional<MissedReminders::Cause> MissedReminders::cause() const {
    const auto isOther = [this](const Item& each) { return each.cause != m_items.front().cause; };
    return m_entries.empty() || std::any_of(m_items.begin(), m_items.end(), isOther)
               ? std::nullopt
               : m_items.front().cause;
}

std::size_t MissedReminders::count() const {
    return static_cast<std::size_t>(std::count_if(
        m_entries.begin(), m_entries.end(), [](const Entry* each) { return each->isOpenTodo(); }));
}

void MissedReminders::linger(const base::Uuid& id) {
    m_lingering.insert(id);
}

void MissedReminders::release(const base::Uuid& id) {
    m_lingering.erase(id);
    if (auto* const entry = m_context.find<Entry>(id)) {
        place(*entry);
    }
    tell();
}

void MissedReminders::beginShowing(base::Instant now) {
    m_showingSince = now;
}

void MissedReminders::userActs(base::Instant now) {
    if (m_showingSince && now - std::max(*m_showingSince, m_listedAt) >= kReadingTime) {
        m_readUntil = m_latest;
    }
}

void MissedReminders::endShowing() {
    m_showingSince.reset();
    if (const auto until = std::exchange(m_readUntil, std::nullopt)) {
        acknowledge(*until);
    }
}

void MissedReminders::markSeen() {
    if (m_latest) {
        m_readUntil.reset();
        acknowledge(*m_latest);
    }
}

void MissedReminders::acknowledge(base::Instant until) {
    m_acknowledgedUntil = until;
    setSeen(until);
    tell();
}

void MissedReminders::setSeen(base::Instant until) {
    if (until > m_seenUntil) {
        m_seenUntil = until;
        m_seen->keep(until);
    }
    std::erase_if(m_items, [&](const Item& each) { return each.date <= until; });
}

void MissedReminders::list() {
    m_entries.clear();
    m_latest.reset();
    for (const auto& each : m_items) {
        const auto* const board = each.entry->board();
        if (board && !board->isArchived()) {
            m_entries.push_back(each.entry);
            m_latest = each.date;
        }
    }
}

void MissedReminders::keepListed() {
    const auto until = m_items.empty() ? std::nullopt : std::optional(m_items.back().date);
    if (m_seen && m_seen->keepListed && until != m_keptListedUntil) {
        m_keptListedUntil = until;
        m_seen->keepListed(until);
    }
}

void MissedReminders::tell() {
    try {
        list();
        keepListed();
    } catch (const store::StoreError&) {
        m_isBehind = true;
    }
    m_didChange.emit();
}

} // namespace korvex::schedule
