#pragma once

#include "services/SearchService.h"

#include <QObject>

namespace korvex::ui {

class Navigation;
class SearchField;
class SearchPage;

/// The search of the main window: what is typed in the field leads to the page of results, and
/// leaving it to where one was, as if nothing had been. The field is empty whenever something else
/// is shown. Main thread.
class SearchSession final : public QObject {
    Q_OBJECT

public:
    SearchSession(SearchField& field, Navigation& navigation, services::SearchService& service,
                  QObject* parent);

    /// The page that shows what was found, made when the first search shows it.
    void setPage(SearchPage& page) { m_page = &page; }

private:
    /// Lets the next search find its texts ready, so that it answers at once.
    void prepare();
    void search(const QString& query);
    bool isInSight() const;
    void leave();
    void clear();

    SearchField& m_field;
    Navigation& m_navigation;
    services::SearchService& m_service;
    SearchPage* m_page = nullptr;
    bool m_isPreparing = false;
};

} // namespace korvex::ui
