#include "ui/overview/SearchListModel.h"

#include "ui/boards/BoardIcons.h"
#include "ui/kit/words/Refusal.h"

#include <QStringList>

#include <memory>

namespace korvex::ui {

namespace {

/// Some screens full.
constexpr int kKeptRows = 200;

QString iconOf(std::string_view symbol, const model::Board& board) {
    if (symbol == "rectangle.stack") {
        return boardIconName(board.iconSystemName());
    }
    if (symbol == "text.alignleft") {
        return QStringLiteral("text-align-left");
    }
    return symbol == "checkmark.circle" ? QStringLiteral("check-circle-fill")
                                        : QStringLiteral("circle");
}

} // namespace

SearchListModel::SearchListModel(services::SearchService& search, const base::TextFolding& folding,
                                 const schedule::ScheduleClock& clock, const DateTexts& dates,
                                 QObject* parent)
    : QAbstractListModel(parent),
      m_search(search),
      m_folding(folding),
      m_clock(clock),
      m_dates(dates),
      m_rows(kKeptRows) {}

int SearchListModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(m_results.size());
}

QVariant SearchListModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || index.row() >= rowCount()) {
        return {};
    }
    switch (role) {
    case Qt::DisplayRole:
    case Qt::AccessibleTextRole:
        return row(index.row()).line.text;
    case Qt::AccessibleDescriptionRole: {
        const auto& shown = row(index.row());
        QStringList parts{shown.kind};
        if (!shown.isBoard) {
            parts.append(tr("on %1").arg(shown.boardName));
        }
        if (!shown.dueDescription.isEmpty()) {
            parts.append(shown.dueDescription);
        }
        if (shown.isArchived) {
            parts.append(tr("Archived"));
        }
        return parts.join(QStringLiteral(", "));
    }
    case Qt::CheckStateRole:
        return row(index.row()).isTodo
                   ? QVariant(row(index.row()).isCompleted ? Qt::Checked : Qt::Unchecked)
                   : QVariant();
    default:
        return {};
    }
}

Qt::ItemFlags SearchListModel::flags(const QModelIndex& index) const {
    auto result = QAbstractListModel::flags(index);
    if (index.isValid() && index.row() < rowCount()) {
        result.setFlag(Qt::ItemIsUserCheckable, row(index.row()).isTodo);
    }
    return result;
}

void SearchListModel::search(const QString& query) {
    const auto text = toUtf8(query);
    auto results = m_search.search(text);
    beginResetModel();
    m_results = std::move(results);
    m_terms = services::SearchService::foldedTerms(text, m_folding);
    m_rows.clear();
    endResetModel();
}

void SearchListModel::clear() {
    beginResetModel();
    m_results = {};
    m_rows.clear();
    endResetModel();
}

const SearchRow& SearchListModel::row(int row) const {
    if (const auto* const known = m_rows.object(row)) {
        return *known;
    }
    auto fresh = std::make_unique<SearchRow>();
    // What cannot be read stays empty: a list that is drawn cannot ask what to do.
    if (const auto refused = refusal([&] { *fresh = made(row); })) {
        fresh->line.text = *refused;
    }
    auto* const kept = fresh.release();
    m_rows.insert(row, kept); // takes it over
    return *kept;
}

SearchRow SearchListModel::made(int row) const {
    const auto result = m_results[at(row)];
    SearchRow shown{
        .line = SearchLine::of(result.content, m_terms, m_folding),
        .icon = iconOf(result.symbol(), board(row)),
        .kind = translated(result.kind()),
        .boardName = toQString(result.boardName),
        .isBoard = !result.entryType,
        .isTodo = result.entryType == model::EntryType::todo,
        .isCompleted = result.isCompleted,
        .isArchived = result.isArchived,
    };
    const auto* const found = shown.isTodo && !shown.isCompleted ? entry(row) : nullptr;
    if (found) {
        shown.due = dueLabelOf(*found, m_clock.now(), m_dates);
    }
    if (!shown.due.isEmpty()) {
        shown.dueDescription = toQString(
            found->schedule().accessibilityLabel(false, m_clock.now(), m_dates.formats()));
    }
    return shown;
}

int SearchListModel::rowOf(const services::SearchResult::ID& id) const {
    for (int row = 0; row < rowCount(); ++row) {
        if (this->id(row) == id) {
            return row;
        }
    }
    return -1;
}

void SearchListModel::forgetLabels() {
    m_rows.clear();
}

} // namespace korvex::ui
