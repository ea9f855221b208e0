#pragma once

#include "base/TypedDates.h"
#include "ui/kit/fields/WheelNotches.h"
#include "ui/kit/theme/Theme.h"

#include <QLineEdit>

namespace korvex::ui {

/// A line of text that stands for a value. It is typed as people write it and read when the typing
/// is over; the arrow keys and the wheel step the part at the caret. What cannot be read stays as
/// it was typed, with the reason, and the value is what it was before. Main thread.
class TypedField : public QLineEdit {
    Q_OBJECT

public:
    /// Reads what has been typed. False where it says nothing.
    bool take();
    /// Shows the value in place of what has been typed, which another choice has made void.
    void discard();
    /// Why what is typed was refused; empty while it was not.
    const QString& problem() const { return m_problem; }

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

Q_SIGNALS:
    /// The user has given the field a value, which may be the one that it had.
    void changed();
    void problemChanged();

protected:
    TypedField(const Theme& theme, QWidget* parent);

    /// Takes the value, if the text says one.
    virtual bool read(const QString& typed) = 0;
    virtual base::ShownDate shown() const = 0;
    /// A text that takes as much room as any.
    virtual QString widest() const = 0;
    /// What is said of a text that cannot be read.
    virtual QString reason() const = 0;
    /// How far a key goes where the caret names no part.
    enum class Stride { line, page, farPage };
    virtual base::DatePart partOf(Stride stride) const = 0;
    /// Changes the value.
    virtual void stepPart(base::DatePart part, int steps) = 0;

    /// To be called when the value is another.
    void showValue();
    const Theme& theme() const { return m_theme; }

    void keyPressEvent(QKeyEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    void step(Stride stride, int steps);
    base::DatePart partAtCaret() const;
    void select(base::DatePart part);
    void setProblem(const QString& problem);

    const Theme& m_theme;
    std::vector<base::ShownDate::Place> m_places;
    QString m_problem;
    WheelNotches m_wheel;
};

} // namespace korvex::ui
