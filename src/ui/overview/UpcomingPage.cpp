#include "ui/overview/UpcomingPage.h"

#include "ui/kit/words/Text.h"

namespace korvex::ui {

UpcomingPage::UpcomingPage(const Workspace& workspace, const Theme& theme, QWidget* parent)
    : TodoListPage(workspace, theme, TodoListModel::Detail::due, tr("Upcoming"), parent) {}

std::vector<TodoGroup> UpcomingPage::groups() {
    std::vector<TodoGroup> result;
    if (!m_upcoming) {
        return result;
    }
    for (const auto& group : m_upcoming->groups()) {
        result.push_back({.key = static_cast<int>(group.section),
                          .title = translated(schedule::title(group.section)),
                          .isUrgent = group.section == schedule::UpcomingSection::overdue,
                          .entries = group.entries});
    }
    return result;
}

void UpcomingPage::setNow(base::Instant now, const base::TimeZone& zone) {
    if (!m_upcoming) {
        m_upcoming = &workspace().upcoming.get();
        m_changes = m_upcoming->didChange().connect([this] { groupsChanged(); });
    }
    m_upcoming->setNow(now, zone);
}

void UpcomingPage::linger(const base::Uuid& id) {
    m_upcoming->linger(id);
}

void UpcomingPage::release(const base::Uuid& id) {
    m_upcoming->release(id);
}

TodoListPage::Hint UpcomingPage::emptyHint() const {
    return {.what = tr("No upcoming todos."), .next = tr("Todos with a date show up here.")};
}

QString UpcomingPage::headerNote() const {
    const auto count = m_upcoming ? m_upcoming->count() : 0;
    return count == 0 ? QString() : tr("%L1 open").arg(count);
}

} // namespace korvex::ui
