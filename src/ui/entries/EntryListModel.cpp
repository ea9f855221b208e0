#include "ui/entries/EntryListModel.h"

#include "model/EntryContentLimit.h"
#include "ui/attachments/AttachmentChips.h"
#include "ui/kit/Text.h"

#include <algorithm>
#include <functional>
#include <string_view>
#include <unordered_map>

namespace korvex::ui {

namespace {

/// With more moves than this the rows change all at once.
constexpr std::ptrdiff_t kMaximumMoves = 40;

constexpr std::size_t kStampedBytes = 16'384;

template <typename T>
void mix(std::size_t& stamp, const T& value) {
    stamp = stamp * 1'000'003 ^ std::hash<T>()(value);
}

std::size_t stampOf(const model::Entry& entry) {
    std::size_t stamp = std::hash<std::string>()(entry.content());
    mix(stamp, entry.isTodo());
    if (const auto& data = entry.richTextData(); data && !entry.isTodo()) {
        // Of a long one its beginning and the time of the change tell enough.
        mix(stamp, std::string_view(reinterpret_cast<const char*>(data->data()),
                                    std::min(data->size(), kStampedBytes)));
        mix(stamp, data->size());
    }
    // Formatting and attachments too, which may be large, change with this only.
    mix(stamp, entry.updatedAt().seconds);
    mix(stamp, entry.isCompleted());
    mix(stamp, entry.dueDay().value_or(0));
    for (const auto& date : {entry.dueDate(), entry.dueStartDate(), entry.reminderDate()}) {
        mix(stamp, date ? date->seconds : 0.0);
    }
    return stamp;
}

} // namespace

EntryListModel::EntryListModel(const Workspace& workspace, QObject* parent)
    : QAbstractListModel(parent), m_workspace(workspace), m_attachments(workspace.context) {}

int EntryListModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(m_rows.size());
}

QVariant EntryListModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || index.row() >= rowCount()) {
        return {};
    }
    const auto* const shown = entry(index.row());
    switch (role) {
    case kindRole:
        return static_cast<int>(kind(index.row()));
    case Qt::DisplayRole:
    case Qt::AccessibleTextRole:
        return text(index.row());
    case Qt::AccessibleDescriptionRole:
        return shown ? accessibleDescription(*shown) : QString();
    case Qt::CheckStateRole:
        if (shown && shown->isTodo()) {
            return shown->isCompleted() ? Qt::Checked : Qt::Unchecked;
        }
        return {};
    default:
        return {};
    }
}

Qt::ItemFlags EntryListModel::flags(const QModelIndex& index) const {
    auto result = QAbstractListModel::flags(index);
    if (index.isValid() && index.row() < rowCount()) {
        const auto* const shown = entry(index.row());
        result.setFlag(Qt::ItemIsUserCheckable, shown && shown->isTodo());
        result.setFlag(Qt::ItemIsDragEnabled, kind(index.row()) == RowKind::entry && !m_isReadOnly);
        result.setFlag(Qt::ItemIsDropEnabled, false);
    }
    return result;
}

void EntryListModel::setBoard(model::Board* board) {
    beginResetModel();
    m_board = board;
    m_lingering.clear();
    m_attachments.clear();
    m_draftPlace = DraftPlace::none;
    m_isCompletedExpanded = false;
    m_rows = wantedRows();
    endResetModel();
    Q_EMIT countsChanged();
}

void EntryListModel::refresh() {
    apply(wantedRows());
    Q_EMIT countsChanged();
}

int EntryListModel::rowOf(const model::Entry& entry) const {
    const auto found = std::find_if(m_rows.begin(), m_rows.end(),
                                    [&](const Row& row) { return row.entry == &entry; });
    return found == m_rows.end() ? -1 : static_cast<int>(found - m_rows.begin());
}

int EntryListModel::rowOf(RowKind kind) const {
    const auto found = std::find_if(m_rows.begin(), m_rows.end(),
                                    [&](const Row& row) { return row.kind == kind; });
    return found == m_rows.end() ? -1 : static_cast<int>(found - m_rows.begin());
}

