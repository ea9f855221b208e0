#include "ui/entries/TodoEditor.h"

#include "base/Text.h"
#include "richtext/text/TextMerge.h"
#include "ui/kit/theme/Direction.h"
#include "ui/kit/theme/IconSet.h"
#include "ui/kit/words/Text.h"
#include "ui/todos/PastedLines.h"
#include "ui/todos/RowFrame.h"
#include "ui/todos/TodoPainting.h"

#include <QPainter>
#include <QToolButton>

#include <cmath>

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
    connect(m_field->document(), &QTextDocument::contentsChanged, this,
            &TodoEditor::neededHeightChanged);
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
    place(); // an editor that stays as large is not laid out otherwise
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
    // The field has one kind of break between lines.
    const auto now = withLineFeeds(typed());
    const auto before = withLineFeeds(toQString(stored().text()));
    return now != before && base::trimmed(toUtf8(now)) != toUtf8(before);
}

void TodoEditor::setCaret(int offset) {
    m_field->setCaret(offset < 0 ? static_cast<int>(typed().size()) : offset);
}

void TodoEditor::setDueLabel(const DueLabel& label) {
    m_dueLabel = label;
    applyTheme();
    place();
}

QRect TodoEditor::caretPlace() {
    const int margin = RowFrame::of(theme()).padding;
    return m_field->cursorRect().translated(m_field->pos()).adjusted(0, -margin, 0, margin);
}

int TodoEditor::textHeight(int width) {
    const auto frame = RowFrame::of(theme());
    const auto arranged = arrangement(width);
    auto bottom = bottomOf(arranged);
    if (!arranged.isBeside) {
        bottom += theme().space(Space::hair) + QFontMetrics(theme().smallFont()).height();
    }
    return frame.heightFor(bottom);
}

/// Where the text ends, or the circle.
int TodoEditor::bottomOf(const TextArrangement& arranged) const {
    const auto frame = RowFrame::of(theme());
    const RowLine line(frame, arranged.ascent, theme());
    return std::max(line.textTop() + arranged.textHeight, frame.top() + frame.signSize);
}

void TodoEditor::paintEvent(QPaintEvent* event) {
    RowEditor::paintEvent(event);
    const auto frame = RowFrame::of(theme());
    const RowLine line(frame, arrangement(width()).ascent, theme());
    QPainter painter(this);
    const QRect circle(frame.side, line.topOfSign(frame.signSize), frame.signSize, frame.signSize);
    TodoPainting::drawCircle(painter, mirrored(circle, rect()), TodoPainting::Circle::open,
                             theme().colors());
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
    Q_EMIT neededHeightChanged();
}

/// The document of a hidden field knows no width: its text is laid out here, as in a row of this
/// width.
TextArrangement TodoEditor::arrangement(int width) const {
    const auto layout = makeTextLayout(typed(), layoutDirection(), theme());
    const auto frame = RowFrame::of(theme());
    const auto room = width - frame.textLeft - frame.side;
    const auto hasDue = !m_dueLabel.isEmpty();
    const auto beside =
        hasDue ? m_dueLabel.width(theme()) + 2 * frame.gap : frame.scheduleSize + frame.gap;
    return arrangeText(*layout, room, beside, hasDue ? BesideText::goesBelow : BesideText::stays);
}

void TodoEditor::place() {
    const auto frame = RowFrame::of(theme());
    const auto arranged = arrangement(width());
    const RowLine line(frame, arranged.ascent, theme());
    // Some room below, so that the field never scrolls by a rounded pixel.
    m_field->setGeometry(mirrored(QRect(frame.textLeft, line.textTop(), arranged.textWidth,
                                        arranged.textHeight + frame.padding - 1),
                                  width()));

    // What the button says stands where the row shows it; around that is the button's own room.
    const QFontMetrics small(theme().smallFont());
    const auto button = m_schedule->sizeHint();
    const auto around = (button.height() - small.height()) / 2;
    const auto aside = theme().space(Space::small);
    const auto labelTop = arranged.isBeside ? line.topOf(theme().smallFont())
                                            : bottomOf(arranged) + theme().space(Space::hair);
    const QPoint place(arranged.isBeside ? width() - frame.side - button.width() + aside
                                         : frame.textLeft - aside,
                       labelTop - around);
    m_schedule->setGeometry(mirrored(QRect(place, button), width()));
}

} // namespace korvex::ui
