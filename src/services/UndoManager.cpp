#include "services/UndoManager.h"

#include <algorithm>
#include <iterator>
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
        m_open = {.about = {.id = ++m_lastId, .name = std::move(name)}};
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
    auto& about = m_open.about;
    if (about.name.empty()) {
        about.name = std::move(name);
    }
    about.entries.insert(about.entries.end(), entries.begin(), entries.end());
    m_open.cost += cost;
    m_open.inverses.push_back(std::move(inverse));
}

UndoManager::Stack::const_iterator UndoManager::placeOf(StepId id) const {
    return std::find_if(m_undo.begin(), m_undo.end(),
                        [id](const Step& step) { return step.about.id == id; });
}

const UndoManager::About* UndoManager::findUndo(StepId id) const {
    const auto place = placeOf(id);
    return place == m_undo.end() ? nullptr : &place->about;
}

void UndoManager::undo() {
    if (canUndo()) {
        run(m_undo, std::prev(m_undo.cend()), State::undoing);
    }
}

void UndoManager::undo(StepId id) {
    if (const auto place = placeOf(id); place != m_undo.end()) {
        run(m_undo, place, State::undoing);
    }
}

void UndoManager::redo() {
    if (canRedo()) {
        run(m_redo, std::prev(m_redo.cend()), State::redoing);
    }
}

void UndoManager::run(Stack& stack, Stack::const_iterator place, State state) {
    if (m_state != State::idle || m_openGroups > 0) {
        return;
    }
    const auto step = *place;
    stack.erase(place);
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
    const Group group(*this, step.about.name);
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
