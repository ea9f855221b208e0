#pragma once

#include "base/Signal.h"
#include "base/Uuid.h"
#include "model/Entry.h"
#include "schedule/ReminderCenter.h"
#include "schedule/ScheduleClock.h"
#include "store/ModelContext.h"

#include <functional>
#include <optional>
#include <unordered_set>
#include <vector>

namespace korvex::schedule {

/// The reminders of open todos that came due while no notification was shown that could be
/// answered, until their user has seen them here. Follows the store, the clock and whoever shows
/// notifications. What is listed stays so when these are shown again; what comes due from then on
/// is shown by them. As in all of Upcoming, nothing is listed of an archived board; what came due
/// there before something that was seen is seen with it. While this does not run nobody notes
/// whether what came due was seen: one that starts where none is shown that could be answered lists
/// all of it, or what the center says that nobody was shown; one that starts where they are, none.
/// Main thread; all that it refers to must outlive it.
class MissedReminders {
public:
    /// What lasts from one run of the program to the next.
    struct Seen {
        /// Reminders up to then need not be listed. Absent where nobody has looked after them yet:
        /// then only what the center says that nobody was shown is listed of what came due before.
        std::optional<base::Instant> until;
        std::function<void(base::Instant until)> keep;
        /// The latest reminder that was listed and not seen; absent where there is none.
        std::optional<base::Instant> listedUntil = std::nullopt;
        std::function<void(std::optional<base::Instant> until)> keepListed = nullptr;
    };
    /// Without `seen` nothing is ever listed: for a store of which nothing can be kept.
    MissedReminders(store::ModelContext& context, ReminderCenter& center, ScheduleClock& clock,
                    std::optional<Seen> seen);
    MissedReminders(const MissedReminders&) = delete;
    MissedReminders& operator=(const MissedReminders&) = delete;

    /// The earliest reminder first. Valid until the next change.
    const std::vector<model::Entry*>& entries() const { return m_entries; }
    /// Why their user may not have seen a notification.
    enum class Cause {
        /// None could be shown.
        notShown,
        /// The user was not to be disturbed.
        quieted,
        /// One was shown, in which nothing could be chosen.
        unanswerable,
    };
    /// Of all that are listed; absent where it differs among them or is not known, or none is
    /// listed.
    std::optional<Cause> cause() const;
    /// How many of them are open.
    std::size_t count() const;
    /// Emitted after one of these is another.
    base::Signal<>& didChange() { return m_didChange; }

    /// Lets a todo that is being completed stay in its place until `release`.
    void linger(const base::Uuid& id);
    void release(const base::Uuid& id);

    // Nobody is taken to have seen what merely stood on a screen: all are seen when the list goes
    // out of sight, if somebody has done anything in its window after they had stood there long
    // enough to be read.
    void beginShowing(base::Instant now);
    void userActs(base::Instant now);
    void endShowing();
    /// The user says so.
    void markSeen();

private:
    struct Item {
        base::Instant date;
        base::Uuid id;
        model::Entry* entry;
        /// Absent for what came due while this did not run.
        std::optional<Cause> cause;

        bool operator<(const Item& other) const {
            return date != other.date ? date < other.date : id < other.id;
        }
    };

    /// Whether notifications are shown that can be answered; absent where nobody knows.
    std::optional<bool> areShown() const;
    /// Why what is missed now is listed; absent where nobody knows.
    std::optional<Cause> causeNow() const;
    /// Takes in what was not read when the store could not be read.
    void catchUp();
    void moveTo(base::Instant now);
    /// Nothing can be shown any more, or from the start.
    void beginListing(base::Instant now);
    void follow(const store::ChangeSet& changes);
    std::vector<Item> read(base::Instant after, base::Instant until);
    /// What is listed, once more; why it was missed stays as it was.
    void readAgain();
    /// These two: true when it was one of these, or is now.
    bool place(model::Entry& entry);
    bool drop(const base::Uuid& id);
    const Item* itemOf(const base::Uuid& id) const;
    /// Its moment, if that makes it one of these.
    std::optional<base::Instant> missedAt(const model::Entry& entry) const;
    /// The latest reminder of an open todo that is not later than this.
    std::optional<base::Instant> latestUntil(base::Instant now) const;
    void acknowledge(base::Instant until);
    void setSeen(base::Instant until);
    void list();
    void keepListed();
    void tell();

    store::ModelContext& m_context;
    ReminderCenter& m_center;
    ScheduleClock& m_clock;
    std::optional<Seen> m_seen;
    /// What is listed has reminders after the first moment and up to the second.
    base::Instant m_seenUntil;
    base::Instant m_until;
    /// Up to when the user has seen them here.
    base::Instant m_acknowledgedUntil = base::Instant::distantPast();
    /// Whether notifications were shown when that was known last.
    std::optional<bool> m_wereShown;
    /// Those on archived boards too.
    std::vector<Item> m_items;
    std::vector<model::Entry*> m_entries;
    std::unordered_set<base::Uuid> m_lingering;
    std::optional<base::Instant> m_showingSince;
    /// When the last of them was added to the list.
    base::Instant m_listedAt;
    /// What is seen once the list is out of sight.
    std::optional<base::Instant> m_readUntil;
    /// The latest moment among what is listed.
    std::optional<base::Instant> m_latest;
    std::optional<base::Instant> m_keptListedUntil;
    /// Of all runs with these preferences, and it is not known yet whether anything waits.
    bool m_isFirst = false;
    bool m_isBehind = false;
    base::Signal<> m_didChange;
    std::vector<base::Subscription> m_subscriptions;
};

} // namespace korvex::schedule
