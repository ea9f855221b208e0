#include "ui/overview/SearchPage.h"

#include "ui/kit/ErrorBanner.h"
#include "ui/kit/Refusal.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QLocale>
#include <QScrollBar>
#include <QVBoxLayout>

#include <algorithm>

namespace korvex::ui {

SearchPage::SearchPage(const Workspace& workspace, const Theme& theme, QWidget* parent)
    : QWidget(parent),
      m_workspace(workspace),
      m_theme(theme),
      m_model(workspace.search, workspace.folding, workspace.clock, workspace.dates),
      m_title(new QLabel(tr("Search"), this)),
      m_count(new QLabel(this)),
      m_banner(new ErrorBanner(theme, this)),
      m_nothing(new QLabel(this)),
      m_list(new SearchResultList(m_model, theme, this)) {
    auto* const heading = new QHBoxLayout;
    heading->setContentsMargins(18, 16, 18, 10);
    heading->addWidget(m_title, 1);
    heading->addWidget(m_count);
    m_nothing->setTextFormat(Qt::PlainText);
    m_nothing->setWordWrap(true);
    m_nothing->setContentsMargins(18, 4, 18, 8);
    m_nothing->setForegroundRole(QPalette::PlaceholderText);
    m_nothing->hide();
    auto* const column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addLayout(heading);
    column->addWidget(m_banner);
    column->addWidget(m_nothing);
    column->addWidget(m_list, 1);
    setFocusProxy(m_list);

    connect(m_list->selectionModel(), &QItemSelectionModel::currentChanged, this,
            [this](const QModelIndex& index) {
                m_chosen = index.isValid() ? std::optional(m_model.id(index.row())) : std::nullopt;
            });
    connect(m_list, &SearchResultList::openRequested, this, &SearchPage::open);
    connect(m_list, &SearchResultList::toggleRequested, this, &SearchPage::toggle);
    connect(&theme, &Theme::changed, this, &SearchPage::applyTheme);
    m_ticks = workspace.scheduleClock.didTick().connect([this](base::Instant) {
        m_model.forgetLabels();
        m_list->viewport()->update();
    });
    applyTheme();
}

SearchPage::~SearchPage() = default;

void SearchPage::search(const QString& query) {
    m_query = query;
    if (find() && m_model.rowCount() > 0) {
        m_list->setCurrentRow(0);
    }
}

void SearchPage::clear() {
    m_query.clear();
    m_model.clear();
    m_banner->clear();
}

void SearchPage::storeChanged() {
    if (m_query.isEmpty()) {
        return;
    }
    const int row = m_list->currentRow();
    const auto chosen = m_chosen;
    const int y = m_list->visualRect(m_list->currentIndex()).top();
    auto& bar = *m_list->verticalScrollBar();
    const int scrolled = bar.value();
    if (!find() || m_model.rowCount() == 0 || row < 0) {
        return;
    }
    const int found = chosen ? m_model.rowOf(*chosen) : -1;
    const int now = found < 0 ? std::min(row, m_model.rowCount() - 1) : found;
    bar.setValue(scrolled);
    m_list->selectionModel()->setCurrentIndex(m_model.index(now, 0),
                                              QItemSelectionModel::ClearAndSelect);
    if (found >= 0) {
        bar.setValue(bar.value() + m_list->visualRect(m_model.index(now, 0)).top() - y);
    }
}

bool SearchPage::find() {
    const auto refused = refusal([&] { m_model.search(m_query); });
    if (refused) {
        m_model.clear();
        m_banner->showMessage(*refused);
        m_nothing->hide();
        m_count->clear();
        return false;
    }
    m_banner->clear();
    const int count = m_model.rowCount();
    m_count->setText(count == 0   ? QString()
                     : count == 1 ? tr("1 result")
                                  : tr("%1 results").arg(QLocale().toString(count)));
    m_nothing->setVisible(count == 0);
    if (count == 0) {
        m_nothing->setText(tr("No results for “%1”.").arg(m_query.simplified()));
    }
    return true;
}

void SearchPage::openCurrent() {
    if (m_list->currentIndex().isValid()) {
        open(m_list->currentRow());
    }
}

void SearchPage::focusList() {
    m_list->setFocus();
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
    if (!m_model.row(row).isTodo || m_model.board(row).isArchived()) {
        return;
    }
    auto* const entry = record(row);
    const auto refused = refusal([&] {
        if (entry && entry->isCompleted()) {
            m_workspace.entries.restoreTodo(*entry, m_workspace.now());
        } else if (entry) {
            m_workspace.entries.completeTodo(*entry, m_workspace.now());
        }
    });
    if (refused) {
        m_banner->showMessage(*refused);
    }
}

/// Null when it is gone, or for a board.
model::Entry* SearchPage::record(int row) {
    model::Entry* entry = nullptr;
    const auto refused = refusal([&] {
        if (!m_model.isBoard(row)) {
            entry = m_workspace.context.find<model::Entry>(m_model.id(row).id);
        }
    });
    if (refused) {
        m_banner->showMessage(*refused);
    }
    return entry;
}

void SearchPage::applyTheme() {
    m_title->setFont(m_theme.titleFont());
    m_count->setFont(m_theme.font());
    auto quiet = m_count->palette();
    quiet.setColor(QPalette::WindowText, m_theme.colors().secondaryText);
    m_count->setPalette(quiet);
}

} // namespace korvex::ui
