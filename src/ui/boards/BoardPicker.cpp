#include "ui/boards/BoardPicker.h"

#include "ui/boards/BoardColors.h"
#include "ui/boards/BoardIcons.h"
#include "ui/boards/NamedRow.h"
#include "ui/kit/words/FuzzyMatch.h"
#include "ui/kit/words/Text.h"

#include <QAbstractListModel>
#include <QFocusEvent>
#include <QLabel>
#include <QLayout>
#include <QLineEdit>
#include <QListView>
#include <QStyledItemDelegate>

#include <algorithm>

namespace korvex::ui {

namespace {

constexpr int kMostRows = 9;

} // namespace

/// The boards that fit what was typed, the nearest first.
class BoardPickerModel final : public QAbstractListModel {
public:
    BoardPickerModel(std::vector<model::Board*> boards, const base::TextFolding& folding,
                     QObject* parent)
        : QAbstractListModel(parent), m_boards(std::move(boards)), m_folding(folding) {}

    int rowCount(const QModelIndex& parent = {}) const override {
        return parent.isValid() ? 0 : static_cast<int>(m_fitting.size());
    }
    QVariant data(const QModelIndex& index, int role) const override {
        if (index.isValid() && index.row() < rowCount() &&
            (role == Qt::DisplayRole || role == Qt::AccessibleTextRole)) {
            return toQString(board(index.row()).name());
        }
        return {};
    }
    model::Board& board(int row) const { return *m_fitting[static_cast<std::size_t>(row)]; }
    int rowOf(const model::Board* board) const {
        const auto found = std::find(m_fitting.begin(), m_fitting.end(), board);
        return found == m_fitting.end() ? -1 : static_cast<int>(found - m_fitting.begin());
    }

    void search(const QString& typed) {
        const auto searched = folded(toUtf8(typed));
        std::vector<std::pair<int, model::Board*>> ranked;
        for (auto* const each : m_boards) {
            if (!each->isLive() || each->isArchived()) {
                continue;
            }
            if (const auto distance = fuzzyDistance(folded(each->name()), searched)) {
                ranked.emplace_back(*distance, each);
            }
        }
        std::stable_sort(ranked.begin(), ranked.end(), [](const auto& left, const auto& right) {
            return left.first < right.first;
        });
        beginResetModel();
        m_fitting.clear();
        for (const auto& [distance, each] : ranked) {
            m_fitting.push_back(each);
        }
        endResetModel();
    }

private:
    QString folded(std::string_view text) const { return toQString(m_folding.folded(text)); }

    std::vector<model::Board*> m_boards;
    const base::TextFolding& m_folding;
    std::vector<model::Board*> m_fitting;
};

namespace {

class BoardPickerDelegate final : public QStyledItemDelegate {
public:
    BoardPickerDelegate(const BoardPickerModel& model, const Theme& theme, QObject* parent)
        : QStyledItemDelegate(parent), m_model(model), m_theme(theme) {}

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override {
        const auto& colors = m_theme.colors();
        const auto& board = m_model.board(index.row());
        const NamedRow row{.icon = boardIconName(board.iconSystemName()),
                           .iconColor = iconColorOf(board, colors),
                           .name = toQString(board.name())};
        // The keys of the field above walk here; the field shows who has the keyboard.
        row.paint(*painter, NamedRow::box(option.rect, 0, m_theme),
                  option.state & ~QStyle::State_HasFocus, m_theme);
    }
    QSize sizeHint(const QStyleOptionViewItem&, const QModelIndex&) const override {
        return {0, NamedRow::height(m_theme)};
    }

private:
    const BoardPickerModel& m_model;
    const Theme& m_theme;
};

} // namespace

BoardPicker::BoardPicker(Offer offer, store::ModelContext& context,
                         const base::TextFolding& folding, const Theme& theme, QWidget* window)
    : ChoicePopover(new QListView, theme, window),
      m_model(new BoardPickerModel(std::move(offer.boards), folding, this)),
      m_nothing(new QLabel(tr("No board of this name"), this)) {
    setFixedWidth(
        std::min(theme.scaled(kPanelMeasure), window->width() - 2 * theme.space(Space::large)));
    list().setMouseTracking(true);
    list().setItemDelegate(new BoardPickerDelegate(*m_model, theme, &list()));
    list().setModel(m_model);
    setUp({.choice = offer.title, .field = offer.title, .list = tr("Boards")});
    m_nothing->setAlignment(Qt::AlignCenter);
    m_nothing->setForegroundRole(QPalette::PlaceholderText);
    layout()->addWidget(m_nothing);
    m_changes = context.didChange().connect([this](const store::ChangeSet&) { fill(); });
    fill();
}

BoardPicker::~BoardPicker() = default;

void BoardPicker::open() {
    const auto* const area = parentWidget();
    const auto left = (area->width() - width()) / 2;
    const auto top = theme().extent(Extent::control) + theme().space(Space::wide);
    openAt({area->mapToGlobal(QPoint(left, top)), QSize(1, 1)});
    move(left, y());
    field().setFocus();
}

void BoardPicker::openUnder(const QWidget& opener) {
    setOpener(opener);
    openAt({opener.mapToGlobal(QPoint()), opener.size()});
    field().setFocus();
}

void BoardPicker::fill() {
    const auto typed = field().text();
    // Nothing typed: the choice of the user stays where boards come and go.
    const auto current = list().currentIndex();
    const auto* const kept =
        current.isValid() && typed.isEmpty() ? &m_model->board(current.row()) : nullptr;
    m_model->search(typed);
    const auto rows = m_model->rowCount();
    list().setVisible(rows > 0);
    m_nothing->setVisible(rows == 0);
    if (rows > 0) {
        list().setFixedHeight(list().sizeHintForRow(0) * std::min(rows, kMostRows));
        list().setCurrentIndex(m_model->index(std::max(0, m_model->rowOf(kept)), 0));
    }
    if (isVisible()) {
        const auto left = x();
        placeAgain();
        move(left, y());
    }
}

void BoardPicker::choose() {
    if (const auto index = list().currentIndex(); index.isValid()) {
        auto* const board = &m_model->board(index.row());
        closeNow();
        Q_EMIT chosen(board);
    }
}

bool BoardPicker::eventFilter(QObject* watched, QEvent* event) {
    if (watched == &field() && event->type() == QEvent::FocusOut) {
        const auto reason = static_cast<QFocusEvent*>(event)->reason();
        // Another window or a menu has the keyboard for a while only.
        if (reason != Qt::ActiveWindowFocusReason && reason != Qt::PopupFocusReason) {
            close();
        }
    }
    return ChoicePopover::eventFilter(watched, event);
}

} // namespace korvex::ui
