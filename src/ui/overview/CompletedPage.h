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
    bool shows(const model::Board&) const override { return true; }
    void linger(const base::Uuid& id) override;
    void release(const base::Uuid& id) override;
    void followBoards() override;
    QString emptyHint() const override;
    QString headerNote() const override;

private:
    struct Day {
        int number = 0;
        QString title;
    };
    /// Of the day that begins then.
    const Day& day(const schedule::CompletedTodoGroup& group);
    void filterChanged();

    /// Null until the page is first shown.
    std::unique_ptr<schedule::CompletedTodos> m_completed;
    /// By the seconds of their starts, as long as today stays today.
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
