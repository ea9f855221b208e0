#include "services/UndoManager.h"

#include "store/StoreError.h"

#include <numeric>
#include <utility>

namespace korvex::services {

namespace {

/// Of the exception that is being handled: whether trying again would be refused again.
bool isRefusal() {
    try {
        throw;
    } catch (const store::StoreError&) {
        return false;
    } catch (const base::Error&) {
        return true;
    } catch (...) {
        return false;
    }
}

} // namespace

void UndoManager::registerUndo(std::string name, std::size_t cost, Action inverse) {
    Entry entry{std::move(name), cost, std::move(inverse)};
    if (m_state == State::undoing) {
        m_redo.push_back(std::move(entry));
        return;
    }
    m_undo.push_back(std::move(entry));
    if (m_state == State::idle) {
        m_redo.clear();
        forgetOldest();
        m_didChange.emit();
    }
}

std::string UndoManager::undoActionName() const {
    return canUndo() ? m_undo.back().name : std::string();
}

std::string UndoManager::redoActionName() const {
    return canRedo() ? m_redo.back().name : std::string();
}

void UndoManager::undo() {
    run(m_undo, State::undoing);
}

void UndoManager::redo() {
    run(m_redo, State::redoing);
}

void UndoManager::run(Stack& stack, State state) {
    if (stack.empty() || m_state != State::idle) {
        return;
    }
    auto entry = std::move(stack.back());
    stack.pop_back();
    m_state = state;
    try {
        entry.inverse();
    } catch (...) {
        if (!isRefusal()) {
            stack.push_back(std::move(entry));
        }
        m_state = State::idle;
        m_didChange.emit();
        throw;
    }
    m_state = State::idle;
    m_didChange.emit();
}

void UndoManager::forgetOldest() {
    auto cost =
        std::accumulate(m_undo.begin(), m_undo.end(), std::size_t{0},
                        [](std::size_t sum, const Entry& entry) { return sum + entry.cost; });
    // The latest stays, whatever it costs.
    while (m_undo.size() > 1 && (m_undo.size() > kMaximumActions || cost > kMaximumCost)) {
        cost -= m_undo.front().cost;
        m_undo.pop_front();
    }
}

} // namespace korvex::services
