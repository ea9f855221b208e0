#pragma once

#include "ui/kit/pages/Page.h"
#include "ui/overview/SearchListModel.h"
#include "ui/overview/SearchListView.h"
#include "ui/todos/TodoActions.h"
#include "ui/workspace/Workspace.h"

namespace korvex::ui {

class PageHeader;

/// What the search found, at once on every key press. Follows the store while it is in use; keeps
/// nothing of the store otherwise.
class SearchPage final : public Page {
    Q_OBJECT

public:
    SearchPage(const Workspace& workspace, const Theme& theme, QWidget* parent = nullptr);
    ~SearchPage() override;

    QString title() const override;
    void takeKeyboard() override;
    /// Searches again; the chosen row stays chosen, where it is on the screen.
    void storeChanged() override;

    void search(const QString& query);
    /// Forgets what was found.
    void clear();
    /// Does what this arrow or page key does in the list.
    void walk(int key) { m_list->walk(key); }
    void openCurrent();

Q_SIGNALS:
    void entryOpenRequested(korvex::model::Entry* entry);
    void boardOpenRequested(korvex::model::Board* board);

private:
    /// Searches anew. Returns false when the store refused.
    bool find();
    void open(int row);
    void toggle(int row);
    model::Entry* record(int row);

    const Workspace& m_workspace;
    SearchListModel m_model;
    PageHeader* m_header;
    SearchListView* m_list;
    TodoActions m_actions;
    QString m_query;
    /// What is chosen, also while the results are about to be others.
    std::optional<services::SearchResult::ID> m_chosen;
    base::Subscription m_ticks;
};

} // namespace korvex::ui
