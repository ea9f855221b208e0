#include "ui/windows/SearchSession.h"

#include "ui/kit/controls/SearchField.h"
#include "ui/kit/words/Refusal.h"
#include "ui/overview/SearchPage.h"
#include "ui/windows/Navigation.h"

#include <QTimer>

#include <chrono>
#include <utility>

namespace korvex::ui {

namespace {

/// Shorter than a frame.
constexpr std::chrono::milliseconds kPreparationSlice{8};

} // namespace

SearchSession::SearchSession(SearchField& field, Navigation& navigation,
                             services::SearchService& service, QObject* parent)
    : QObject(parent), m_field(field), m_navigation(navigation), m_service(service) {
    connect(&field, &SearchField::focused, this, &SearchSession::prepare);
    connect(&field, &SearchField::textChanged, this, &SearchSession::search);
    connect(&field, &SearchField::walked, this, [this](int key) {
        if (isInSight()) {
            m_page->walk(key);
        }
    });
    connect(&field, &SearchField::openRequested, this, [this] {
        if (isInSight()) {
            m_page->openCurrent();
        }
    });
    connect(&field, &SearchField::escaped, this, [this] {
        leave();
        m_navigation.takeKeyboard();
    });
    connect(&navigation, &Navigation::changed, this, [this] {
        if (!isInSight()) {
            clear();
        }
    });
}

void SearchSession::prepare() {
    if (std::exchange(m_isPreparing, true)) {
        return;
    }
    QTimer::singleShot(0, this, [this] {
        m_isPreparing = false;
        bool isMore = false;
        // What cannot be read now, the search will say.
        const auto refused = refusal([&] { isMore = m_service.prepare(kPreparationSlice); });
        if (!refused && isMore) {
            prepare();
        }
    });
}

void SearchSession::search(const QString& query) {
    if (query.trimmed().isEmpty()) {
        leave();
    } else if (isInSight() || m_navigation.showPage(PageKind::search)) {
        m_page->search(query);
    }
}

bool SearchSession::isInSight() const {
    return m_navigation.currentPage() == PageKind::search;
}

void SearchSession::leave() {
    if (isInSight()) {
        m_navigation.leaveSearch();
    } else {
        clear();
    }
}

void SearchSession::clear() {
    if (m_page) {
        m_page->clear();
    }
    m_field.clear();
}

} // namespace korvex::ui
