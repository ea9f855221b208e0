#include "ui/kit/fields/MonthView.h"

#include "ui/kit/fields/DayButton.h"
#include "ui/kit/fields/WallClock.h"
#include "ui/kit/speech/Accessibility.h"
#include "ui/kit/theme/Direction.h"
#include "ui/kit/theme/IconSet.h"
#include "ui/kit/words/Text.h"

#include <QAccessible>
#include <QGridLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QToolButton>
#include <QVBoxLayout>
#include <QWheelEvent>

#include <algorithm>
#include <cstdlib>

namespace korvex::ui {

namespace {

using base::kDaysOfWeek;
/// As many as any month touches, so that the grid is always as high.
constexpr int kWeeks = 6;

} // namespace

MonthView::MonthView(std::shared_ptr<const base::DateFormats> formats, const Marks& marks,
                     const Theme& theme, QWidget* parent)
    : QWidget(parent),
      m_formats(std::move(formats)),
      m_marks(marks),
      m_theme(theme),
      m_title(new QLabel(this)),
      m_grid(new QGridLayout) {
    Accessibility::setRole(*this, QAccessible::Grouping);
    auto* const column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(m_theme.space(Space::small));
    column->addLayout(makeHeader());
    column->addLayout(m_grid);
    makeGrid();
    goTo(marks.chosen);
    const auto side = m_theme.extent(Extent::control);
    fitInto(QSize(2 * kDaysOfWeek, 2 * (kWeeks + 2)) * side); // as large as usual
}

QLayout* MonthView::makeHeader() {
    m_title->setFont(m_theme.sectionFont());
    m_title->setContentsMargins(m_theme.space(Space::medium), 0, m_theme.space(Space::medium), 0);
    m_title->setTextFormat(Qt::PlainText);
    m_title->setAlignment(lineStart());
    const auto back = QStringLiteral("caret-left");
    const auto forth = QStringLiteral("caret-right");
    const bool isMirrored = isRightToLeft();
    auto* const row = new QHBoxLayout;
    row->setSpacing(m_theme.space(Space::hair));
    row->addWidget(m_title, 1);
    row->addWidget(makeStep(isMirrored ? forth : back, tr("Previous month"), -1));
    row->addWidget(makeStep(isMirrored ? back : forth, tr("Next month"), 1));
    return row;
}

QToolButton* MonthView::makeStep(const QString& icon, const QString& name, int months) {
    auto* const button = new QToolButton(this);
    button->setAutoRaise(true);
    button->setAutoRepeat(true);
    button->setIcon(IconSet::icon(icon, m_theme.colors().text));
    button->setIconSize(QSize(1, 1) * m_theme.extent(Extent::icon));
    button->setFixedSize(QSize(1, 1) * m_theme.extent(Extent::control));
    button->setAccessibleName(name);
    button->setToolTip(name);
    button->setFocusPolicy(Qt::StrongFocus);
    connect(button, &QToolButton::clicked, this, [this, months] { goTo(m_day.addMonths(months)); });
    return button;
}

void MonthView::makeGrid() {
    m_grid->setSpacing(0);
    const auto& week = m_formats->monthWords().week();
    for (int column = 0; column < kDaysOfWeek; ++column) {
        const auto& weekday = week[static_cast<std::size_t>(column)];
        auto* const head = new QLabel(toQString(weekday.shortName), this);
        head->setAccessibleName(toQString(weekday.name));
        head->setAlignment(Qt::AlignCenter);
        head->setFont(m_theme.smallFont());
        head->setForegroundRole(QPalette::PlaceholderText);
        m_grid->addWidget(head, 0, column);
        m_weekdays.push_back(head);
    }
    for (int place = 0; place < kWeeks * kDaysOfWeek; ++place) {
        auto* const day = new DayButton(m_theme, this);
        day->installEventFilter(this);
        connect(day, &DayButton::clicked, this, [this, day] { Q_EMIT chosen(day->day()); });
        m_grid->addWidget(day, 1 + place / kDaysOfWeek, place % kDaysOfWeek);
        m_days.push_back(day);
    }
}

void MonthView::fitInto(const QSize& room) {
    const auto usual = m_theme.extent(Extent::control);
    const auto head = usual + layout()->spacing() + m_weekdays.front()->sizeHint().height();
    const QSize day(std::min(usual + m_theme.space(Space::medium), room.width() / kDaysOfWeek),
                    std::min(usual, (room.height() - head) / kWeeks));
    for (auto* const each : m_days) {
        each->setFixedSize(day);
    }
    for (auto* const each : m_weekdays) {
        each->setFixedWidth(day.width());
    }
    m_titleRoom = kDaysOfWeek * day.width() - 2 * usual - m_title->contentsMargins().left() -
                  m_title->contentsMargins().right();
    showTitle();
}

void MonthView::showTitle() {
    const auto& words = m_formats->monthWords();
    const auto month = WallClock::civilDay(m_day);
    const auto title = toQString(words.title(month));
    const auto isTooLong = m_title->fontMetrics().horizontalAdvance(title) > m_titleRoom;
    m_title->setText(isTooLong ? toQString(words.shortTitle(month)) : title);
    m_title->setAccessibleName(title);
    setAccessibleName(title);
}

int MonthView::columnOf(const QDate& day) const {
    return m_formats->monthWords().column(WallClock::civilDay(day));
}

DayButton& MonthView::buttonOf(const QDate& day) const {
    return *m_days[static_cast<std::size_t>(m_start.daysTo(day))];
}

void MonthView::fill() {
    const auto& words = m_formats->monthWords();
    showTitle();
    const QDate first(m_day.year(), m_day.month(), 1);
    m_start = first.addDays(-columnOf(first));
    for (std::size_t place = 0; place < m_days.size(); ++place) {
        const auto day = m_start.addDays(static_cast<qint64>(place));
        const auto civil = WallClock::civilDay(day);
        const auto column = place % kDaysOfWeek;
        auto& button = *m_days[place];
        const bool isToday = day == m_marks.today;
        const auto name = toQString(words.wholeDay(civil));
        button.setText(toQString(words.dayOfMonth(civil)));
        button.setAccessibleName(isToday ? tr("%1, today").arg(name) : name);
        button.setEnabled(day >= WallClock::earliestDay() && day <= WallClock::latestDay());
        button.show(day, {.isToday = isToday,
                          .isChosen = day == m_marks.chosen,
                          .isOfOtherMonth = day.month() != m_day.month(),
                          .isQuiet = words.week()[column].isWeekend,
                          .isInRange = m_marks.first.isValid() && day >= m_marks.first &&
                                       day <= m_marks.last,
                          .beginsRange = day == m_marks.first || column == 0,
                          .endsRange = day == m_marks.last || column == kDaysOfWeek - 1});
    }
}

void MonthView::goTo(const QDate& wanted) {
    const auto day = std::clamp(wanted, WallClock::earliestDay(), WallClock::latestDay());
    const bool isWalkedIn = std::any_of(m_days.begin(), m_days.end(),
                                        [](const auto* each) { return each->hasFocus(); });
    const bool isShown =
        m_day.isValid() && day.year() == m_day.year() && day.month() == m_day.month();
    m_day = day;
    if (!isShown) {
        fill();
    }
    auto& button = buttonOf(m_day);
    for (auto* const each : m_days) {
        each->setFocusPolicy(each == &button ? Qt::StrongFocus : Qt::ClickFocus);
    }
    setFocusProxy(&button);
    if (isWalkedIn) {
        button.setFocus(Qt::OtherFocusReason);
        // In another month it may be the same button that stands for another day.
        QAccessibleEvent event(&button, QAccessible::Focus);
        QAccessible::updateAccessibility(&event);
    }
}

QDate MonthView::dayBy(const QKeyEvent& key) const {
    const bool isFar = key.modifiers().testFlag(Qt::ShiftModifier);
    const auto page = [&](int step) {
        return isFar ? m_day.addYears(step) : m_day.addMonths(step);
    };
    switch (key.key()) {
    case Qt::Key_Left:
    case Qt::Key_Right:
        return m_day.addDays(stepOf(key.key()));
    case Qt::Key_Up:
        return m_day.addDays(-kDaysOfWeek);
    case Qt::Key_Down:
        return m_day.addDays(kDaysOfWeek);
    case Qt::Key_PageUp:
        return page(-1);
    case Qt::Key_PageDown:
        return page(1);
    case Qt::Key_Home:
        return m_day.addDays(-columnOf(m_day));
    case Qt::Key_End:
        return m_day.addDays(kDaysOfWeek - 1 - columnOf(m_day));
    default:
        return {};
    }
}

bool MonthView::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::KeyPress && qobject_cast<DayButton*>(watched)) {
        const auto& key = *static_cast<QKeyEvent*>(event);
        if (key.key() == Qt::Key_Return || key.key() == Qt::Key_Enter) {
            Q_EMIT chosen(m_day);
            return true;
        }
        if (const auto day = dayBy(key); day.isValid()) {
            goTo(day);
            return true;
        }
    }
    return QWidget::eventFilter(watched, event);
}

void MonthView::wheelEvent(QWheelEvent* event) {
    if (const auto notches = m_wheel.take(*event); notches != 0) {
        const bool isFar = event->modifiers().testFlag(Qt::ShiftModifier);
        goTo(isFar ? m_day.addYears(-notches) : m_day.addMonths(-notches));
    }
    event->accept();
}

} // namespace korvex::ui
