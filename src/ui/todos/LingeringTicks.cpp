#include "ui/todos/LingeringTicks.h"

#include "ui/kit/lists/RowListView.h"
#include "ui/kit/theme/Design.h"
#include "ui/todos/LeavingRows.h"

#include <QStyle>

#include <algorithm>
#include <chrono>

namespace korvex::ui {

namespace {

/// A picture of a row on its way follows the one before, where there is time to draw it.
constexpr std::chrono::milliseconds kStep{16};

/// How long a row takes to leave; 0 where nothing moves.
std::chrono::milliseconds leavingTime(const RowListView& view) {
    return std::chrono::milliseconds(
        view.isVisible()
            ? view.style()->styleHint(QStyle::SH_Widget_Animation_Duration, nullptr, &view)
            : 0);
}

} // namespace

void LingeringTicks::toggle(model::Entry& entry) {
    const auto ticked = m_ticked.find(&entry);
    if (ticked != m_ticked.end() && !m_parts.list.belongs(entry)) {
        takeBack(entry, ticked->second);
    } else {
        tick(entry);
    }
}

void LingeringTicks::tick(model::Entry& entry) {
    if (m_ticked.erase(&entry) > 0) {
        m_parts.list.letGo(entry); // taken back before: it is held where it is now
    }
    m_ticked[&entry] = {.place = placeOf(entry), .completedAt = entry.completedAt()};
    m_parts.list.hold(entry);
    if (m_parts.actions.toggle(entry)) {
        wait();
    } else {
        letGo(entry);
    }
}

void LingeringTicks::takeBack(model::Entry& entry, Ticked& ticked) {
    ticked.leavingSince.reset();
    m_parts.leaving.forget(entry);
    if (entry.isCompleted()) {
        m_parts.actions.restore(entry, positionOf(entry, ticked));
    } else {
        m_parts.actions.complete(entry, ticked.completedAt);
    }
    wait();
}

bool LingeringTicks::isSeenOnBoardOf(const model::Entry& entry, const model::Entry& other) const {
    return &other != &entry && other.isCompleted() && other.boardID() == entry.boardID();
}

std::int64_t LingeringTicks::placeOf(const model::Entry& entry) const {
    std::vector<std::int64_t> seen;
    for (const auto& [other, ticked] : m_ticked) {
        if (isSeenOnBoardOf(entry, *other)) {
            seen.push_back(ticked.place);
        }
    }
    std::sort(seen.begin(), seen.end());
    auto place = entry.sortOrder();
    for (const auto each : seen) {
        place += each <= place ? 1 : 0;
    }
    return place;
}

std::int64_t LingeringTicks::positionOf(const model::Entry& entry, const Ticked& ticked) const {
    return ticked.place - std::count_if(m_ticked.begin(), m_ticked.end(), [&](const auto& each) {
               return isSeenOnBoardOf(entry, *each.first) && each.second.place < ticked.place;
           });
}

bool LingeringTicks::pointerTicksOn() const {
    const auto row = m_parts.view.pointedSign();
    return row >= 0 && std::none_of(m_ticked.begin(), m_ticked.end(), [&](const auto& each) {
               return m_parts.list.tickedRow(*each.first) == row;
           });
}

void LingeringTicks::wait() {
    m_waiting = m_parts.runLoop.callAfter(kTickShown, [this] { leave(); });
}

void LingeringTicks::leave() {
    if (pointerTicksOn()) {
        wait();
        return;
    }
    const auto isStill = leavingTime(m_parts.view).count() == 0;
    Entries gone;
    for (auto& [entry, ticked] : m_ticked) {
        if (m_parts.list.belongs(*entry) || m_parts.list.tickedRow(*entry) < 0 || isStill) {
            gone.push_back(entry);
        } else if (!ticked.leavingSince) {
            ticked.leavingSince = m_parts.runLoop.elapsed();
        }
    }
    letGo(gone);
    goOn();
}

void LingeringTicks::goOn() {
    const Seconds whole = leavingTime(m_parts.view);
    std::optional<Seconds> next;
    for (const auto& [entry, ticked] : m_ticked) {
        if (ticked.leavingSince) {
            const auto left = *ticked.leavingSince + whole - m_parts.runLoop.elapsed();
            next = std::clamp(left, Seconds(0), next.value_or(kStep));
        }
    }
    if (next) {
        m_stepping = m_parts.runLoop.callAfter(*next, [this] { stepOn(); });
    } else {
        m_stepping.reset();
    }
}

void LingeringTicks::stepOn() {
    const Seconds whole = leavingTime(m_parts.view);
    Entries gone;
    for (auto& [entry, ticked] : m_ticked) {
        if (!ticked.leavingSince) {
            continue;
        }
        const auto now = m_parts.runLoop.elapsed();
        if (m_parts.list.belongs(*entry) || now >= *ticked.leavingSince + whole) {
            gone.push_back(entry);
        } else {
            m_parts.leaving.leave(*entry, (now - *ticked.leavingSince) / whole);
        }
    }
    letGo(gone);
    goOn();
}

void LingeringTicks::letGo(const Entries& entries) {
    for (auto* const entry : entries) {
        letGo(*entry);
    }
}

void LingeringTicks::letGo(model::Entry& entry) {
    const auto ticked = m_ticked.extract(&entry);
    if (entry.isCompleted()) {
        for (auto& [other, rest] : m_ticked) {
            if (other->boardID() == entry.boardID() && rest.place > ticked.mapped().place) {
                --rest.place;
            }
        }
    }
    const auto row = m_parts.list.tickedRow(entry);
    const auto wasCurrent = row >= 0 && m_parts.view.currentRow() == row;
    m_parts.list.letGo(entry);
    m_parts.leaving.forget(entry);
    if (wasCurrent && !m_parts.list.belongs(entry)) {
        m_parts.view.setCurrentRow(m_parts.list.rowAfter(row));
    }
}

} // namespace korvex::ui
