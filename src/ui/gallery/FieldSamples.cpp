#include "ui/gallery/FieldSamples.h"

#include "ui/kit/controls/RefusalLabel.h"
#include "ui/kit/fields/DateField.h"
#include "ui/kit/fields/DayButton.h"
#include "ui/kit/fields/MonthView.h"
#include "ui/kit/fields/TimeField.h"

#include <QHBoxLayout>

namespace korvex::ui {

namespace {

/// Some days as if the pointer were on them, or pressed them: of each kind one.
void showStates(const MonthView& month) {
    for (auto* const day : month.findChildren<DayButton*>()) {
        const auto& shown = day->day();
        const auto isPointed = shown == QDate(2025, 2, 27) || shown == QDate(2025, 3, 13) ||
                               shown == QDate(2025, 3, 20) || shown == QDate(2025, 4, 1);
        const auto isPressed = shown == QDate(2025, 2, 28) || shown == QDate(2025, 3, 15) ||
                               shown == QDate(2025, 3, 25) || shown == QDate(2025, 4, 2);
        day->setAttribute(Qt::WA_UnderMouse, isPointed);
        day->setDown(isPressed);
    }
}

} // namespace

QWidget* makeFieldSamples(const Theme& theme, QWidget* parent) {
    const auto formats =
        std::make_shared<const base::DateFormats>(std::string(), base::TimeZone::system());
    const QDate today(2025, 3, 13);
    const auto makeDay = [&] {
        return new DateField({.formats = formats, .today = [today] { return today; }}, theme,
                             nullptr);
    };
    auto* const samples = new QWidget(parent);
    auto* const month = new MonthView(formats,
                                      {.today = today,
                                       .chosen = QDate(2025, 3, 20),
                                       .first = QDate(2025, 3, 20),
                                       .last = QDate(2025, 4, 2)},
                                      theme, samples);
    showStates(*month);
    auto* const fields = new QVBoxLayout;
    auto* const refused = makeDay();
    auto* const reason = new RefusalLabel(theme, nullptr);
    auto* const disabled = makeDay();
    disabled->setEnabled(false);
    for (auto* const each : std::initializer_list<QWidget*>{
             makeDay(), new TimeField(formats, theme, nullptr), disabled, refused, reason}) {
        fields->addWidget(each);
    }
    fields->addStretch();
    refused->setText(QStringLiteral("31.2."));
    refused->setModified(true);
    static_cast<void>(refused->take());
    reason->say(refused->problem());
    auto* const row = new QHBoxLayout(samples);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(theme.space(Space::wide));
    row->addLayout(fields);
    row->addWidget(month, 0, Qt::AlignTop);
    row->addStretch();
    return samples;
}

} // namespace korvex::ui
