#include "ui/editor/RichTextEdit.h"

#include "ui/editor/RichTextRuns.h"
#include "ui/editor/TableEditing.h"
#include "ui/text/Links.h"

#include <QKeyEvent>
#include <QShortcut>
#include <QTextBlock>
#include <QTextTable>

namespace korvex::ui {

namespace {

using Kind = richtext::RichTextAction::Kind;

/// What Tab inserts in code.
constexpr QStringView kCodeIndent = u"    ";

bool isControl(QChar unit) {
    return unit < QChar(u' ') || unit == QChar(0x7f);
}

bool isBehindTable(const QTextBlock& block) {
    return block.isValid() && block.previous().isValid() && !QTextCursor(block).currentTable() &&
           QTextCursor(block.previous()).currentTable();
}

/// Qt draws no empty paragraph right behind a table: its caret would stand beside the table.
bool isHiddenBehindTable(const QTextBlock& block) {
    return isBehindTable(block) && isEmpty(block);
}

/// The neighbour goes on with the block's code.
bool continuesCode(const QTextBlock& neighbour, const QTextBlock& block) {
    return neighbour.isValid() && isCodeBlock(neighbour) && isSameCell(neighbour, block);
}

} // namespace

void RichTextEdit::addShortcuts() {
    const auto add = [this](const QKeySequence& keys, auto&& action) {
        auto* const shortcut = new QShortcut(keys, this, nullptr, nullptr, Qt::WidgetShortcut);
        connect(shortcut, &QShortcut::activated, this, action);
    };
    const auto addCommand = [&](const QKeySequence& keys, const richtext::RichTextAction& action) {
        add(keys, [this, action] { perform({action}); });
    };
    addCommand(Qt::CTRL | Qt::Key_B, {Kind::bold});
    addCommand(Qt::CTRL | Qt::Key_I, {Kind::italic});
    addCommand(Qt::CTRL | Qt::Key_U, {Kind::underline});
    addCommand(Qt::CTRL | Qt::SHIFT | Qt::Key_X, {Kind::strikethrough});
    addCommand(Qt::CTRL | Qt::Key_E, {Kind::code});
    addCommand(Qt::CTRL | Qt::SHIFT | Qt::Key_K, {Kind::link});
    addCommand(Qt::CTRL | Qt::ALT | Qt::Key_0, richtext::RichTextAction::heading(std::nullopt));
    for (const auto level : richtext::kHeadingLevels) {
        addCommand(Qt::CTRL | Qt::ALT | static_cast<Qt::Key>(Qt::Key_0 + static_cast<int>(level)),
                   richtext::RichTextAction::heading(level));
    }
    add(Qt::CTRL | Qt::SHIFT | Qt::Key_7, [this] { toggleList(QStringLiteral("{decimal}.")); });
    add(Qt::CTRL | Qt::SHIFT | Qt::Key_8, [this] { toggleList(QStringLiteral("{disc}")); });
    add(Qt::CTRL | Qt::SHIFT | Qt::Key_V, [this] { pastePlainText(); });
    add(Qt::CTRL | Qt::SHIFT | Qt::Key_Return, [this] { Q_EMIT splitRequested(); });
    add(Qt::CTRL | Qt::Key_S, [this] { Q_EMIT storeRequested(); });
}

void RichTextEdit::keyPressEvent(QKeyEvent* event) {
    if (handledAsStructure(*event) || handledAsMovement(*event)) {
        event->accept();
        return;
    }
    if (event->matches(QKeySequence::DeleteEndOfLine) ||
        event->matches(QKeySequence::DeleteCompleteLine)) {
        event->ignore(); // where these have keys at all, the window means something else by them
        return;
    }
    const auto typed = event->text();
    if (!typed.isEmpty() && !isControl(typed.front()) && !allows(typed)) {
        return;
    }
    QTextEdit::keyPressEvent(event);
    if (event->key() >= Qt::Key_Home && event->key() <= Qt::Key_PageDown) {
        passHiddenParagraph(*event);
        stepOutOfRuns(); // also where there was no way on
    }
}

void RichTextEdit::passHiddenParagraph(const QKeyEvent& event) {
    if (!isHiddenBehindTable(textCursor().block()) || event.key() == Qt::Key_Home ||
        event.key() == Qt::Key_End) {
        return;
    }
    const bool isOn = event.key() == Qt::Key_Down || event.key() == Qt::Key_Right ||
                      event.key() == Qt::Key_PageDown;
    moveCursor(isOn ? QTextCursor::NextBlock : QTextCursor::PreviousCharacter,
               event.modifiers().testFlag(Qt::ShiftModifier) ? QTextCursor::KeepAnchor
                                                             : QTextCursor::MoveAnchor);
}

void RichTextEdit::inputMethodEvent(QInputMethodEvent* event) {
    if (!event->commitString().isEmpty() && !allows(event->commitString())) {
        return;
    }
    QTextEdit::inputMethodEvent(event);
}

/// Keys that do something else in lists, headings, code and tables.
bool RichTextEdit::handledAsStructure(const QKeyEvent& event) {
    const auto modifiers = event.modifiers() & ~Qt::KeypadModifier;
    switch (event.key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
        handleReturn(modifiers);
        return true;
    case Qt::Key_Backspace:
        return modifiers == Qt::NoModifier && handleBackspace();
    case Qt::Key_Tab:
        if (modifiers == Qt::NoModifier) {
            handleTab();
            return true;
        }
        return modifiers == Qt::ShiftModifier && handleBacktab();
    case Qt::Key_Backtab:
        return handleBacktab();
    default:
        return false;
    }
}

bool RichTextEdit::handledAsMovement(const QKeyEvent& event) {
    const auto modifiers = event.modifiers() & ~Qt::KeypadModifier;
    switch (event.key()) {
    case Qt::Key_Escape:
        Q_EMIT escaped();
        return true;
    case Qt::Key_Up:
    case Qt::Key_Down: {
        const int direction = event.key() == Qt::Key_Up ? -1 : 1;
        if (modifiers == Qt::AltModifier) {
            Q_EMIT moveRequested(direction);
            return true;
        }
        if (modifiers == Qt::NoModifier && leadsOut(direction)) {
            Q_EMIT walked(direction);
            return true;
        }
        return false;
    }
    default:
        return false;
    }
}

void RichTextEdit::handleReturn(Qt::KeyboardModifiers modifiers) {
    auto cursor = textCursor();
    if (modifiers == Qt::ControlModifier) {
        leaveCodeBlock();
        return;
    }
    const auto block = cursor.block();
    const bool isInEmpty = isEmpty(block) && !cursor.hasSelection();
    if (isInEmpty && modifiers == Qt::NoModifier && leftByReturn(block)) {
        return;
    }
    if (!allows(u"\n")) {
        return;
    }
    if (modifiers.testFlag(Qt::ShiftModifier)) {
        cursor.insertText(QString(QChar::LineSeparator));
    } else {
        cursor.beginEditBlock();
        cursor.removeSelectedText();
        const bool wasAtStart = cursor.atBlockStart() && !isEmpty(cursor.block());
        const bool wasAtEnd = cursor.atBlockEnd();
        const bool wasHeading = headingOf(cursor.block()).has_value();
        auto attributes = attributesOf(cursor.charFormat());
        attributes.link.clear();
        if (attributes.isCode() && !attributes.korvexCodeBlock) {
            richtext::removeCode(attributes, headingOf(cursor.block()));
        }
        cursor.insertBlock(cursor.blockFormat(), charFormatOf(attributes, look()));
        if (wasHeading && (wasAtStart || wasAtEnd)) {
            // What is not the heading's own text is body text.
            auto body = cursor;
            if (wasAtStart) {
                body.movePosition(QTextCursor::PreviousBlock);
            }
            makeBodyText(body);
        }
        cursor.endEditBlock();
    }
    setTextCursor(cursor);
    updateState();
}

/// Return in an empty paragraph ends what the paragraph belongs to.
bool RichTextEdit::leftByReturn(const QTextBlock& block) {
    if (!listsOf(block).empty()) {
        nest(-1);
        return true;
    }
    const bool isEndOfCode = isCodeBlock(block) && continuesCode(block.previous(), block) &&
                             !continuesCode(block.next(), block);
    if (isEndOfCode || headingOf(block)) {
        makeBodyText(textCursor());
        return true;
    }
    return false;
}

/// Goes on with body text below the code.
void RichTextEdit::leaveCodeBlock() {
    auto cursor = textCursor();
    if (!isCodeBlock(cursor.block()) || !allows(u"\n")) {
        return;
    }
    auto last = cursor.block();
    while (continuesCode(last.next(), last)) {
        last = last.next();
    }
    cursor.setPosition(last.position() + last.length() - 1);
    cursor.beginEditBlock();
    cursor.insertBlock();
    makeBodyText(cursor);
    cursor.endEditBlock();
    setTextCursor(cursor);
    updateState();
}

bool RichTextEdit::handleBackspace() {
    const auto cursor = textCursor();
    const auto block = cursor.block();
    if (cursor.hasSelection() || !cursor.atBlockStart()) {
        return false;
    }
    if (!listsOf(block).empty()) {
        leaveLists(cursor);
        return true;
    }
    if (headingOf(block) || (isCodeBlock(block) && !continuesCode(block.previous(), block))) {
        makeBodyText(cursor);
        return true;
    }
    auto behind = isHiddenBehindTable(block.previous()) ? block.previous() : block;
    if (isBehindTable(behind)) {
        // A table is not taken away like a character: the caret goes into its last cell.
        QTextCursor into(behind);
        into.movePosition(QTextCursor::PreviousCharacter);
        setTextCursor(into);
        return true;
    }
    return false;
}

void RichTextEdit::handleTab() {
    const auto cursor = textCursor();
    if (cursor.currentTable()) {
        TableEditing tables(*this);
        if (!tables.nextCell() && tables.perform(TableAction::insertRowBelow)) {
            auto first = textCursor();
            const auto* const table = first.currentTable();
            first.setPosition(table->cellAt(table->rows() - 1, 0).firstPosition());
            setTextCursor(first);
        }
        return;
    }
    if (isCodeBlock(cursor.block())) {
        indentCode();
        return;
    }
    if (nest(1)) {
        return;
    }
    if (allows(u"\t")) {
        auto typed = cursor;
        typed.insertText(QStringLiteral("\t"));
        setTextCursor(typed);
    }
}

/// Outside of tables, lists and code the keyboard goes back to the controls, as it would from a
/// field.
bool RichTextEdit::handleBacktab() {
    const auto cursor = textCursor();
    if (cursor.currentTable()) {
        TableEditing(*this).previousCell();
        return true;
    }
    if (isCodeBlock(cursor.block())) {
        unindentCode();
        return true;
    }
    return nest(-1) || focusNextPrevChild(false);
}

void RichTextEdit::indentCode() {
    auto cursor = textCursor();
    if (!cursor.hasSelection()) {
        if (allows(kCodeIndent)) {
            cursor.insertText(kCodeIndent.toString());
        }
        return;
    }
    const auto last = document()->findBlock(cursor.selectionEnd());
    auto block = document()->findBlock(cursor.selectionStart());
    const auto lines = last.blockNumber() - block.blockNumber() + 1;
    const QString indents(lines * kCodeIndent.size(), QLatin1Char(' '));
    if (!allowsReplacing(block.position(), block.position(), indents)) {
        return;
    }
    cursor.beginEditBlock();
    for (auto i = 0; i < lines; ++i, block = block.next()) {
        QTextCursor line(block);
        line.insertText(kCodeIndent.toString());
    }
    cursor.endEditBlock();
}

void RichTextEdit::unindentCode() {
    auto cursor = textCursor();
    const auto last = document()->findBlock(cursor.selectionEnd()).blockNumber();
    cursor.beginEditBlock();
    for (auto block = document()->findBlock(cursor.selectionStart());
         block.isValid() && block.blockNumber() <= last; block = block.next()) {
        const auto text = block.text();
        int blanks = 0;
        while (blanks < kCodeIndent.size() && blanks < text.size() &&
               text[blanks] == QLatin1Char(' ')) {
            ++blanks;
        }
        if (blanks == 0 && text.startsWith(QLatin1Char('\t'))) {
            blanks = 1;
        }
        QTextCursor line(block);
        line.movePosition(QTextCursor::NextCharacter, QTextCursor::KeepAnchor, blanks);
        line.removeSelectedText();
    }
    cursor.endEditBlock();
}

bool RichTextEdit::leadsOut(int direction) const {
    auto cursor = textCursor();
    return !cursor.movePosition(direction < 0 ? QTextCursor::Up : QTextCursor::Down);
}

void RichTextEdit::mousePressEvent(QMouseEvent* event) {
    QTextEdit::mousePressEvent(event);
    if (event->button() == Qt::RightButton) {
        // The menu is about the place that was pressed, unless that is selected.
        const auto place = cursorForPosition(event->position().toPoint());
        const auto current = textCursor();
        if (place.position() < current.selectionStart() ||
            place.position() > current.selectionEnd()) {
            setTextCursor(place);
        }
    }
    stepOutOfRuns();
}

void RichTextEdit::mouseMoveEvent(QMouseEvent* event) {
    QTextEdit::mouseMoveEvent(event);
    const bool opens = event->modifiers().testFlag(Qt::ControlModifier) &&
                       !openableLinkAt(*document(), event->position() + scrolled()).isEmpty();
    viewport()->setCursor(opens ? Qt::PointingHandCursor : Qt::IBeamCursor);
}

void RichTextEdit::mouseReleaseEvent(QMouseEvent* event) {
    QTextEdit::mouseReleaseEvent(event);
    if (event->button() == Qt::LeftButton && event->modifiers() == Qt::ControlModifier &&
        !textCursor().hasSelection()) {
        openLink(anchorAt(event->position().toPoint()));
    }
}

} // namespace korvex::ui
