#pragma once

#include "schedule/MissedReminders.h"
#include "schedule/UpcomingTodos.h"
#include "ui/overview/TodoListPage.h"

namespace korvex::ui {

class NoticeLine;

/// The open scheduled todos of all active boards, under when they are due; above all others those
/// of which a reminder came due without a notification to answer, until it was seen. Follows the
/// store and the clock. Main thread.
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
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void missedChanged();
    QString noticeText() const;
    /// The todos of a section that are not among these, which are sorted by address.
    std::span<model::Entry* const> without(const std::vector<model::Entry*>& missed,
                                           const schedule::UpcomingGroup& group);

    NoticeLine* m_notice;
    /// Both null until the page is first shown.
    schedule::UpcomingTodos* m_upcoming = nullptr;
    schedule::MissedReminders* m_missed = nullptr;
    /// What is left of sections where others stand above.
    std::vector<std::vector<model::Entry*>> m_rests;
    base::Subscription m_changes;
    base::Subscription m_missedChanges;
};

} // namespace korvex::ui
