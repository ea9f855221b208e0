#include "ui/entries/TodoEditor.h"

#include "base/Text.h"
#include "richtext/text/TextMerge.h"
#include "ui/kit/theme/Direction.h"
#include "ui/kit/theme/IconSet.h"
#include "ui/kit/words/Text.h"
#include "ui/todos/RowFrame.h"
#include "ui/todos/TodoPainting.h"

#include <QPainter>
#include <QToolButton>

namespace korvex::ui {

TodoEditor::TodoEditor(const Theme& theme, QWidget* parent)
    : RowEditor(theme, parent), m_field(new TodoTextEdit(this)), m_schedule(new QToolButton(this)) {
    m_schedule->setAutoRaise(true);
    m_schedule->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    m_schedule->setLayoutDirection(turnedDirection()); // the bell stands behind the label
    m_schedule->setFocusPolicy(Qt::TabFocus);
    m_schedule->setCursor(Qt::PointingHandCursor);
    m_schedule->setToolTip(tr("Schedule (Ctrl+D)"));
    setFocusProxy(m_field);
    connect(m_field, &QTextEdit::textChanged, this, &TodoEditor::edited);
    connect(m_field->document(), &QTextDocument::contentsChanged, this, &TodoEditor::arrangeAgain);
    connect(m_field, &QTextEdit::cursorPositionChanged, this, &TodoEditor::reveal);
    connect(m_schedule, &QToolButton::clicked, this, &TodoEditor::scheduleClicked);
    connect(&theme, &Theme::changed, this, &TodoEditor::applyTheme);
    applyTheme();
}

richtext::AttributedString TodoEditor::text() const {
    return richtext::AttributedString(typed().toStdU16String());
}

void TodoEditor::load(const richtext::AttributedString& stored) {
    setStored(stored);
    m_field->setPlainText(toQString(stored.text()));
    endMessage();
}

void TodoEditor::change(const richtext::AttributedString& to) {
    const auto parts = richtext::differences(text(), to);
    editAround([&](QTextCursor& cursor) {
        for (auto part = parts.rbegin(); part != parts.rend(); ++part) {
            cursor.setPosition(static_cast<int>(part->before.location));
            cursor.setPosition(static_cast<int>(part->before.end()), QTextCursor::KeepAnchor);
            cursor.insertText(toQString(to.slice(part->after).text()));
        }
    });
}

/// Spaces at the ends are not stored: typing them changes nothing.
bool TodoEditor::isChanged() const {
    const auto now = typed();
    const auto before = toQString(stored().text());
    return now != before && base::trimmed(toUtf8(now)) != toUtf8(before);
}

void TodoEditor::setCaret(int offset) {
    m_field->setCaret(offset < 0 ? static_cast<int>(typed().size()) : offset);
}

void TodoEditor::setDueLabel(const DueLabel& label) {
    m_dueLabel = label;
    applyTheme();
}

QRect TodoEditor::caretPlace() {
    const int margin = RowFrame::of(theme()).padding;
    return m_field->cursorRect().translated(m_field->pos()).adjusted(0, -margin, 0, margin);
}

int TodoEditor::textHeight(const EntryRowRoom& room) {
    return RowFrame::of(theme()).heightFor(arrangement(room.width).bottom);
}

void TodoEditor::paintEvent(QPaintEvent* event) {
    RowEditor::paintEvent(event);
    QPainter painter(this);
    TodoPainting::drawCircle(painter, m_circle, TodoPainting::Circle::open, theme().colors());
}

void TodoEditor::resizeEvent(QResizeEvent* event) {
    RowEditor::resizeEvent(event);
    place();
}

void TodoEditor::applyTheme() {
    const auto& colors = theme().colors();
    m_field->setFont(theme().font());
    m_field->document()->setDefaultFont(theme().font());
    auto fieldPalette = m_field->palette();
    fieldPalette.setColor(QPalette::Base, Qt::transparent);
    fieldPalette.setColor(QPalette::Text, colors.text);
    m_field->setPalette(fieldPalette);
    m_schedule->setFont(theme().smallFont());
    const auto quiet = m_dueLabel.isOverdue ? colors.danger : colors.secondaryText;
    auto schedulePalette = m_schedule->palette();
    schedulePalette.setColor(QPalette::ButtonText, quiet);
    m_schedule->setPalette(schedulePalette);
    m_schedule->setText(m_dueLabel.text);
    m_schedule->setAccessibleName(m_dueLabel.text.isEmpty() ? tr("Schedule") : m_dueLabel.text);
    const auto size = theme().extent(m_dueLabel.isEmpty() ? Extent::icon : Extent::smallIcon);
    m_schedule->setIconSize({size, size});
    m_schedule->setIcon(m_dueLabel.isEmpty() ? IconSet::icon(QStringLiteral("calendar-plus"), quiet)
                        : m_dueLabel.hasReminder ? IconSet::icon(QStringLiteral("bell-fill"), quiet)
                                                 : QIcon());
    arrangeAgain();
}

void TodoEditor::arrangeAgain() {
    m_arrangement.reset();
    Q_EMIT neededHeightChanged();
    place(); // an editor that stays as large is not laid out otherwise
}

/// The document of a hidden field knows no width: its text is laid out here, as in a row of this
/// width.
const TodoArrangement& TodoEditor::arrangement(int width) {
    if (!m_arrangement || m_arrangedWidth != width) {
        const auto text = typed();
        const auto layout = makeTextLayout(text, directionOf(text), theme());
        m_arrangement = arrangeTodo(*layout, width, m_dueLabel, ScheduleButton::offered, theme());
        m_arrangedWidth = width;
    }
    return *m_arrangement;
}

void TodoEditor::place() {
    const auto arranged = arrangement(width());
    // Some room below, so that the field never scrolls by a rounded pixel.
    const auto below = RowFrame::of(theme()).padding - 1;
    m_field->setGeometry(mirrored(arranged.text.adjusted(0, 0, 0, below), width()));
    if (const auto circle = mirrored(arranged.sign, width()); circle != m_circle) {
        m_circle = circle;
        update();
    }

    // What the button says stands where the row shows it; around that is the button's own room.
    const auto& shown = arranged.schedule;
    auto button = QRect(QPoint(), m_schedule->sizeHint());
    const auto line =
        m_dueLabel.isEmpty() ? shown.height() : QFontMetrics(theme().smallFont()).height();
    button.moveTop(shown.top() - (button.height() - line) / 2);
    const auto aside = theme().space(Space::small);
    if (arranged.isScheduleAtEnd) {
        button.moveRight(shown.right() + aside);
    } else {
        button.moveLeft(shown.left() - aside);
    }
    m_schedule->setGeometry(mirrored(button, width()));
}

} // namespace korvex::ui
