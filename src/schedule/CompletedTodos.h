#pragma once

#include "base/Signal.h"
#include "schedule/CompletedFilter.h"
#include "store/ModelContext.h"

#include <memory>

namespace korvex::schedule {

/// The completed todos of a store under a filter, kept up to date: a changed todo is placed anew,
/// the others stay. Equals `CompletedFilter::apply` and `CompletedTodoGroup::groups` over all
/// entries at all times, but for the todos that linger. Main thread; context and texts must outlive
/// it.
class CompletedTodos {
public:
    /// `locale` as `base::Calendar` takes it. Throws StoreError.
    CompletedTodos(store::ModelContext& context, services::FoldedTexts& texts, base::Instant now,
                   base::TimeZone zone, std::string locale = {});
    ~CompletedTodos();
    CompletedTodos(const CompletedTodos&) = delete;
    CompletedTodos& operator=(const CompletedTodos&) = delete;

    /// Valid until the next change.
    const std::vector<CompletedTodoGroup>& groups() const;
    /// Whether anything is completed at all, whatever the filter hides.
    bool hasAny() const;

    const CompletedFilter& filter() const;
    void setFilter(CompletedFilter filter);
    /// "Now" has moved, or the zone is another: periods and days may be others.
    void setNow(base::Instant now, const base::TimeZone& zone);
    /// Lets a todo that is being restored stay in its place until `release`. To be called before it
    /// is restored: the place is the one that it has now.
    void linger(const base::Uuid& id);
    void release(const base::Uuid& id);

    /// Emitted after `groups` or `hasAny` has become different; also when only a shown todo's
    /// fields have.
    base::Signal<>& didChange();

private:
    struct Contents;
    std::unique_ptr<Contents> m_contents;
};

} // namespace korvex::schedule
