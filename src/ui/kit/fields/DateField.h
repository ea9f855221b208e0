#pragma once

#include "base/DateFormats.h"
#include "ui/kit/fields/TypedField.h"

#include <QDate>
#include <QPointer>

#include <functional>
#include <memory>

namespace korvex::ui {

class Popover;

/// A day, shown in the order of the user's locale and typed as people there write it, or chosen
/// from a month that opens inside the window. The arrows step the part at the caret. Days are those
/// of `WallClock`; others become the nearest.
class DateField final : public TypedField {
    Q_OBJECT

public:
    struct Settings {
        std::shared_ptr<const base::DateFormats> formats;
        std::function<QDate()> today;
        /// Whether days to come are meant or days that are over, where the year is not typed.
        base::TypedDates::Around::Towards towards = base::TypedDates::Around::Towards::future;
    };
    DateField(Settings settings, const Theme& theme, QWidget* parent);

    const QDate& date() const { return m_date; }
    void setDate(const QDate& date);
    /// The days that the month shows as belonging together, of which this field has an end.
    void setRange(const QDate& first, const QDate& last);

protected:
    bool read(const QString& typed) override;
    base::ShownDate shown() const override;
    QString widest() const override;
    QString reason() const override;
    base::DatePart partOf(Stride stride) const override;
    void stepPart(base::DatePart part, int steps) override;

    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;

private:
    void applyTheme();
    /// Opens the month; closes it where it is open.
    void toggleMonth();
    bool closeMonth();

    Settings m_settings;
    QDate m_date;
    QDate m_first;
    QDate m_last;
    QAction* m_open;
    QPointer<Popover> m_month;
};

} // namespace korvex::ui
