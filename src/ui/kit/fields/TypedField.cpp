#include "ui/kit/fields/TypedField.h"

#include "ui/kit/theme/Shapes.h"
#include "ui/kit/words/Text.h"

#include <QKeyEvent>
#include <QPainter>
#include <QWheelEvent>

#include <algorithm>
#include <chrono>
#include <utility>

namespace korvex::ui {

namespace {

/// More than between two steps of a key that is held down.
constexpr std::chrono::milliseconds kPause{700};

/// Another window, or a menu of this one, has the keyboard for a while only.
bool isForAWhile(Qt::FocusReason reason) {
    return reason == Qt::ActiveWindowFocusReason || reason == Qt::PopupFocusReason;
}

} // namespace

TypedField::TypedField(const Theme& theme, QWidget* parent) : QLineEdit(parent), m_theme(theme) {
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    connect(this, &QLineEdit::textEdited, this, [this](const QString& typed) {
        setProblem({});
        Q_EMIT typing();
        m_isTaken = isWhole(typed) && read(typed);
        if (m_isTaken) {
            valueGiven();
        }
    });
    m_stepping.setSingleShot(true);
    connect(&m_stepping, &QTimer::timeout, this, &TypedField::settled);
}

void TypedField::valueGiven() {
    m_stepping.stop();
    Q_EMIT changed();
    Q_EMIT settled();
}

bool TypedField::take() {
    endStepping();
    return takeTyped();
}

void TypedField::endStepping() {
    if (m_stepping.isActive()) {
        m_stepping.stop();
        Q_EMIT settled();
    }
}

bool TypedField::takeTyped() {
    if (!isModified()) {
        return true;
    }
    if (!read(text())) {
        setProblem(reason());
        return false;
    }
    showValue();
    valueGiven();
    if (hasFocus()) {
        selectAll(); // a step from here is one of the whole, and what is typed takes its place
    }
    return true;
}

void TypedField::discard() {
    if (isModified()) {
        showValue();
    }
}

bool TypedField::takeBack() {
    if (!isModified()) {
        return false;
    }
    const auto isOther = toQString(std::u16string_view(shown().text)) != m_before;
    const auto isBack = isOther && read(m_before);
    showValue();
    selectAll();
    if (isBack) {
        valueGiven();
    }
    return true;
}

QSize TypedField::sizeHint() const {
    // Qt reckons with seventeen of these letters, and with all that stands around them.
    constexpr int kQtsLetters = 17;
    const auto metrics = fontMetrics();
    const auto around =
        QLineEdit::sizeHint() - QSize(kQtsLetters * metrics.horizontalAdvance(QLatin1Char('x')), 0);
    return around + QSize(metrics.horizontalAdvance(widest()) + theme().space(Space::small), 0);
}

void TypedField::showValue() {
    auto now = shown();
    m_places = std::move(now.places);
    m_before = toQString(std::u16string_view(now.text));
    m_isTaken = false;
    setText(m_before);
    setProblem({});
}

void TypedField::followValue() {
    if (isTyping()) {
        m_before = toQString(std::u16string_view(shown().text));
    } else {
        showValue();
    }
}

void TypedField::setProblem(const QString& problem) {
    if (problem != m_problem) {
        m_problem = problem;
        showWrong();
        Q_EMIT problemChanged();
    }
}

void TypedField::objectTo(const QString& why) {
    if (why != m_objection) {
        m_objection = why;
        showWrong();
    }
}

void TypedField::showWrong() {
    const auto& why = m_problem.isEmpty() ? m_objection : m_problem;
    setAccessibleDescription(why);
    setToolTip(why);
    update();
}

base::DatePart TypedField::partAtCaret() const {
    const auto usual = partOf(Stride::line);
    if (selectedText() == text()) {
        return usual;
    }
    const auto caret = hasSelectedText() ? selectionStart() : cursorPosition();
    const auto found = std::find_if(m_places.begin(), m_places.end(), [caret](const auto& place) {
        return caret <= place.offset + place.length;
    });
    return found == m_places.end() ? usual : found->part;
}

void TypedField::select(base::DatePart part) {
    const auto found = std::find_if(m_places.begin(), m_places.end(),
                                    [part](const auto& place) { return place.part == part; });
    if (found != m_places.end()) {
        setSelection(found->offset, found->length);
    }
}

void TypedField::step(Stride stride, int steps) {
    if (!takeTyped()) {
        return;
    }
    const auto part = stride == Stride::line ? partAtCaret() : partOf(stride);
    stepPart(part, steps);
    showValue();
    m_stepping.start(kPause);
    Q_EMIT changed();
    select(part);
}

void TypedField::keyPressEvent(QKeyEvent* event) {
    const bool isFar = event->modifiers().testFlag(Qt::ShiftModifier);
    switch (event->key()) {
    case Qt::Key_Up:
        step(Stride::line, 1);
        break;
    case Qt::Key_Down:
        step(Stride::line, -1);
        break;
    case Qt::Key_PageUp:
        step(isFar ? Stride::farPage : Stride::page, 1);
        break;
    case Qt::Key_PageDown:
        step(isFar ? Stride::farPage : Stride::page, -1);
        break;
    case Qt::Key_Return:
    case Qt::Key_Enter:
        // Whose panel it is may have more to do than to read this.
        take();
        event->ignore();
        break;
    default:
        QLineEdit::keyPressEvent(event);
    }
}

void TypedField::wheelEvent(QWheelEvent* event) {
    if (!hasFocus()) {
        event->ignore(); // who scrolls over it does not mean it
        return;
    }
    if (const auto notches = m_wheel.take(*event); notches != 0) {
        step(Stride::line, notches);
    }
    event->accept();
}

void TypedField::focusInEvent(QFocusEvent* event) {
    QLineEdit::focusInEvent(event);
    if (event->reason() != Qt::MouseFocusReason && !isForAWhile(event->reason())) {
        selectAll();
    }
}

void TypedField::focusOutEvent(QFocusEvent* event) {
    QLineEdit::focusOutEvent(event);
    if (!isForAWhile(event->reason())) {
        take();
    }
}

void TypedField::paintEvent(QPaintEvent* event) {
    QLineEdit::paintEvent(event);
    if (!m_problem.isEmpty() || !m_objection.isEmpty()) {
        QPainter painter(this);
        Shapes::paintRing(painter, rect(), theme().radius(Radius::medium), theme().colors().danger);
    }
}

} // namespace korvex::ui
