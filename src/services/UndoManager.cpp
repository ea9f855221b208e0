#include "services/UndoManager.h"

#include "store/StoreError.h"

#include <algorithm>
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
    auto& stack = m_state == State::undoing ? m_redo : m_undo;
    stack.push_back(std::move(step));
    forgetOldest(stack);
    if (m_state == State::idle) {
        m_redo.clear();
        m_didChange.emit();
    }
}

UndoManager::StepId UndoManager::registerUndo(std::string name, std::size_t cost, Action inverse,
                                              std::vector<base::Uuid> entries) {
    const Group group(*this);
    auto& about = m_open.about;
    if (about.name.empty()) {
        about.name = std::move(name);
    }
    about.entries.insert(about.entries.end(), entries.begin(), entries.end());
    m_open.cost += cost;
    m_open.inverses.push_back(std::move(inverse));
    return about.id;
}

void UndoManager::forgetEverything() {
    m_undo.clear();
    m_redo.clear();
    m_didChange.emit();
}

void UndoManager::withdraw(StepId id) {
    if (const auto place = placeOf(id); place && m_undo[*place].inverses.size() == 1) {
        m_undo.erase(m_undo.begin() + static_cast<std::ptrdiff_t>(*place));
        m_didChange.emit();
    }
}

std::optional<std::size_t> UndoManager::placeOf(StepId id) const {
    const auto found = std::find_if(m_undo.begin(), m_undo.end(),
                                    [id](const Step& step) { return step.about.id == id; });
    return found == m_undo.end() ? std::nullopt
                                 : std::optional(static_cast<std::size_t>(found - m_undo.begin()));
}

const UndoManager::About* UndoManager::findUndo(StepId id) const {
    const auto place = placeOf(id);
    return place ? &m_undo[*place].about : nullptr;
}

void UndoManager::undo() {
    if (canUndo()) {
        run(m_undo, m_undo.size() - 1, State::undoing);
    }
}

void UndoManager::undo(StepId id) {
    if (const auto place = placeOf(id)) {
        run(m_undo, *place, State::undoing);
    }
}

void UndoManager::redo() {
    if (canRedo()) {
        run(m_redo, m_redo.size() - 1, State::redoing);
    }
}

void UndoManager::run(Stack& stack, std::size_t place, State state) {
    if (m_state != State::idle || m_openGroups > 0) {
        return;
    }
    const auto position = static_cast<std::ptrdiff_t>(place);
    auto step = std::move(stack[place]);
    stack.erase(stack.begin() + position);
    m_state = state;
    m_leftOut = 0;
    m_runningParts = step.inverses.size();
    try {
        takeBack(step);
    } catch (...) {
        if (!isRefusal()) {
            stack.insert(stack.begin() + position, std::move(step));
        }
        m_state = State::idle;
        m_didChange.emit();
        throw;
    }
    m_state = State::idle;
    m_didChange.emit();
}

/// What its inverses register becomes one step again, under the same name.
void UndoManager::takeBack(Step& step) {
    const Group group(*this, step.about.name);
    const auto now = m_clock.now();
    auto left = step.inverses.size();
    try {
        for (; left > 0; --left) {
            step.inverses[left - 1](now);
        }
    } catch (...) {
        left += doAgain(now);
        if (!m_open.inverses.empty() && left < step.inverses.size()) {
            step.inverses.resize(left); // the others are a step of their own now
        }
        throw;
    }
}

/// Does again what of a step was taken back before the rest failed, and says how many of its parts
/// that was. When that fails too, what is still taken back can be done again later.
std::size_t UndoManager::doAgain(base::Instant now) {
    auto takenBack = std::exchange(m_open.inverses, {});
    std::size_t count = 0;
    try {
        for (; !takenBack.empty(); takenBack.pop_back()) {
            takenBack.back()(now);
            ++count;
        }
    } catch (...) {
        // The caller is to hear of the first failure.
    }
    m_open.inverses = std::move(takenBack);
    return count;
}

void UndoManager::forgetOldest(Stack& stack) {
    auto cost = std::accumulate(stack.begin(), stack.end(), std::size_t{0},
                                [](std::size_t sum, const Step& step) { return sum + step.cost; });
    // The latest stays, whatever it costs.
    while (stack.size() > 1 && (stack.size() > kMaximumActions || cost > kMaximumCost)) {
        cost -= stack.front().cost;
        stack.pop_front();
    }
}

} // namespace korvex::services
