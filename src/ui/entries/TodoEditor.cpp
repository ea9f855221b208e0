#include "ui/entries/TodoEditor.h"

#include "base/Text.h"
#include "richtext/text/TextMerge.h"
#include "ui/editor/TextMenu.h"
#include "ui/kit/theme/Direction.h"
#include "ui/kit/words/Text.h"
#include "ui/todos/RowFrame.h"
#include "ui/todos/TodoPainting.h"

#include <QMenu>
#include <QPainter>

namespace korvex::ui {

TodoEditor::TodoEditor(const Theme& theme, QWidget* parent)
    : RowEditor(theme, parent), m_field(new TodoTextEdit(this)), m_due(new DueButton(theme, this)) {
    setFocusProxy(m_field);
    connect(m_field, &QTextEdit::textChanged, this, &TodoEditor::edited);
    connect(m_field->document(), &QTextDocument::contentsChanged, this, &TodoEditor::arrangeAgain);
    connect(m_field, &QTextEdit::cursorPositionChanged, this, &TodoEditor::reveal);
    connect(m_due, &QToolButton::clicked, this, &TodoEditor::scheduleClicked);
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

QMenu* TodoEditor::makeMenu() {
    auto* const menu = new QMenu(m_field);
    addEditingItems(*menu, *m_field);
    return menu;
}

void TodoEditor::setDueLabel(const DueLabel& label) {
    m_due->setLabel(label);
    arrangeAgain();
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
    Shapes::paintCheckCircle(painter, m_circle, Shapes::CheckCircle::open, theme().colors());
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
        m_arrangement =
            arrangeTodo(*layout, width, m_due->label(), ScheduleButton::offered, theme());
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
    m_due->placeAround(mirrored(arranged.schedule, width()));
}

} // namespace korvex::ui
