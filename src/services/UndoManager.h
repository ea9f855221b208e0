#pragma once

#include "base/Clock.h"
#include "base/Signal.h"
#include "base/Uuid.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace korvex::services {

/// The changes of one window that can be taken back, the latest first. Main thread.
class UndoManager {
public:
    /// An inverse: takes a change back, which is itself a change of that moment, and registers the
    /// inverse of that while it does.
    using Action = std::function<void(base::Instant now)>;
    /// Knows a step again; no step has 0.
    using StepId = std::uint64_t;

    static constexpr std::size_t kMaximumActions = 500;
    /// The most that the inverses of undo may keep, and those of redo, in bytes; the oldest go
    /// first. It has room for eight deletions of full attachments.
    static constexpr std::size_t kMaximumCost = 256 * 1024 * 1024;

    /// The clock must outlive the manager.
    explicit UndoManager(const base::Clock& clock) : m_clock(clock) {}

    /// While one lives, all that is registered becomes one step. A group within a group belongs to
    /// the outer one, and one in which nothing was registered leaves no step. What was registered
    /// before an exception makes a step too, since it was done.
    class Group {
    public:
        /// `name` is what the user calls all of it; empty for the name of what is registered first.
        explicit Group(UndoManager& manager, std::string name = {});
        ~Group();
        Group(const Group&) = delete;
        Group& operator=(const Group&) = delete;

    private:
        UndoManager& m_manager;
    };

    /// `name` is what was done ("Complete Todo"), `cost` about how many bytes `inverse` keeps,
    /// `entries` are those that the user meant. Called during `undo`, it is the way to redo. The
    /// step that it has become a part of.
    StepId registerUndo(std::string name, std::size_t cost, Action inverse,
                        std::vector<base::Uuid> entries = {});
    /// Nothing of what was done can be taken back any more, as after another store has taken the
    /// place of this one. Not while a group lives.
    void forgetEverything();
    /// What this step would take back has come to nothing: it leaves the stack, unless more than
    /// that was registered with it.
    void withdraw(StepId id);

    /// What a step takes back, or does again.
    struct About {
        StepId id = 0;
        std::string name;
        std::vector<base::Uuid> entries;
    };
    /// What the next `undo`, or `redo`, is about; null when there is none. Until the next change.
    const About* nextUndo() const { return m_undo.empty() ? nullptr : &m_undo.back().about; }
    const About* nextRedo() const { return m_redo.empty() ? nullptr : &m_redo.back().about; }
    /// The same of a step that was the latest once; null when it was taken back or forgotten.
    const About* findUndo(StepId id) const;

    bool canUndo() const { return !m_undo.empty(); }
    bool canRedo() const { return !m_redo.empty(); }
    /// Empty when there is none.
    std::string undoActionName() const { return canUndo() ? nextUndo()->name : std::string(); }
    std::string redoActionName() const { return canRedo() ? nextRedo()->name : std::string(); }

    /// Takes the latest step back, whole or not at all: when a part of it fails, the parts that
    /// were taken back before are done again. Whatever an inverse throws goes on to the caller. A
    /// step that may not be taken back any more is then off the stack; one that the store could not
    /// take back now, such as on a full disk, stays in its place, since those below it build on it.
    void undo();
    /// The same of a step that need not be the latest any more: what was done since stays.
    void undo(StepId id);
    void redo();

    /// Said by an inverse that goes on without so many of the entries that it is about: they are
    /// gone, and there is nothing left of them to take back.
    void leaveOut(std::size_t entries) { m_leftOut += entries; }
    /// Whether the inverse that runs is one of several of its step.
    bool isPartOfStep() const { return m_runningParts > 1; }
    /// How many the latest `undo` or `redo` went on without.
    std::size_t leftOut() const { return m_leftOut; }

    /// Emitted after the stacks have changed.
    base::Signal<>& didChange() { return m_didChange; }

private:
    struct Step {
        About about;
        std::size_t cost = 0;
        std::vector<Action> inverses;
    };
    using Stack = std::deque<Step>;
    enum class State { idle, undoing, redoing };

    void open(std::string name);
    void close();
    std::optional<std::size_t> placeOf(StepId id) const;
    void run(Stack& stack, std::size_t place, State state);
    void takeBack(Step& step);
    std::size_t doAgain(base::Instant now);
    static void forgetOldest(Stack& stack);

    const base::Clock& m_clock;
    Stack m_undo;
    Stack m_redo;
    State m_state = State::idle;
    /// What is registered while a group lives, and how many of them do.
    Step m_open;
    int m_openGroups = 0;
    StepId m_lastId = 0;
    std::size_t m_leftOut = 0;
    std::size_t m_runningParts = 0;
    base::Signal<> m_didChange;
};

} // namespace korvex::services
