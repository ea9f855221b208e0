#pragma once

#include "base/Signal.h"
#include "schedule/UpcomingGroup.h"
#include "store/ModelContext.h"

#include <memory>

namespace korvex::schedule {

/// The upcoming todos of a store, kept up to date: a changed todo is placed anew, the others stay.
/// Equals `UpcomingGroup::groups` over all entries at all times. Main thread; the context must
/// outlive it.
class UpcomingTodos {
public:
    /// Throws StoreError.
    UpcomingTodos(store::ModelContext& context, base::Instant now, base::TimeZone zone);
    ~UpcomingTodos();
    UpcomingTodos(const UpcomingTodos&) = delete;
    UpcomingTodos& operator=(const UpcomingTodos&) = delete;

    /// Valid until the next change.
    const std::vector<UpcomingGroup>& groups() const;
    /// How many open todos all groups have together.
    std::size_t count() const;

    /// "Now" has moved, or the zone is another: whole sections may move.
    void setNow(base::Instant now, const base::TimeZone& zone);
    /// Lets a todo that is being completed stay in its place until `release`.
    void linger(const base::Uuid& id);
    void release(const base::Uuid& id);

    /// Emitted after `groups` has become different; also when only a shown todo's fields have.
    base::Signal<>& didChange();

private:
    struct Contents;
    std::unique_ptr<Contents> m_contents;
};

} // namespace korvex::schedule