QString EntryListModel::text(int row) const {
    switch (kind(row)) {
    case RowKind::entry:
    case RowKind::completed: {
        const auto& content = entry(row)->content();
        const auto shown = model::EntryContentLimit::preview(content);
        const auto text = toQString(shown);
        return shown.size() < content.size() ? text + QStringLiteral("…") : text;
    }
    case RowKind::draft:
        return {};
    case RowKind::newTodo:
        return tr("New todo");
    case RowKind::completedHeading:
        return tr("Completed (%1)").arg(m_completed.size());
    }
    return {};
}

bool EntryListModel::isEditable(int row) const {
    return kind(row) == RowKind::entry && !m_isReadOnly && !isLingering(*entry(row)) &&
           model::EntryContentLimit::allows(entry(row)->content());
}

void EntryListModel::setCompletedExpanded(bool expanded) {
    if (m_isCompletedExpanded != expanded) {
        m_isCompletedExpanded = expanded;
        apply(wantedRows());
        const auto heading = index(rowOf(RowKind::completedHeading), 0);
        Q_EMIT dataChanged(heading, heading);
    }
}

int EntryListModel::openDraft(const model::Entry* after) {
    m_draftPlace = after ? DraftPlace::afterEntry : DraftPlace::start;
    m_draftAfter = after;
    apply(wantedRows());
    return rowOf(RowKind::draft);
}

int EntryListModel::openDraftAtEnd() {
    m_draftPlace = DraftPlace::end;
    apply(wantedRows());
    return rowOf(RowKind::draft);
}

void EntryListModel::closeDraft() {
    if (hasDraft()) {
        m_draftPlace = DraftPlace::none;
        apply(wantedRows());
    }
}

model::Entry* EntryListModel::draftPredecessor() const {
    const int row = rowOf(RowKind::draft);
    return row > 0 ? entry(row - 1) : nullptr;
}

void EntryListModel::linger(model::Entry& entry) {
    if (!isLingering(entry)) {
        m_lingering.push_back(&entry);
    }
}

void EntryListModel::release(const model::Entry& entry) {
    if (std::erase(m_lingering, &entry) > 0) {
        refresh();
    }
}

bool EntryListModel::isLingering(const model::Entry& entry) const {
    return std::find(m_lingering.begin(), m_lingering.end(), &entry) != m_lingering.end();
}

std::vector<EntryListModel::Row> EntryListModel::wantedRows() {
    std::vector<Row> rows;
    m_isReadOnly = m_board && m_board->isLive() && m_board->isArchived();
    if (!m_board || !m_board->isLive()) {
        m_completed.clear();
        m_openTodoCount = 0;
        return rows;
    }
    const auto active = services::EntryService::activeEntries(*m_board);
    rows.reserve(active.size() + 3);
    m_openTodoCount = 0;
    for (auto* const each : active) {
        rows.push_back({RowKind::entry, each, stampOf(*each)});
        m_openTodoCount += each->isTodo() ? 1 : 0;
    }
    std::erase_if(m_lingering, [&](const model::Entry* each) {
        return !each->isLive() || !each->isCompleted() || each->board() != m_board;
    });
    addLingering(rows);
    addDraft(rows);
    if (!m_isReadOnly) {
        rows.push_back({RowKind::newTodo});
    }

    m_completed = services::EntryService::completedTodos(*m_board);
    std::erase_if(m_completed, [this](const model::Entry* each) { return isLingering(*each); });
    if (!m_completed.empty()) {
        rows.push_back({RowKind::completedHeading, nullptr, m_completed.size()});
        if (m_isCompletedExpanded) {
            for (auto* const each : m_completed) {
                rows.push_back({RowKind::completed, each, stampOf(*each)});
            }
        }
    }
    return rows;
}

/// Each after the entry that it stands behind now.
void EntryListModel::addLingering(std::vector<Row>& rows) const {
    if (m_lingering.empty()) {
        return;
    }
    const model::Entry* predecessor = nullptr;
    for (const auto& row : m_rows) {
        if (row.kind != RowKind::entry) {
            continue;
        }
        if (isLingering(*row.entry)) {
            const auto after = std::find_if(rows.begin(), rows.end(), [&](const Row& wanted) {
                return predecessor && wanted.entry == predecessor;
            });
            rows.insert(after == rows.end() ? rows.begin() : after + 1,
                        {RowKind::entry, row.entry, stampOf(*row.entry)});
        }
        // An entry that is gone leaves the place to the one before it.
        if (row.entry->isLive() && (!row.entry->isCompleted() || isLingering(*row.entry))) {
            predecessor = row.entry;
        }
    }
}

