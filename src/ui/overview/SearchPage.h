#pragma once

#include "ui/overview/SearchListModel.h"
#include "ui/overview/SearchResultList.h"
#include "ui/workspace/Workspace.h"

#include <QWidget>

class QLabel;

namespace korvex::ui {

class ErrorBanner;

/// What the search found, at once on every key press. Follows the store while it is in use; keeps
/// nothing of the store otherwise.
class SearchPage final : public QWidget {
    Q_OBJECT

public:
    SearchPage(const Workspace& workspace, const Theme& theme, QWidget* parent = nullptr);
    ~SearchPage() override;

    void search(const QString& query);
    /// Forgets what was found.
    void clear();
    /// Searches again; the chosen row stays chosen, where it is on the screen.
    void storeChanged();
    /// As an arrow or page key in the list.
    void walk(int key) { m_list->walk(key); }
    void openCurrent();
    void focusList();

    SearchResultList& list() { return *m_list; }
    SearchListModel& results() { return m_model; }
    ErrorBanner& banner() { return *m_banner; }

Q_SIGNALS:
    void entryOpenRequested(korvex::model::Entry* entry);
    void boardOpenRequested(korvex::model::Board* board);

private:
    /// False when the store refused.
    bool find();
    void open(int row);
    void toggle(int row);
    model::Entry* record(int row);
    void applyTheme();

    const Workspace& m_workspace;
    const Theme& m_theme;
    SearchListModel m_model;
    QLabel* m_title;
    QLabel* m_count;
    ErrorBanner* m_banner;
    QLabel* m_nothing;
    SearchResultList* m_list;
    QString m_query;
    /// What is chosen, also while the results are about to be others.
    std::optional<services::SearchResult::ID> m_chosen;
    base::Subscription m_ticks;
};

} // namespace korvex::ui
