#include "services/UndoManager.h"

#include <numeric>
#include <utility>

namespace korvex::services {

UndoManager::Group::Group(UndoManager& manager, std::string name) : m_manager(manager) {
    m_manager.open(std::move(name));
}

UndoManager::Group::~Group() {
    m_manager.close();
}

void UndoManager::open(std::string name) {
    if (m_openGroups++ == 0) {
        m_open = {.name = std::move(name)};
    }
}

void UndoManager::close() {
    if (--m_openGroups > 0) {
        return;
    }
    auto step = std::exchange(m_open, {});
    if (step.inverses.empty()) {
        return;
    }
    (m_state == State::undoing ? m_redo : m_undo).push_back(std::move(step));
    if (m_state == State::idle) {
        m_redo.clear();
        forgetOldest();
        m_didChange.emit();
    }
}

void UndoManager::registerUndo(std::string name, std::size_t cost, Action inverse,
                               std::vector<base::Uuid> entries) {
    const Group group(*this);
    if (m_open.name.empty()) {
        m_open.name = std::move(name);
    }
    m_open.cost += cost;
    m_open.inverses.push_back(std::move(inverse));
    m_open.entries.insert(m_open.entries.end(), entries.begin(), entries.end());
}

std::string UndoManager::undoActionName() const {
    return canUndo() ? m_undo.back().name : std::string();
}

std::string UndoManager::redoActionName() const {
    return canRedo() ? m_redo.back().name : std::string();
}

std::vector<base::Uuid> UndoManager::undoEntries() const {
    return canUndo() ? m_undo.back().entries : std::vector<base::Uuid>();
}

std::vector<base::Uuid> UndoManager::redoEntries() const {
    return canRedo() ? m_redo.back().entries : std::vector<base::Uuid>();
}

void UndoManager::undo() {
    run(m_undo, State::undoing);
}

void UndoManager::redo() {
    run(m_redo, State::redoing);
}

void UndoManager::run(Stack& stack, State state) {
    if (stack.empty() || m_state != State::idle || m_openGroups > 0) {
        return;
    }
    const auto step = std::move(stack.back());
    stack.pop_back();
    m_state = state;
    try {
        takeBack(step);
    } catch (...) {
        m_state = State::idle;
        m_didChange.emit();
        throw;
    }
    m_state = State::idle;
    m_didChange.emit();
}

/// What its inverses register becomes one step again, under the same name.
void UndoManager::takeBack(const Step& step) {
    const Group group(*this, step.name);
    try {
        for (auto inverse = step.inverses.rbegin(); inverse != step.inverses.rend(); ++inverse) {
            (*inverse)();
        }
    } catch (...) {
        doAgain();
        throw;
    }
}

/// Does again what of a step was taken back before the rest was refused.
void UndoManager::doAgain() {
    auto takenBack = std::exchange(m_open.inverses, {});
    try {
        for (; !takenBack.empty(); takenBack.pop_back()) {
            takenBack.back()();
        }
    } catch (...) {
        // Refused as well, and not what the caller is to hear of: the user can do it again later.
    }
    m_open.inverses = std::move(takenBack);
}

void UndoManager::forgetOldest() {
    auto cost = std::accumulate(m_undo.begin(), m_undo.end(), std::size_t{0},
                                [](std::size_t sum, const Step& step) { return sum + step.cost; });
    // The latest stays, whatever it costs.
    while (m_undo.size() > 1 && (m_undo.size() > kMaximumActions || cost > kMaximumCost)) {
        cost -= m_undo.front().cost;
        m_undo.pop_front();
    }
}

} // namespace korvex::services
