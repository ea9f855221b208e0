#include "ui/overview/CompletedFilterBar.h"

#include "ui/boards/BoardColors.h"
#include "ui/boards/BoardIcons.h"
#include "ui/boards/BoardLabel.h"
#include "ui/kit/controls/FilterChoice.h"
#include "ui/kit/controls/FlowLayout.h"
#include "ui/kit/controls/SearchField.h"
#include "ui/kit/fields/DateField.h"
#include "ui/kit/fields/WallClock.h"
#include "ui/kit/theme/IconSet.h"
#include "ui/kit/words/Text.h"

#include <QLabel>
#include <QPushButton>
#include <QScopedValueRollback>
#include <QVBoxLayout>

#include <algorithm>

namespace korvex::ui {

namespace {

using schedule::CompletedFilter;

/// How far back a range reaches that was just chosen.
constexpr int kFirstRangeDays = 6;

} // namespace

CompletedFilterBar::CompletedFilterBar(const services::BoardService& boards, const DateTexts& dates,
                                       const base::Clock& clock, const Theme& theme,
                                       QWidget* parent)
    : QWidget(parent),
      m_service(boards),
      m_dates(dates),
      m_clock(clock),
      m_theme(theme),
      m_search(new SearchField(theme, this)) {
    using Status = CompletedFilter::BoardStatus;
    using Schedule = CompletedFilter::Schedule;
    using Period = CompletedFilter::Period;
    m_search->setPlaceholderText(tr("Search completed entries"));
    m_search->setAccessibleName(tr("Search completed entries"));
    m_boardStatus =
        makePicker(tr("Filter by board status"), {Status::any, Status::active, Status::archived});
    m_board = new FilterChoice(tr("Filter by board"), m_theme, this);
    m_schedule = makePicker(tr("Filter by due date"), {Schedule::any, Schedule::hadDueDate,
                                                       Schedule::noDueDate, Schedule::late});
    m_period =
        makePicker(tr("Filter by completion date"),
                   {Period::any, Period::today, Period::week, Period::month, Period::custom});
    m_start = makeDay(tr("First day"));
    m_end = makeDay(tr("Last day"));
    m_reset = new QPushButton(tr("Reset"), this);
    m_reset->setFlat(true);
    m_reset->setAccessibleName(tr("Reset the filter"));
    layOut();
    fillBoards();
    connectFields();
    connect(&theme, &Theme::changed, this, &CompletedFilterBar::applyTheme);
    applyTheme();
    showFilter();
}

template <typename Case>
FilterChoice* CompletedFilterBar::makePicker(const QString& name,
                                             std::initializer_list<Case> cases) {
    auto* const picker = new FilterChoice(name, m_theme, this);
    for (const auto each : cases) {
        picker->addItem(translated(schedule::title(each)), static_cast<int>(each));
    }
    return picker;
}

DateField* CompletedFilterBar::makeDay(const QString& name) {
    const auto today = [this] {
        return WallClock::dateTimeOf(m_clock.now(), m_dates.formats().calendar()).date();
    };
    auto* const field = new DateField({.formats = m_dates.shared(),
                                       .today = today,
                                       .towards = base::TypedDates::Around::Towards::past},
                                      m_theme, this);
    field->setAccessibleName(name);
    return field;
}

void CompletedFilterBar::layOut() {
    m_range = new QWidget(this);
    m_fromStart = new QWidget(m_range);
    auto* const fromStart = new QHBoxLayout(m_fromStart);
    fromStart->setContentsMargins(0, 0, 0, 0);
    fromStart->addWidget(m_start);
    fromStart->addWidget(new QLabel(QStringLiteral("–"), m_fromStart));
    auto* const range = new FlowLayout(m_range);
    range->setContentsMargins(0, 0, 0, 0);
    range->addWidget(m_fromStart);
    range->addWidget(m_end);
    auto* const column = new QVBoxLayout(this);
    column->addWidget(m_search);
    m_pickers = new FlowLayout;
    for (auto* const each : std::initializer_list<QWidget*>{m_boardStatus, m_board, m_schedule,
                                                            m_period, m_range, m_reset}) {
        m_pickers->addWidget(each);
    }
    column->addLayout(m_pickers);
}

void CompletedFilterBar::connectFields() {
    connect(m_search, &QLineEdit::textChanged, this, &CompletedFilterBar::take);
    connect(m_search, &SearchField::walked, this, &CompletedFilterBar::listRequested);
    connect(m_search, &SearchField::openRequested, this, &CompletedFilterBar::listRequested);
    connect(m_search, &SearchField::escaped, this, [this] {
        if (m_search->text().isEmpty()) {
            Q_EMIT listRequested();
        }
        m_search->clear();
    });
    for (auto* const picker : {m_boardStatus, m_board, m_schedule, m_period}) {
        connect(picker, &FilterChoice::currentIndexChanged, this, &CompletedFilterBar::take);
    }
    for (auto* const field : {m_start, m_end}) {
        connect(field, &DateField::changed, this, &CompletedFilterBar::take);
    }
    connect(m_reset, &QPushButton::clicked, this, [this] {
        m_search->setFocus(); // before the button goes
        reset();
    });
}

void CompletedFilterBar::reset() {
    m_filter = {};
    showFilter();
    Q_EMIT changed();
}

void CompletedFilterBar::followBoards() {
    std::vector<BoardChoice> boards;
    for (const auto* const board : m_service.boards()) {
        boards.push_back({board->id(), boardLabel(*board), boardIconName(board->iconSystemName()),
                          iconColorOf(*board, m_theme.colors())});
    }
    if (boards == m_boards) {
        return;
    }
    m_boards = std::move(boards);
    fillBoards();
    const bool isChosenGone =
        m_filter.boardID &&
        std::none_of(m_boards.begin(), m_boards.end(),
                     [this](const BoardChoice& each) { return each.id == *m_filter.boardID; });
    if (isChosenGone) {
        m_filter.boardID.reset();
    }
    showFilter();
    if (isChosenGone) {
        Q_EMIT changed();
    }
}

void CompletedFilterBar::fillBoards() {
    const QScopedValueRollback showing(m_isShowing, true);
    m_board->clear();
    m_board->addItem(tr("All boards"));
    for (const auto& board : m_boards) {
        m_board->addItem(IconSet::icon(board.icon, board.color), board.label);
    }
}

void CompletedFilterBar::showFilter() {
    const QScopedValueRollback showing(m_isShowing, true);
    if (m_search->text() != toQString(m_filter.query)) {
        m_search->setText(toQString(m_filter.query));
    }
    const auto choose = [](FilterChoice& picker, auto which) {
        picker.setCurrentIndex(picker.findData(static_cast<int>(which)));
    };
    choose(*m_boardStatus, m_filter.boardStatus);
    choose(*m_schedule, m_filter.schedule);
    choose(*m_period, m_filter.period);
    const auto chosen =
        std::find_if(m_boards.begin(), m_boards.end(),
                     [this](const BoardChoice& each) { return m_filter.boardID == each.id; });
    m_board->setCurrentIndex(
        chosen == m_boards.end() ? 0 : 1 + static_cast<int>(chosen - m_boards.begin()));
    const auto isCustom = m_filter.period == CompletedFilter::Period::custom;
    if (isCustom) {
        const auto& calendar = m_dates.formats().calendar();
        m_start->setDate(WallClock::dateTimeOf(m_filter.startDate, calendar).date());
        m_end->setDate(WallClock::dateTimeOf(m_filter.endDate, calendar).date());
        for (auto* const field : {m_start, m_end}) {
            field->setRange(m_start->date(), m_end->date());
        }
    }
    m_range->setVisible(isCustom);
    m_reset->setVisible(m_filter.isActive());
}

void CompletedFilterBar::take() {
    if (m_isShowing) {
        return;
    }
    const auto before = m_filter;
    m_filter.query = toUtf8(m_search->text());
    m_filter.boardStatus =
        static_cast<CompletedFilter::BoardStatus>(m_boardStatus->currentData().toInt());
    m_filter.schedule = static_cast<CompletedFilter::Schedule>(m_schedule->currentData().toInt());
    m_filter.period = static_cast<CompletedFilter::Period>(m_period->currentData().toInt());
    m_filter.boardID.reset();
    if (m_board->currentIndex() > 0) {
        m_filter.boardID = m_boards[static_cast<std::size_t>(m_board->currentIndex()) - 1].id;
    }
    if (m_filter.period == CompletedFilter::Period::custom) {
        takeRange(before);
    }
    if (m_filter != before) {
        showFilter();
        Q_EMIT changed();
    }
}

void CompletedFilterBar::takeRange(const CompletedFilter& before) {
    const auto& calendar = m_dates.formats().calendar();
    const auto now = m_clock.now();
    auto start = m_start->date();
    auto end = m_end->date();
    if (before.period != CompletedFilter::Period::custom) {
        end = WallClock::dateTimeOf(now, calendar).date();
        start = end.addDays(-kFirstRangeDays);
        m_start->discard();
        m_end->discard();
    } else if (start > end) {
        const auto isStartNew = start != WallClock::dateTimeOf(before.startDate, calendar).date();
        (isStartNew ? end : start) = isStartNew ? start : end;
    }
    const QTime noon(12, 0);
    m_filter.startDate = WallClock::instantOf(start, noon, calendar, now);
    m_filter.endDate = WallClock::instantOf(end, noon, calendar, now);
}

void CompletedFilterBar::applyTheme() {
    const auto space = m_theme.space(Space::medium);
    const auto side = m_theme.space(Space::wide);
    layout()->setContentsMargins(side, 0, side, space);
    for (auto* const each : std::initializer_list<QLayout*>{layout(), m_pickers, m_range->layout(),
                                                            m_fromStart->layout()}) {
        each->setSpacing(space);
    }
    m_board->setIconSize(QSize(1, 1) * m_theme.extent(Extent::smallIcon));
}

} // namespace korvex::ui
