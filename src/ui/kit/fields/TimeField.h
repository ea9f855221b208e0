#pragma once

#include "base/DateFormats.h"
#include "ui/kit/fields/TypedField.h"

#include <QTime>

#include <memory>

namespace korvex::ui {

/// A time of day by the user's clock, typed freely: "9", "930", "9:30 pm". The arrows step five
/// minutes, or hours where the caret stands in them; the clock goes round.
class TimeField final : public TypedField {
    Q_OBJECT

public:
    TimeField(std::shared_ptr<const base::DateFormats> formats, const Theme& theme,
              QWidget* parent);

    const QTime& time() const { return m_time; }
    void setTime(const QTime& time);
    /// Shows the time as these have it, once nothing is being typed.
    void setFormats(std::shared_ptr<const base::DateFormats> formats);

protected:
    bool read(const QString& typed) override;
    bool isWhole(const QString& typed) const override;
    base::ShownDate shown() const override;
    QString widest() const override;
    QString reason() const override;
    base::DatePart partOf(Stride stride) const override;
    void stepPart(base::DatePart part, int steps) override;

private:
    std::shared_ptr<const base::DateFormats> m_formats;
    QTime m_time{0, 0};
};

} // namespace korvex::ui
