#include "ui/editor/RichTextEdit.h"

#include "base/Text.h"
#include "base/Utf16.h"
#include "model/EntryContentLimit.h"
#include "richtext/table/RichTextTable.h"
#include "ui/editor/RichTextRuns.h"
#include "ui/kit/Text.h"
#include "ui/text/TextDocumentConversion.h"
#include "ui/text/TextPainting.h"

#include <QPaintEvent>
#include <QPainter>
#include <QScrollBar>
#include <QTextTable>

namespace korvex::ui {

namespace {

using model::EntryContentLimit;

/// No UTF-16 unit has more bytes.
constexpr std::size_t kBytesPerUnit = 3;

} // namespace

RichTextEdit::RichTextEdit(QWidget* parent) : QTextEdit(parent) {
    setFrameShape(NoFrame);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setWordWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    document()->setDocumentMargin(0);
    viewport()->setAutoFillBackground(false);
    setAccessibleName(tr("Text"));
    setPlaceholderText(tr("Text"));
    connect(this, &QTextEdit::cursorPositionChanged, this, &RichTextEdit::updateState);
    connect(this, &QTextEdit::selectionChanged, this, &RichTextEdit::updateState);
    connect(document(), &QTextDocument::contentsChange, this, [this](int, int, int added) {
        // Wherever characters are put, they part one that is there at most.
        m_knownRoom -= added + 1;
    });
    addShortcuts();
}

RichTextEdit::~RichTextEdit() = default;

void RichTextEdit::setLook(const TextLook& look) {
    const auto text = m_look ? std::optional(content()) : std::nullopt;
    const int position = textCursor().position();
    m_look = std::make_unique<TextLook>(look);
    setFont(look.font);
    document()->setDefaultFont(look.font);
    auto own = palette();
    own.setColor(QPalette::Base, Qt::transparent);
    own.setColor(QPalette::Text, look.text);
    setPalette(own);
    if (text) {
        const bool wasModified = document()->isModified();
        setContent(*text);
        document()->setModified(wasModified);
        auto cursor = textCursor();
        cursor.setPosition(std::min(position, document()->characterCount() - 1));
        setTextCursor(cursor);
    }
}

void RichTextEdit::setContent(const richtext::AttributedString& text) {
    // Named in full: QTextEdit has one for texts of its own.
    ui::setText(*document(), text, look());
    document()->clearUndoRedoStacks();
    document()->setModified(false);
    m_knownRoom = 0;
    setTextCursor(QTextCursor(document()));
    stepOutOfRuns();
    updateState();
}

richtext::AttributedString RichTextEdit::content() const {
    return textOf(*document());
}

QPointF RichTextEdit::scrolled() const {
    return QPointF(horizontalScrollBar()->value(), verticalScrollBar()->value());
}

void RichTextEdit::paintEvent(QPaintEvent* event) {
    QPainter painter(viewport());
    painter.translate(-scrolled());
    paintUnderText(painter, *document(), look(), QRectF(event->rect()).translated(scrolled()));
    painter.end();
    QTextEdit::paintEvent(event);
}

bool RichTextEdit::allows(QStringView replacement) {
    const auto cursor = textCursor();
    return allowsReplacing(cursor.selectionStart(), cursor.selectionEnd(), replacement);
}

bool RichTextEdit::allowsReplacing(int from, int to, QStringView replacement) {
    if (isWithinKnownRoom(replacement.size())) {
        return true;
    }
    const auto text = base::utf8(content().text());
    const auto count = base::characterCount(text, EntryContentLimit::kMaximumCharacters + 1);
    m_knownRoom = std::min(static_cast<std::ptrdiff_t>(EntryContentLimit::kMaximumCharacters) -
                               static_cast<std::ptrdiff_t>(count),
                           (static_cast<std::ptrdiff_t>(EntryContentLimit::kMaximumBytes) -
                            static_cast<std::ptrdiff_t>(text.size())) /
                               static_cast<std::ptrdiff_t>(kBytesPerUnit));
    const auto start = offsetOf(*document(), from);
    const auto end = offsetOf(*document(), to);
    if (EntryContentLimit::allowsReplacing(text, start, end - start,
                                           toUtf8(replacement.toString()))) {
        return true;
    }
    Q_EMIT limitReached();
    return false;
}

/// Whether so many more UTF-16 units fit in, judged without counting characters.
bool RichTextEdit::isWithinKnownRoom(qsizetype added) const {
    // A document has a unit for each of the text's; a character has at least one.
    return document()->characterCount() + added <=
               static_cast<qsizetype>(EntryContentLimit::kMaximumCharacters) ||
           added + 1 <= m_knownRoom;
}

bool RichTextEdit::insert(const richtext::AttributedString& text) {
    const auto& units = text.text();
    if (!allows({units.data(), static_cast<qsizetype>(units.size())})) {
        return false;
    }
    auto cursor = textCursor();
    insertText(cursor, text, look());
    setTextCursor(cursor);
    stepOutOfRuns();
    updateState();
    ensureCursorVisible();
    return true;
}

void RichTextEdit::insertTable(int rows, int columns) {
    auto cursor = textCursor();
    if (cursor.currentTable() || isCodeBlock(cursor.block())) {
        return; // tables do not stand in tables, nor in code
    }
    auto table = richtext::RichTextTable::make(
        std::clamp(rows, 1, richtext::RichTextTable::kMaximumRows),
        std::clamp(columns, 1, richtext::RichTextTable::kMaximumColumns));
    cursor.clearSelection();
    const bool isLast = !cursor.block().next().isValid();
    if (!isLast) {
        // What stands here, or follows, is the paragraph after the table.
        table.remove({table.length() - 1, 1});
    }
    if (!isEmpty(cursor.block())) {
        cursor.movePosition(QTextCursor::EndOfBlock);
        richtext::AttributedString below(u"\n");
        below.append(table);
        table = std::move(below);
    }
    setTextCursor(cursor);
    const int place = cursor.position();
    if (insert(table)) {
        auto first = textCursor();
        first.setPosition(place);
        while (!first.currentTable() && first.movePosition(QTextCursor::NextBlock)) {
        }
        setTextCursor(first);
    }
}

} // namespace korvex::ui
