#pragma once

#include "base/Signal.h"
#include "ui/kit/pages/Page.h"
#include "ui/overview/TodoListModel.h"
#include "ui/todos/LingeringTicks.h"
#include "ui/todos/TodoActions.h"
#include "ui/workspace/Workspace.h"

namespace korvex::ui {

class PageHeader;
class TodoListView;

/// A page of todos from all boards under headings. Carries out what the user asks of a todo: a tick
/// is stored at once and seen a moment longer, then its row leaves; ticked again before, nothing
/// has changed. Follows the store and the clock; out of sight it does nothing, and catches up when
/// it is shown. Main thread.
class TodoListPage : public Page, private LingeringTicks::List {
    Q_OBJECT

public:
    ~TodoListPage() override;

    QString title() const override;
    void takeKeyboard() override;
    bool showRecord(const base::Uuid& id) override;

Q_SIGNALS:
    /// The entry is to be shown on its board.
    void entryOpenRequested(korvex::model::Entry* entry);

protected:
    TodoListPage(const Workspace& workspace, const Theme& theme, TodoListModel::Detail detail,
                 const QString& title, QWidget* parent);

    /// What is to be shown now; valid until the next change. Throws StoreError.
    virtual std::vector<TodoGroup> groups() = 0;
    /// "Now" has moved, or may have.
    virtual void setNow(base::Instant now, const base::TimeZone& zone) = 0;
    /// Lets a todo stay in its place until `release`, though it does not belong there any more.
    virtual void linger(const base::Uuid& id) = 0;
    virtual void release(const base::Uuid& id) = 0;
    /// What is said while there is nothing to show, and what would change that.
    struct Hint {
        QString what;
        QString next;
    };
    virtual Hint emptyHint() const = 0;
    /// What stands beside the title, quietly; may be empty.
    virtual QString headerNote() const = 0;

    /// The boards may have other names, or be others. Throws StoreError.
    virtual void followBoards();

    /// The groups are others now; small steps where few of their todos are.
    void groupsChanged(TodoListModel::Extent extent = TodoListModel::Extent::few);
    void scrollToTop();
    /// What rows say of their todos is another, though these have not changed.
    void forgetLabels();
    const Workspace& workspace() const { return m_workspace; }

    void showEvent(QShowEvent* event) override;

private:
    void connectList();
    /// Takes in all that may be different, as far as the page is in sight.
    void catchUp();
    void recordsChanged(const store::ChangeSet& changes);
    /// The rows show other boards, or these have other names. Throws StoreError.
    void followNames();
    void showNotes();
    bool belongs(const model::Entry& entry) const override;
    void hold(model::Entry& entry) override;
    void letGo(model::Entry& entry) override;
    int tickedRow(const model::Entry& entry) const override { return m_model.rowOf(entry); }
    int rowAfter(int row) const override;
    void toggle(model::Entry& entry) { m_ticks.toggle(entry); }
    void remove(model::Entry& entry);
    void openSchedule(model::Entry& entry);
    void openMenu(int row, const QPoint& globalPosition);

    const Workspace& m_workspace;
    TodoListModel m_model;
    PageHeader* m_header;
    TodoListView* m_list;
    TodoActions m_actions;
    LingeringTicks m_ticks;
    bool m_isBehind = true;
    bool m_isFollowing = false;
    base::Subscription m_changes;
    base::Subscription m_clockTicks;
};

} // namespace korvex::ui
