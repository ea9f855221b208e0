#pragma once

#include "schedule/UpcomingTodos.h"
#include "ui/overview/TodoListPage.h"

namespace korvex::ui {

/// The open scheduled todos of all active boards, under when they are due. Follows the store and
/// the clock. Main thread.
class UpcomingPage final : public TodoListPage {
    Q_OBJECT

public:
    UpcomingPage(const Workspace& workspace, const Theme& theme, QWidget* parent = nullptr);

protected:
    std::vector<TodoGroup> groups() override;
    void setNow(base::Instant now, const base::TimeZone& zone) override;
    void linger(const base::Uuid& id) override;
    void release(const base::Uuid& id) override;
    Hint emptyHint() const override;
    QString headerNote() const override;

private:
    /// Null until the page is first shown.
    schedule::UpcomingTodos* m_upcoming = nullptr;
    base::Subscription m_changes;
};

} // namespace korvex::ui
