#pragma once

#include "base/Instant.h"
#include "base/RunLoop.h"
#include "model/Entry.h"

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <unordered_map>
#include <vector>

namespace korvex::ui {

class LeavingRows;
class RowListView;

/// Who carries out what a tick asks for. False where that was refused, which the user was told.
class TodoTicking {
public:
    virtual ~TodoTicking() = default;
    /// Completes an open todo and restores a completed one.
    bool toggle(model::Entry& entry) {
        return entry.isCompleted() ? restore(entry, std::nullopt) : complete(entry, std::nullopt);
    }
    /// Completes the todo as of this moment, or of now where none is given.
    virtual bool complete(model::Entry& entry, std::optional<base::Instant> completedAt) = 0;
    /// Opens the todo again at this place on its board, or at the end where none is given.
    virtual bool restore(model::Entry& entry, std::optional<std::int64_t> position) = 0;
};

/// The todos of a list whose ticks were changed just now. A change is stored at once; its row stays
/// for half a second after the latest one, and as long as the pointer is on a further circle: while
/// one ticks one todo after another, no row moves under the pointer. Then the rows leave together
/// and are gone. Ticked once more before, all is as it was: the place on the board, or the moment
/// of completion. Nothing is done any more once this is gone. Main thread.
class LingeringTicks {
public:
    /// The list that they stand in.
    class List {
    public:
        virtual ~List() = default;
        /// Whether a todo in this state is one of those that the list shows.
        virtual bool belongs(const model::Entry& entry) const = 0;
        /// Keeps the row where it is, whatever becomes of the todo, until `letGo`.
        virtual void hold(model::Entry& entry) = 0;
        virtual void letGo(model::Entry& entry) = 0;
        /// The row in which the todo is or was ticked; -1 when there is none.
        virtual int tickedRow(const model::Entry& entry) const = 0;
        /// Where the keyboard goes on when what stood in this row has left; -1 for nowhere.
        virtual int rowAfter(int row) const = 0;
    };

    /// What it works with; all of it outlives this.
    struct Parts {
        List& list;
        RowListView& view;
        LeavingRows& leaving;
        TodoTicking& actions;
        base::RunLoop& runLoop;
    };
    explicit LingeringTicks(const Parts& parts) : m_parts(parts) {}

    /// Ticks the todo, or takes the tick back that is still seen.
    void toggle(model::Entry& entry);
    /// Whether its tick is still seen, or was taken back while it was.
    bool contains(model::Entry& entry) const { return m_ticked.contains(&entry); }

private:
    using Seconds = std::chrono::duration<double>;
    struct Ticked {
        /// Where an open todo stood on its board, counted with those whose ticks are still seen.
        std::int64_t place = 0;
        /// When a completed todo was completed.
        std::optional<base::Instant> completedAt;
        /// When it began to leave, by the run loop; absent while it stays.
        std::optional<Seconds> leavingSince;
    };
    using Entries = std::vector<model::Entry*>;

    void tick(model::Entry& entry);
    void takeBack(model::Entry& entry, Ticked& ticked);
    /// The place of an open todo with the completed ones counted that are still seen on its board,
    /// and the other way round.
    std::int64_t placeOf(const model::Entry& entry) const;
    std::int64_t positionOf(const model::Entry& entry, const Ticked& ticked) const;
    bool isSeenOnBoardOf(const model::Entry& entry, const model::Entry& other) const;
    bool pointerTicksOn() const;
    void wait();
    void leave();
    void goOn();
    void stepOn();
    void letGo(const Entries& entries);
    void letGo(model::Entry& entry);

    Parts m_parts;
    std::unordered_map<model::Entry*, Ticked> m_ticked;
    std::unique_ptr<base::RunLoop::Timer> m_waiting;
    std::unique_ptr<base::RunLoop::Timer> m_stepping;
};

} // namespace korvex::ui
