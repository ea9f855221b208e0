#pragma once

#include "base/TypedDates.h"
#include "ui/kit/fields/WheelNotches.h"
#include "ui/kit/theme/Theme.h"

#include <QLineEdit>
#include <QTimer>

namespace korvex::ui {

/// A line of text that stands for a value. It is typed as people write it and read when the typing
/// is over; the arrow keys and the wheel step the part at the caret. What cannot be read stays as
/// it was typed, with the reason, and the value is what it was before. Main thread.
class TypedField : public QLineEdit {
    Q_OBJECT

public:
    /// Reads what has been typed, and ends the stepping. False where it says nothing.
    bool take();
    /// Shows the value in place of what has been typed, which another choice has made void.
    void discard();
    /// Gives up what has been typed since the field last showed a value by itself, taken or not:
    /// that value is back. False where nothing has been typed.
    bool takeBack();
    /// Whether something is typed that was not taken yet.
    bool isTyping() const { return isModified() && !m_isTaken; }
    /// Whether the value was just stepped, and may be again.
    bool isStepping() const { return m_stepping.isActive(); }
    /// Why what is typed was refused; empty while it was not.
    const QString& problem() const { return m_problem; }
    /// Marks a value that can be read and yet cannot be: `why` says so; empty when it can.
    void objectTo(const QString& why);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

Q_SIGNALS:
    /// The user is about to give the field another value.
    void typing();
    /// The user has given the field a value, which may be the one that it had.
    void changed();
    /// The same, once for all steps of a key that is held down or of a wheel: for whom each value
    /// costs something.
    void settled();
    void problemChanged();

protected:
    TypedField(const Theme& theme, QWidget* parent);

    /// Takes the value, if the text says one.
    virtual bool read(const QString& typed) = 0;
    /// Whether the text is a value to which nothing can be added: it is read while one still types.
    virtual bool isWhole(const QString&) const { return false; }
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

    /// To be called when the user has chosen another value.
    void showValue();
    /// To be called when the value has become another by its source, as by another program: it is
    /// shown at once, or in place of what is being typed when that is given up.
    void followValue();
    const Theme& theme() const { return m_theme; }

    void keyPressEvent(QKeyEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    bool takeTyped();
    void endStepping();
    void valueGiven();
    void step(Stride stride, int steps);
    base::DatePart partAtCaret() const;
    void select(base::DatePart part);
    void setProblem(const QString& problem);
    /// Says and shows what is wrong with it.
    void showWrong();

    const Theme& m_theme;
    std::vector<base::ShownDate::Place> m_places;
    /// The value as it was shown before the typing, or has become since by its source.
    QString m_before;
    /// What is typed was read while it was typed.
    bool m_isTaken = false;
    QString m_problem;
    QString m_objection;
    WheelNotches m_wheel;
    /// Until the stepping has paused.
    QTimer m_stepping;
};

} // namespace korvex::ui
