#include "ui/entries/TextEditor.h"

#include "richtext/text/TextMerge.h"
#include "ui/editor/BarStrip.h"
#include "ui/editor/FormatBar.h"
#include "ui/editor/RichTextEdit.h"
#include "ui/editor/TextMenu.h"
#include "ui/kit/words/Text.h"
#include "ui/text/CodeColors.h"
#include "ui/text/TextDocumentConversion.h"
#include "ui/text/TextLook.h"
#include "ui/todos/RowFrame.h"

#include <QAbstractTextDocumentLayout>
#include <QScrollBar>
#include <QTextBlock>
#include <QTextTable>

#include <cmath>

namespace korvex::ui {

TextEditor::TextEditor(richtext::CodeHighlighter& code, const Theme& theme, QWidget* parent)
    : RowEditor(theme, parent),
      m_field(new RichTextEdit(this)),
      m_strip(new BarStrip(theme, parent)),
      m_bar(new FormatBar(*m_field, code, theme, parent)),
      m_colors(new CodeColors(*m_field->document(), code, TextLook(theme), this)) {
    setFocusProxy(m_field);
    m_bar->hide();
    m_field->setLineWrapMode(QTextEdit::FixedPixelWidth);
    applyTheme();
    connect(&theme, &Theme::changed, this, &TextEditor::applyTheme);
    connect(m_field->document(), &QTextDocument::contentsChanged, this, &TextEditor::edited);
    // The row changes its height when the text does, not with every key.
    connect(m_field->document()->documentLayout(),
            &QAbstractTextDocumentLayout::documentSizeChanged, this, &TextEditor::checkHeight);
    connect(m_field, &QTextEdit::cursorPositionChanged, this, &TextEditor::reveal);
    connect(m_bar, &FormatBar::sizeChanged, this, &TextEditor::placeBar);
}

TextEditor::~TextEditor() {
    delete m_bar;
    delete m_strip;
}

bool TextEditor::owns(const QWidget* widget) const {
    return RowEditor::owns(widget) || widget == m_bar || m_bar->isAncestorOf(widget);
}

richtext::AttributedString TextEditor::text() const {
    return m_field->content();
}

void TextEditor::load(const richtext::AttributedString& stored) {
    m_field->setContent(stored);
    m_colors->update();
    setStored(m_field->content());
    endMessage();
    Q_EMIT neededHeightChanged();
}

void TextEditor::change(const richtext::AttributedString& to) {
    const auto parts = richtext::differences(text(), to);
    auto& document = *m_field->document();
    editAround([&](QTextCursor& cursor) {
        for (auto part = parts.rbegin(); part != parts.rend(); ++part) {
            cursor.setPosition(positionOf(document, part->before.location));
            cursor.setPosition(positionOf(document, part->before.end()), QTextCursor::KeepAnchor);
            insertText(cursor, to.slice(part->after), m_field->look());
        }
    });
    if (!text().isEquivalentTo(to)) {
        // The document could not be patched, as at the edge of a table: it is made anew.
        const int place = caret();
        m_field->setContent(to);
        setCaret(place);
    }
    m_colors->update();
}

std::optional<TextEditor::Parts> TextEditor::parts() const {
    const auto cursor = m_field->textCursor();
    if (cursor.currentTable()) {
        return std::nullopt;
    }
    const auto text = m_field->content();
    const auto place = offsetOf(*m_field->document(), cursor.position());
    auto before = text.slice({0, place});
    auto after = text.slice({place, text.length() - place});
    if (cursor.atBlockStart() && !before.isEmpty() && before.text().back() == u'\n') {
        before.remove({before.length() - 1, 1});
    }
    const auto isBlank = [](const richtext::AttributedString& part) {
        return toQString(part.text()).trimmed().isEmpty();
    };
    if (isBlank(before) || isBlank(after)) {
        return std::nullopt;
    }
    return Parts{std::move(before), std::move(after)};
}

QTextEdit& TextEditor::input() {
    return *m_field;
}

int TextEditor::caret() const {
    return static_cast<int>(offsetOf(*m_field->document(), m_field->textCursor().position()));
}

void TextEditor::setCaret(int offset) {
    const auto& document = *m_field->document();
    auto cursor = m_field->textCursor();
    const auto isInside = offset >= 0 && offset < document.characterCount();
    cursor.setPosition(isInside ? std::min(positionOf(document, static_cast<std::size_t>(offset)),
                                           document.characterCount() - 1)
                                : document.characterCount() - 1);
    m_field->setTextCursor(cursor);
}

bool TextEditor::isChanged() const {
    return !text().isEquivalentTo(stored());
}

QMenu* TextEditor::makeMenu() {
    return new TextMenu(*m_field, m_field);
}

int TextEditor::textHeight(const EntryRowRoom& room) {
    const auto frame = RowFrame::ofText(theme());
    const auto width = frame.room(room.width);
    m_mostWidth = room.most;
    // However wide the field is, its text is not; and that of a hidden field knows no width. To be
    // told the same again would lay out all of it.
    if (m_field->lineWrapColumnOrWidth() != width) {
        m_field->setLineWrapColumnOrWidth(width);
    }
    if (static_cast<int>(m_field->document()->textWidth()) != width) {
        m_field->document()->setTextWidth(width);
    }
    m_contentHeight = contentHeight();
    m_wholeWidth = wholeWidth();
    return frame.heightFor(frame.top() + m_contentHeight);
}

int TextEditor::wholeWidth() const {
    const auto text = static_cast<int>(std::ceil(m_field->document()->size().width()));
    return text + 2 * RowFrame::ofText(theme()).side;
}

/// With the scroll bar that the field has where the row does not reach far enough: the field itself
/// learns how far it reaches when the height is known.
int TextEditor::contentHeight() const {
    const auto isWide = wholeWidth() > m_mostWidth;
    return static_cast<int>(std::ceil(m_field->document()->size().height())) +
           (isWide ? m_field->horizontalScrollBar()->sizeHint().height() : 0);
}

void TextEditor::checkHeight() {
    if (contentHeight() != m_contentHeight || wholeWidth() != m_wholeWidth) {
        Q_EMIT neededHeightChanged();
    }
}

void TextEditor::resizeEvent(QResizeEvent* event) {
    RowEditor::resizeEvent(event);
    place();
}

void TextEditor::applyTheme() {
    const TextLook look(theme());
    m_field->setLook(look);
    m_colors->setLook(look);
    Q_EMIT neededHeightChanged();
}

void TextEditor::place() {
    const auto frame = RowFrame::ofText(theme());
    const int bottom = height() - frame.below() - frame.padding - messageHeight(width());
    m_field->setGeometry(frame.textLeft, frame.top(), frame.room(width()), bottom - frame.top());
}

void TextEditor::placeInSight() {
    placeBar();
    RowEditor::placeInSight();
}

void TextEditor::placeBar() {
    if (isHidden()) {
        return;
    }
    const auto around = aroundBar();
    const auto wanted = m_bar->sizeHint();
    const auto [bar, edge] = placeOfBar(wanted, around);
    const auto room = roomForBar(wanted.height(), around);
    const auto isSeen = around.row.intersects(around.sight.adjusted(0, room.top, 0, -room.foot));
    m_bar->setGeometry(bar);
    m_bar->setVisible(isSeen);
    m_strip->setVisible(isSeen && edge != BarPlace::Edge::none);
    m_strip->keepTo(edge, around.sight, bar);
    m_strip->raise();
    m_bar->raise();
}

BarSurroundings TextEditor::aroundBar() const {
    const auto row = RowFrame::ofText(theme()).box(size()).translated(pos());
    auto sight = QRect(0, 0, parentWidget()->width(), endOfSight() + y());
    if (row.bottom() > sight.bottom()) {
        sight.setBottom(sight.bottom() - messageHeight(width())); // which stays in sight there
    }
    return {.sight = sight, .row = row, .above = above(), .distance = theme().space(Space::small)};
}

QMargins TextEditor::overSight() const {
    const auto room = roomForBar(m_bar->sizeHint().height(), aroundBar());
    return {0, room.top, 0, room.foot};
}

void TextEditor::showEvent(QShowEvent* event) {
    RowEditor::showEvent(event);
    placeBar();
}

void TextEditor::hideEvent(QHideEvent* event) {
    RowEditor::hideEvent(event);
    m_bar->hide();
    m_strip->hide();
}

QRect TextEditor::caretPlace() {
    const auto line = m_field->cursorRect().translated(m_field->pos());
    const int margin = RowFrame::ofText(theme()).padding;
    return line.adjusted(0, -margin, 0, margin);
}

} // namespace korvex::ui
