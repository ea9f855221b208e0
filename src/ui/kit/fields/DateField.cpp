#include "ui/kit/fields/DateField.h"

#include "ui/kit/fields/MonthView.h"
#include "ui/kit/fields/WallClock.h"
#include "ui/kit/overlays/Popover.h"
#include "ui/kit/theme/Direction.h"
#include "ui/kit/theme/IconSet.h"
#include "ui/kit/words/Text.h"

#include <QAction>
#include <QKeyEvent>
#include <QVBoxLayout>

#include <algorithm>

namespace korvex::ui {

namespace {

QDate bounded(const QDate& day) {
    return std::clamp(day, WallClock::earliestDay(), WallClock::latestDay());
}

} // namespace

DateField::DateField(Settings settings, const Theme& theme, QWidget* parent)
    : TypedField(theme, parent),
      m_settings(std::move(settings)),
      m_date(bounded(m_settings.today())),
      m_open(addAction(QIcon(), QLineEdit::TrailingPosition)) {
    m_open->setText(tr("Show the month")); // the name of its button
    connect(m_open, &QAction::triggered, this, &DateField::toggleMonth);
    connect(&theme, &Theme::changed, this, &DateField::applyTheme);
    applyTheme();
    showValue();
}

void DateField::applyTheme() {
    m_open->setIcon(IconSet::icon(QStringLiteral("calendar-dots"), theme().colors().secondaryText));
}

void DateField::setDate(const QDate& date) {
    if (const auto day = bounded(date); day != m_date) {
        m_date = day;
        followValue();
    }
}

void DateField::setRange(const QDate& first, const QDate& last) {
    m_first = first;
    m_last = last;
}

bool DateField::read(const QString& typed) {
    const auto read = m_settings.formats->typed().day(
        typed.toStdU16String(), {.today = WallClock::civilDay(m_settings.today()),
                                 .shown = WallClock::civilDay(m_date),
                                 .towards = m_settings.towards});
    const auto day = read ? WallClock::toQDate(*read) : QDate();
    const bool isOnOffer = day.isValid() && day == bounded(day);
    if (isOnOffer) {
        m_date = day;
    }
    return isOnOffer;
}

base::ShownDate DateField::shown() const {
    return m_settings.formats->typed().shown(WallClock::civilDay(m_date));
}

QString DateField::widest() const {
    constexpr base::CivilDay kWide{.year = 2000, .month = 12, .day = 28};
    return toQString(std::u16string_view(m_settings.formats->typed().shown(kWide).text));
}

QString DateField::reason() const {
    return text().trimmed().isEmpty() ? tr("Enter a day.")
                                      : tr("“%1” is not a day.").arg(isolated(shortened(text())));
}

base::DatePart DateField::partOf(Stride stride) const {
    switch (stride) {
    case Stride::page:
        return base::DatePart::month;
    case Stride::farPage:
        return base::DatePart::year;
    case Stride::line:
        break;
    }
    return base::DatePart::day;
}

void DateField::stepPart(base::DatePart part, int steps) {
    switch (part) {
    case base::DatePart::year:
        m_date = bounded(m_date.addYears(steps));
        break;
    case base::DatePart::month:
        m_date = bounded(m_date.addMonths(steps));
        break;
    default:
        m_date = bounded(m_date.addDays(steps));
        break;
    }
}

void DateField::keyPressEvent(QKeyEvent* event) {
    const bool opens = event->key() == Qt::Key_F4 || (event->key() == Qt::Key_Down &&
                                                      event->modifiers().testFlag(Qt::AltModifier));
    if (opens) {
        toggleMonth();
    } else {
        TypedField::keyPressEvent(event);
    }
}

void DateField::mousePressEvent(QMouseEvent* event) {
    closeMonth();
    TypedField::mousePressEvent(event);
}

bool DateField::closeMonth() {
    const bool isOpen = m_month && m_month->isVisible();
    if (isOpen) {
        m_month->closeNow();
    }
    return isOpen;
}

void DateField::toggleMonth() {
    if (closeMonth()) {
        return;
    }
    take();
    setFocus(); // where the keyboard comes back to
    m_month = new Popover(theme(), window());
    m_month->setAccessibleName(accessibleName());
    m_month->setOpener(*this);
    auto* const month = new MonthView(
        m_settings.formats,
        {.today = m_settings.today(), .chosen = m_date, .first = m_first, .last = m_last}, theme(),
        m_month);
    auto* const column = new QVBoxLayout(m_month);
    const auto margin = theme().space(Space::medium);
    column->setContentsMargins(margin, margin, margin, margin);
    column->addWidget(month);
    month->fitInto(m_month->room().shrunkBy({margin, margin, margin, margin}));
    m_month->setFocusProxy(month);
    connect(month, &MonthView::chosen, this, [this](const QDate& day) {
        closeMonth();
        m_date = bounded(day);
        showValue();
        Q_EMIT changed();
        selectAll();
    });
    m_month->openAt({mapToGlobal(QPoint()), size()});
    m_month->setFocus();
}

} // namespace korvex::ui
