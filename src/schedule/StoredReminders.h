#pragma once

#include "base/Instant.h"
#include "base/Uuid.h"
#include "schedule/ReminderRequest.h"
#include "store/ModelContext.h"

#include <functional>
#include <optional>
#include <string_view>

namespace korvex::schedule {

/// The reminders that the store asks for: those of open todos, as they are stored now. Makes no
/// records, so that many are read fast. A value over its context, which must outlive it; throws
/// StoreError. Main thread.
class StoredReminders {
public:
    explicit StoredReminders(store::ModelContext& context) : m_context(&context) {}

    /// One of them without copies: good until `sink` returns.
    struct View {
        const base::Uuid& entryID;
        base::Instant date;
        std::string_view body;
        /// When the todo was changed last.
        base::Instant updatedAt;

        bool operator==(const ReminderRequest& request) const {
            return entryID == request.entryID && date == request.date && body == request.body;
        }
        ReminderRequest request() const { return {entryID, date, std::string(body)}; }
    };
    /// Those later than `after`, in no order.
    void forEachAfter(base::Instant after, const std::function<void(const View&)>& sink) const;
    /// Those later than `after` and not later than `until`.
    void forEachBetween(base::Instant after, base::Instant until,
                        const std::function<void(const View&)>& sink) const;
    /// That of one todo; absent where it is gone, completed, no todo, or has no reminder.
    std::optional<ReminderRequest> of(const base::Uuid& entryID) const;

private:
    void read(const store::Condition& condition,
              const std::function<void(const View&)>& sink) const;

    store::ModelContext* m_context;
};

} // namespace korvex::schedule
