#include "ui/gallery/FieldSamples.h"

#include "ui/kit/controls/RefusalLabel.h"
#include "ui/kit/fields/DateField.h"
#include "ui/kit/fields/MonthView.h"
#include "ui/kit/fields/TimeField.h"

#include <QHBoxLayout>

namespace korvex::ui {

QWidget* makeFieldSamples(const Theme& theme, QWidget* parent) {
    const auto formats =
        std::make_shared<const base::DateFormats>(std::string(), base::TimeZone::system());
    const QDate today(2025, 3, 13);
    const auto makeDay = [&] {
        return new DateField({.formats = formats, .today = [today] { return today; }}, theme,
                             nullptr);
    };
    auto* const samples = new QWidget(parent);
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
    row->addWidget(new MonthView(formats,
                                 {.today = today,
                                  .chosen = QDate(2025, 3, 20),
                                  .first = QDate(2025, 3, 20),
                                  .last = QDate(2025, 3, 27)},
                                 theme, samples));
    row->addStretch();
    return samples;
}

} // namespace korvex::ui
