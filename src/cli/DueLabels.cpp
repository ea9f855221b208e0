#include "cli/DueLabels.h"

#include "cli/Session.h"

namespace korvex::cli {

std::string_view DueLabels::label(const model::Entry& entry) {
    const auto schedule = entry.schedule();
    if (schedule.isEmpty()) {
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