void EntryListModel::addDraft(std::vector<Row>& rows) const {
    if (!hasDraft()) {
        return;
    }
    auto place = m_draftPlace == DraftPlace::start ? rows.begin() : rows.end();
    if (m_draftPlace == DraftPlace::afterEntry) {
        // When that entry is gone, the end is as good a place as any.
        place = std::find_if(rows.begin(), rows.end(),
                             [&](const Row& row) { return row.entry == m_draftAfter; });
        place += place == rows.end() ? 0 : 1;
    }
    rows.insert(place, {RowKind::draft});
}

void EntryListModel::apply(const std::vector<Row>& wanted) {
    const auto keys = [](const std::vector<Row>& rows) {
        std::vector<RowKey> result;
        result.reserve(rows.size());
        for (const auto& row : rows) {
            result.push_back({static_cast<int>(row.kind), row.entry});
        }
        return result;
    };
    const auto steps = rowSteps(keys(m_rows), keys(wanted));
    const auto moves = std::count_if(steps.begin(), steps.end(), [](const RowStep& step) {
        return step.kind == RowStep::Kind::move;
    });
    if (moves > kMaximumMoves) {
        applyAtOnce(wanted);
        return;
    }
    applySteps(steps, wanted);
    for (int row = 0; row < rowCount(); ++row) {
        auto& shown = m_rows[static_cast<std::size_t>(row)];
        const auto& now = wanted[static_cast<std::size_t>(row)];
        if (shown.stamp != now.stamp) {
            shown.stamp = now.stamp;
            Q_EMIT dataChanged(index(row, 0), index(row, 0));
        }
    }
}

void EntryListModel::applySteps(const std::vector<RowStep>& steps, const std::vector<Row>& wanted) {
    for (const auto& step : steps) {
        switch (step.kind) {
        case RowStep::Kind::remove:
            beginRemoveRows({}, step.first, step.first + step.count - 1);
            applyStep(step, m_rows, wanted);
            endRemoveRows();
            break;
        case RowStep::Kind::insert:
            beginInsertRows({}, step.first, step.first + step.count - 1);
            applyStep(step, m_rows, wanted);
            endInsertRows();
            break;
        case RowStep::Kind::move:
            beginMoveRows({}, step.first, step.first + step.count - 1, {}, step.destination);
            applyStep(step, m_rows, wanted);
            endMoveRows();
            break;
        }
    }
}

void EntryListModel::applyAtOnce(const std::vector<Row>& wanted) {
    Q_EMIT layoutAboutToBeChanged();
    std::unordered_map<const model::Entry*, int> places;
    for (std::size_t i = 0; i < wanted.size(); ++i) {
        if (wanted[i].entry) {
            places.emplace(wanted[i].entry, static_cast<int>(i));
        }
    }
    const auto before = std::exchange(m_rows, wanted);
    const auto persistent = persistentIndexList();
    for (const auto& old : persistent) {
        const auto& row = before[static_cast<std::size_t>(old.row())];
        int now = row.entry ? -1 : rowOf(row.kind);
        if (const auto place = places.find(row.entry); place != places.end()) {
            now = place->second;
        }
        changePersistentIndex(old, now < 0 ? QModelIndex() : index(now, 0));
    }
    Q_EMIT layoutChanged();
}

QString EntryListModel::accessibleDescription(const model::Entry& entry) const {
    auto result = !entry.isTodo() ? tr("Text") : entry.isCompleted() ? tr("Completed") : tr("Open");
    if (entry.isTodo() && !entry.schedule().isEmpty()) {
        result += QStringLiteral(", ") +
                  toQString(entry.schedule().accessibilityLabel(
                      entry.isCompleted(), m_workspace.now(), m_workspace.dates.formats()));
    }
    if (const auto files = accessibleTextOf(m_attachments.of(entry)); !files.isEmpty()) {
        result += QStringLiteral(", ") + files;
    }
    return result;
}

} // namespace korvex::ui
