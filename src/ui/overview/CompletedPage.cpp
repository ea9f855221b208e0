#include "ui/overview/CompletedPage.h"

#include "schedule/CompletedTodos.h"
#include "ui/kit/words/Text.h"
#include "ui/overview/CompletedFilterBar.h"

#include <QScopedValueRollback>

#include <numeric>

namespace korvex::ui {

CompletedPage::CompletedPage(const Workspace& workspace, const Theme& theme, QWidget* parent)
    : TodoListPage(workspace, theme, TodoListModel::Detail::completion, tr("Completed"), parent),
      m_bar(
          new CompletedFilterBar(workspace.boards, workspace.dates, workspace.clock, theme, this)) {
    insertBar(*m_bar);
    connect(m_bar, &CompletedFilterBar::changed, this, &CompletedPage::filterChanged);
    connect(m_bar, &CompletedFilterBar::listRequested, this, &CompletedPage::takeKeyboard);
}

CompletedPage::~CompletedPage() = default;

std::vector<TodoGroup> CompletedPage::groups() {
    std::vector<TodoGroup> result;
    if (!m_completed) {
        return result;
    }
    result.reserve(m_completed->groups().size());
    for (const auto& group : m_completed->groups()) {
        const auto& on = day(group);
        result.push_back({.key = on.number, .title = on.title, .entries = group.entries});
    }
    return result;
}

const CompletedPage::Day& CompletedPage::day(const schedule::CompletedTodoGroup& group) {
    const auto [place, isNew] = m_days.try_emplace(group.date.seconds);
    if (isNew) {
        const auto& formats = workspace().dates.formats();
        place->second.number = static_cast<int>(formats.calendar().day(group.date).value_or(0));
        place->second.title = toQString(group.title(m_now, formats));
    }
    return place->second;
}

void CompletedPage::setNow(base::Instant now, const base::TimeZone& zone) {
    if (!m_completed) {
        m_completed = std::make_unique<schedule::CompletedTodos>(workspace().context,
                                                                 workspace().texts, now, zone);
        m_changes = m_completed->didChange().connect([this] { groupsChanged(m_extent); });
    }
    // The titles of the days depend on these.
    const auto& calendar = workspace().dates.formats().calendar();
    const auto today = calendar.day(now);
    if (m_today != today || m_zone != zone) {
        m_days.clear();
        m_today = today;
        m_now = now;
        m_zone = zone;
    }
    m_completed->setNow(now, zone);
}

void CompletedPage::linger(const base::Uuid& id) {
    m_completed->linger(id);
}

void CompletedPage::release(const base::Uuid& id) {
    m_completed->release(id);
}

void CompletedPage::followBoards() {
    TodoListPage::followBoards();
    m_bar->followBoards();
}

void CompletedPage::filterChanged() {
    if (!m_completed) {
        return;
    }
    const QScopedValueRollback changing(m_extent, TodoListModel::Extent::most);
    follow([this] { m_completed->setFilter(m_bar->filter()); });
    scrollToTop();
}

TodoListPage::Hint CompletedPage::emptyHint() const {
    if (m_completed && m_completed->hasAny()) {
        return {.what = tr("No matching completed todos"),
                .next = tr("Search for something else, or reset the filter.")};
    }
    return {.what = tr("No completed todos yet."), .next = tr("Todos that you tick show up here.")};
}

QString CompletedPage::headerNote() const {
    if (!m_completed) {
        return {};
    }
    const auto& groups = m_completed->groups();
    const auto count = std::accumulate(
        groups.begin(), groups.end(), std::size_t{0},
        [](std::size_t sum, const auto& group) { return sum + group.entries.size(); });
    if (count == 0) {
        return {};
    }
    return m_completed->filter().isActive() ? tr("%L1 found").arg(count)
                                            : tr("%L1 completed").arg(count);
}

} // namespace korvex::ui
