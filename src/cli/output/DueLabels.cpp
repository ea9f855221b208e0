#include "cli/output/DueLabels.h"

#include "cli/session/Session.h"

namespace korvex::cli {

std::string_view DueLabels::label(const model::Entry& entry) {
    const auto schedule = entry.schedule();
    // A text entry may keep the schedule of the todo that it was: it is due no more.
    if (schedule.isEmpty() || !entry.isTodo()) {
        return {};
    }
    const auto made = [&] {
        return schedule.dueLabel(m_session.now(), m_session.formats()).value_or(std::string());
    };
    if (schedule.dueDay && !schedule.dueDate) {
        const auto [known, isNew] = m_labelsOfDays.try_emplace(*schedule.dueDay);
        if (isNew) {
            known->second = made();
        }
        return known->second;
    }
    m_label = made();
    return m_label;
}

} // namespace korvex::cli
