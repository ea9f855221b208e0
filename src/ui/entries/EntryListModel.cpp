#include "ui/entries/EntryListModel.h"

#include "model/EntryContentLimit.h"
#include "richtext/stored/EntryText.h"
#include "services/EntryOrder.h"
#include "services/EntryService.h"
#include "store/ModelContainer.h"
#include "ui/attachments/AttachmentChips.h"
#include "ui/kit/words/Text.h"
#include "ui/todos/RowText.h"

#include <algorithm>
#include <functional>
#include <string_view>

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
    auto stamp = std::hash<std::string>()(entry.content());
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

EntryListModel::EntryListModel(store::ModelContext& context,
                               const richtext::RichTextSerializer& serializer,
                               const schedule::ScheduleClock& clock, const DateTexts& dates,
                               QObject* parent)
    : RowModel(parent),
      m_context(context),
      m_serializer(serializer),
      m_clock(clock),
      m_dates(dates),
      m_attachments(context) {}

QVariant EntryListModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || index.row() >= rowCount()) {
        return {};
    }
    const auto* const shown = entry(index.row());
    switch (role) {
    case Qt::DisplayRole:
        return text(index.row());
    case Qt::AccessibleTextRole:
        return kind(index.row()) == RowKind::draft ? tr("New entry") : text(index.row());
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
    m_board = board;
    m_lingering.clear();
    m_attachments.clear();
    m_draftPlace = DraftPlace::none;
    m_isCompletedExpanded = false;
    resetTo(wantedRows());
    Q_EMIT countsChanged();
}

void EntryListModel::refresh() {
    show(wantedRows());
    Q_EMIT countsChanged();
}

int EntryListModel::rowOf(const model::Entry& entry) const {
    return firstRow([&](const Row& row) { return row.entry == &entry; });
}

int EntryListModel::rowOf(RowKind kind) const {
    return firstRow([&](const Row& row) { return row.kind == kind; });
}

const model::Entry* EntryListModel::openEntryAbove(int row) const {
    for (--row; row >= 0; --row) {
        const auto* const above = entry(row);
        if (above && !above->isCompleted()) {
            return above;
        }
    }
    return nullptr;
}

QString EntryListModel::text(int row) const {
    switch (kind(row)) {
    case RowKind::entry:
    case RowKind::completed:
        return shownText(*entry(row));
    case RowKind::draft:
        return {};
    case RowKind::newTodo:
        return tr("New todo");
    case RowKind::completedHeading:
        return tr("Completed (%L1)").arg(m_completed.size());
    }
    return {};
}

richtext::AttributedString EntryListModel::richText(const model::Entry& entry) const {
    return richtext::richText(entry, m_serializer);
}

DueLabel EntryListModel::dueLabel(const model::Entry& entry) const {
    return dueLabelOf(entry, m_clock.now(), m_dates);
}

bool EntryListModel::isEditable(int row) const {
    return kind(row) == RowKind::entry && !m_isReadOnly && !isLingering(*entry(row)) &&
           model::EntryContentLimit::allows(entry(row)->content());
}

void EntryListModel::setCompletedExpanded(bool expanded) {
    if (m_isCompletedExpanded != expanded) {
        m_isCompletedExpanded = expanded;
        show(wantedRows());
        const auto heading = index(rowOf(RowKind::completedHeading), 0);
        Q_EMIT dataChanged(heading, heading);
    }
}

int EntryListModel::openDraft(const model::Entry* after) {
    m_draftPlace = after ? DraftPlace::afterEntry : DraftPlace::start;
    m_draftAfter = after;
    show(wantedRows());
    return rowOf(RowKind::draft);
}

int EntryListModel::openDraftAtEnd() {
    m_draftPlace = DraftPlace::end;
    show(wantedRows());
    return rowOf(RowKind::draft);
}

void EntryListModel::closeDraft() {
    if (hasDraft()) {
        m_draftPlace = DraftPlace::none;
        show(wantedRows());
    }
}

void EntryListModel::settleDraft(const model::Entry& entry) {
    if (const auto row = rowOf(entry); row >= 0 && hasDraft()) {
        const auto stored = at(row);
        applySteps({{.kind = RowStep::Kind::remove, .first = row, .count = 1}}, {});
        replace(rowOf(RowKind::draft), stored);
    }
    closeDraft();
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
    m_isArchived = m_board && m_board->isLive() && m_board->isArchived();
    m_isReadOnly = m_isArchived || !m_context.container().allowsSave();
    if (!m_board || !m_board->isLive()) {
        m_completed.clear();
        m_openTodoCount = 0;
        return rows;
    }
    const auto active = services::activeEntries(*m_board);
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

    m_completed = services::completedTodos(*m_board);
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

/// Each stays behind the entry that it stands behind now.
void EntryListModel::addLingering(std::vector<Row>& rows) const {
    std::vector<int> shown;
    for (const auto* const each : m_lingering) {
        if (const auto row = rowOf(*each); row >= 0 && kind(row) == RowKind::entry) {
            shown.push_back(row);
        }
    }
    // From the top: then what stands above is in its place already.
    std::sort(shown.begin(), shown.end());
    for (const auto row : shown) {
        rows.insert(rows.begin(), {RowKind::entry, entry(row), stampOf(*entry(row))});
        keepPlace(row, rows);
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

void EntryListModel::show(std::vector<Row> wanted) {
    const auto steps = rowSteps(keysOf(rows()), keysOf(wanted));
    const auto moves = std::count_if(steps.begin(), steps.end(), [](const RowStep& step) {
        return step.kind == RowStep::Kind::move;
    });
    if (moves > kMaximumMoves) {
        applyAtOnce(std::move(wanted), [this](const Row& old) {
            return old.entry ? rowOf(*old.entry) : rowOf(old.kind);
        });
        return;
    }
    applySteps(steps, wanted);
    takeOver(std::move(wanted),
             [](const Row& before, const Row& now) { return before.stamp != now.stamp; });
}

QString EntryListModel::accessibleDescription(const model::Entry& entry) const {
    auto result = !entry.isTodo() ? tr("Text") : entry.isCompleted() ? tr("Completed") : tr("Open");
    if (entry.isTodo() && !entry.schedule().isEmpty()) {
        result += QStringLiteral(", ") +
                  toQString(entry.schedule().accessibilityLabel(entry.isCompleted(), m_clock.now(),
                                                                m_dates.formats()));
    }
    if (const auto files = accessibleTextOf(m_attachments.of(entry)); !files.isEmpty()) {
        result += QStringLiteral(", ") + files;
    }
    return result;
}

} // namespace korvex::ui
