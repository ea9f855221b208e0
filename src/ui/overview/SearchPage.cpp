#include "ui/overview/SearchPage.h"

#include "ui/kit/pages/PageHeader.h"

#include <QScrollBar>

#include <algorithm>

namespace korvex::ui {

SearchPage::SearchPage(const Workspace& workspace, const Theme& theme, QWidget* parent)
    : Page(theme, parent),
      m_workspace(workspace),
      m_model(workspace.search, workspace.folding, workspace.scheduleClock, workspace.dates),
      m_header(new PageHeader(tr("Search"), theme)),
      m_list(new SearchListView(m_model, theme)),
      m_actions(*this, todoServices(workspace), workspace.undo, theme) {
    layOut({m_header}, *m_list);
    connect(m_list->selectionModel(), &QItemSelectionModel::currentChanged, this,
            [this](const QModelIndex& index) {
                m_chosen = index.isValid() ? std::optional(m_model.id(index.row())) : std::nullopt;
            });
    connect(m_list, &SearchListView::openRequested, this, &SearchPage::open);
    connect(m_list, &SearchListView::toggleRequested, this, &SearchPage::toggle);
    m_ticks = workspace.scheduleClock.didTick().connect([this](base::Instant) {
        m_model.forgetLabels();
        m_list->viewport()->update();
    });
}

SearchPage::~SearchPage() = default;

QString SearchPage::title() const {
    return m_header->title();
}

void SearchPage::takeKeyboard() {
    m_list->setFocus();
}

void SearchPage::search(const QString& query) {
    m_query = query;
    if (find() && m_model.rowCount() > 0) {
        m_list->setCurrentRow(0);
    }
}

void SearchPage::clear() {
    m_query.clear();
    m_model.clear();
    endAnswer();
}

void SearchPage::storeChanged() {
    if (m_query.isEmpty()) {
        return;
    }
    const auto row = m_list->currentRow();
    const auto chosen = m_chosen;
    const auto y = m_list->visualRect(m_list->currentIndex()).top();
    auto& bar = *m_list->verticalScrollBar();
    const auto scrolled = bar.value();
    if (!find() || m_model.rowCount() == 0 || row < 0) {
        return;
    }
    const auto found = chosen ? m_model.rowOf(*chosen) : -1;
    const auto now = found < 0 ? std::min(row, m_model.rowCount() - 1) : found;
    bar.setValue(scrolled);
    m_list->selectionModel()->setCurrentIndex(m_model.index(now, 0),
                                              QItemSelectionModel::ClearAndSelect);
    if (found >= 0) {
        bar.setValue(bar.value() + m_list->visualRect(m_model.index(now, 0)).top() - y);
    }
}

bool SearchPage::find() {
    if (!perform([&] { m_model.search(m_query); })) {
        m_model.clear();
        m_header->setNote({});
        setHint({});
        return false;
    }
    const auto count = m_model.rowCount();
    m_header->setNote(count == 0 ? QString() : tr("%Ln result(s)", nullptr, count));
    if (count == 0) {
        setHint(tr("No results for “%1”.").arg(m_query.simplified()),
                tr("Search for fewer letters, or for other words."));
    } else {
        setHint({});
    }
    return true;
}

void SearchPage::openCurrent() {
    if (m_list->currentIndex().isValid()) {
        open(m_list->currentRow());
    }
}

void SearchPage::open(int row) {
    // The results only look at records; whoever opens one may change it.
    if (m_model.isBoard(row)) {
        if (auto* const board = m_workspace.boards.board(m_model.id(row).id)) {
            Q_EMIT boardOpenRequested(board);
        }
    } else if (auto* const entry = record(row)) {
        Q_EMIT entryOpenRequested(entry);
    }
}

void SearchPage::toggle(int row) {
    if (!m_model.isTickable(row)) {
        return;
    }
    if (auto* const entry = record(row)) {
        m_actions.toggle(*entry);
    }
}

/// Null when it is gone, or for a board.
model::Entry* SearchPage::record(int row) {
    model::Entry* entry = nullptr;
    follow([&] {
        if (!m_model.isBoard(row)) {
            entry = m_workspace.context.find<model::Entry>(m_model.id(row).id);
        }
    });
    return entry;
}

} // namespace korvex::ui
