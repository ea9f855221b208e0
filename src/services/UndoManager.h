#pragma once

#include "base/Signal.h"

#include <cstddef>
#include <deque>
#include <functional>
#include <string>
#include <vector>

namespace korvex::services {

/// The changes of one window that can be taken back, the latest first. Main thread.
class UndoManager {
public:
    /// An inverse: takes a change back and, while it does, registers the inverse of that.
    using Action = std::function<void()>;

    static constexpr std::size_t kMaximumActions = 500;
    /// The most that the inverses may keep, in bytes; the oldest go first. It has room for eight
    /// deletions of full attachments.
    static constexpr std::size_t kMaximumCost = 256 * 1024 * 1024;

    /// `name` is what was done ("Complete Todo"), `cost` about how many bytes `inverse` keeps.
    /// Called during `undo`, it is the way to redo.
    void registerUndo(std::string name, std::size_t cost, Action inverse);

    bool canUndo() const { return !m_undo.empty(); }
    bool canRedo() const { return !m_redo.empty(); }
    /// Empty when there is none.
    std::string undoActionName() const;
    std::string redoActionName() const;

    /// Takes the latest change back. Whatever the inverse throws goes on to the caller. A change
    /// that may not be taken back any more is then off the stack; one that the store could not take
    /// back now, such as on a full disk, stays the latest, since those below it build on it.
    void undo();
    void redo();

    /// Emitted after the stacks have changed.
    base::Signal<>& didChange() { return m_didChange; }

private:
    struct Entry {
        std::string name;
        std::size_t cost;
        Action inverse;
    };
    using Stack = std::deque<Entry>;
    enum class State { idle, undoing, redoing };

    void run(Stack& stack, State state);
    void forgetOldest();

    Stack m_undo;
    Stack m_redo;
    State m_state = State::idle;
    base::Signal<> m_didChange;
};

} // namespace korvex::services
