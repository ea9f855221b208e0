#pragma once

#include "ui/overview/TodoListPage.h"

#include <memory>

namespace korvex::schedule {
class CompletedTodos;
struct CompletedTodoGroup;
} // namespace korvex::schedule

namespace korvex::ui {

class CompletedFilterBar;

/// The completed todos of all boards under the days of their completion, with a filter. Main
/// thread.
class CompletedPage final : public TodoListPage {
    Q_OBJECT

public:
    CompletedPage(const Workspace& workspace, const Theme& theme, QWidget* parent = nullptr);
    ~CompletedPage() override;

protected:
    std::vector<TodoGroup> groups() override;
    void setNow(base::Instant now, const base::TimeZone& zone) override;
    void linger(const base::Uuid& id) override;
    void release(const base::Uuid& id) override;
    void followBoards() override;
    Hint emptyHint() const override;
    QString headerNote() const override;

private:
    struct Day {
        int number = 0;
        QString title;
    };
    /// The number and the title of the day that a group stands for.
    const Day& day(const schedule::CompletedTodoGroup& group);
    void filterChanged();

    /// Null until the page is first shown.
    std::unique_ptr<schedule::CompletedTodos> m_completed;
    /// The days that were asked for, by the seconds of their starts; forgotten when today is
    /// another day.
    std::unordered_map<double, Day> m_days;
    std::optional<base::DayNumber> m_today;
    /// A moment of that day.
    base::Instant m_now;
    std::optional<base::TimeZone> m_zone;
    TodoListModel::Extent m_extent = TodoListModel::Extent::few;
    CompletedFilterBar* m_bar;
    base::Subscription m_changes;
};

} // namespace korvex::ui
