#pragma once

#include "base/Signal.h"
#include "schedule/FollowedEntries.h"
#include "schedule/RuledGroups.h"
#include "store/StoreError.h"

namespace korvex::schedule {

/// A store's entries in groups, kept up to date. Main thread; context and rules must outlive it.
template <typename Group, Group (*emptyGroup)(std::uint64_t)>
class KeptGroups {
public:
    /// `condition` takes every entry that the rules hold. Empty until `start`.
    KeptGroups(store::ModelContext& context, store::Condition condition, GroupRules& rules)
        : m_context(context), m_followed(context, std::move(condition)), m_groups(rules) {}

    const GroupedEntries<Group, emptyGroup>& entries() const { return m_groups.entries(); }
    const std::vector<Group>& groups() const { return entries().groups(); }

    /// Reads everything, and follows the store from then on. Throws StoreError.
    void start() {
        read();
        m_changes = m_context.didChange().connect([this](const auto& set) { follow(set); });
    }

    /// To be called after the rules have changed.
    void placeAll() {
        const auto former = groups();
        m_groups.placeAll();
        if (groups() != former) {
            m_didChange.emit();
        }
    }

    /// To be called after the rules have changed for these entries alone.
    void placeAnew(const std::vector<model::Entry*>& entries) {
        auto isDifferent = false;
        for (auto* entry : entries) {
            const auto former = keyOf(entry->id());
            m_groups.place(*entry);
            isDifferent = keyOf(entry->id()) != former || isDifferent;
        }
        if (isDifferent) {
            m_didChange.emit();
        }
    }
    void placeAnew(const base::Uuid& id) {
        const auto* held = entries().find(id);
        if (auto* entry = held ? held->entry : m_context.find<model::Entry>(id)) {
            placeAnew(std::vector{entry});
        }
    }

    /// Where an entry is shown; absent when it is not.
    std::optional<EntryKey> keyOf(const base::Uuid& id) const {
        const auto* held = entries().find(id);
        return held ? held->key : std::nullopt;
    }

    /// Emitted after the groups have become different, or a field of what they show or of its
    /// board.
    base::Signal<>& didChange() { return m_didChange; }

private:
    /// From so many changed entries on, making all groups anew costs less than moving each.
    static constexpr std::size_t kManyChanged = 64;

    void read() {
        m_groups.letAllGo();
        for (auto* entry : m_followed.readAll()) {
            m_groups.hold(*entry);
        }
        m_groups.placeAll();
        m_isBehind = false;
    }

    void follow(const store::ChangeSet& set) {
        auto isDifferent = true;
        try {
            if (m_isBehind) {
                read();
            } else {
                isDifferent = take(m_followed.of(set));
            }
        } catch (const store::StoreError&) {
            // Whoever asks the store next says what is wrong with it; this catches up after that.
            m_isBehind = true;
            return;
        }
        if (isDifferent) {
            m_didChange.emit();
        }
    }

    /// True when what is shown may be different.
    bool take(FollowedEntries::Changes news) {
        std::erase_if(news.entries,
                      [this](const model::Entry* entry) { return !m_groups.concern(*entry); });
        std::erase_if(news.deleted, [this](const auto& id) { return !entries().find(id); });
        if (news.movedBoards || news.entries.size() + news.deleted.size() > kManyChanged) {
            for (const auto& id : news.deleted) {
                m_groups.letGo(id);
            }
            for (auto* entry : news.entries) {
                m_groups.hold(*entry);
            }
            m_groups.placeAll();
            return true;
        }
        auto isDifferent = news.touchedBoards && entries().shownCount() > 0;
        const auto wasEmpty = entries().isEmpty();
        for (const auto& id : news.deleted) {
            isDifferent = m_groups.drop(id) || isDifferent;
        }
        for (auto* entry : news.entries) {
            isDifferent = m_groups.place(*entry) || isDifferent;
        }
        return isDifferent || entries().isEmpty() != wasEmpty;
    }

    store::ModelContext& m_context;
    FollowedEntries m_followed;
    RuledGroups<Group, emptyGroup> m_groups;
    /// The store could not be read when it had changed.
    bool m_isBehind = false;
    base::Signal<> m_didChange;
    base::Subscription m_changes;
};

} // namespace korvex::schedule
