#include "ui/editor/StructureKeys.h"

#include "richtext/text/Formatting.h"
#include "ui/editor/RichTextEdit.h"
#include "ui/editor/RichTextRuns.h"
#include "ui/editor/TableEditing.h"
#include "ui/text/TextSelection.h"

#include <QKeyEvent>
#include <QTextBlock>
#include <QTextTable>

#include <vector>

namespace korvex::ui {

namespace {

/// What Tab inserts in code.
constexpr QStringView kCodeIndent = u"    ";

/// The neighbour goes on with the block's code.
bool continuesCode(const QTextBlock& neighbour, const QTextBlock& block) {
    return neighbour.isValid() && isCodeBlock(neighbour) && isSameCell(neighbour, block);
}

/// The selected lines of code, or the one that the caret is in.
std::vector<QTextBlock> codeLinesOf(const QTextCursor& selection) {
    const auto& document = *selection.document();
    const auto last = document.findBlock(selection.selectionEnd()).blockNumber();
    std::vector<QTextBlock> lines;
    for (auto block = document.findBlock(startOf(selection));
         block.isValid() && block.blockNumber() <= last; block = block.next()) {
        if (isCodeBlock(block)) {
            lines.push_back(block);
        }
    }
    return lines;
}

} // namespace

bool StructureKeys::handle(const QKeyEvent& event) {
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

void StructureKeys::handleReturn(Qt::KeyboardModifiers modifiers) {
    auto cursor = m_edit.textCursor();
    if (modifiers == Qt::ControlModifier) {
        leaveCodeBlock();
        return;
    }
    const auto block = cursor.block();
    const auto isInEmpty = isEmpty(block) && !cursor.hasSelection();
    if (isInEmpty && modifiers == Qt::NoModifier && leftByReturn(block)) {
        return;
    }
    if (!m_edit.allows(u"\n")) {
        return;
    }
    if (modifiers.testFlag(Qt::ShiftModifier)) {
        cursor.insertText(QString(QChar::LineSeparator));
    } else {
        cursor.beginEditBlock();
        cursor.removeSelectedText();
        const auto wasAtStart = cursor.atBlockStart() && !isEmpty(cursor.block());
        const auto wasAtEnd = cursor.atBlockEnd();
        const auto wasHeading = headingOf(cursor.block()).has_value();
        auto attributes = attributesOf(cursor.charFormat());
        attributes.link.clear();
        if (attributes.isCode() && !attributes.korvexCodeBlock) {
            richtext::removeCode(attributes, headingOf(cursor.block()));
        }
        cursor.insertBlock(cursor.blockFormat(), charFormatOf(attributes, m_edit.look()));
        if (wasHeading && (wasAtStart || wasAtEnd)) {
            // What is not the heading's own text is body text.
            auto body = cursor;
            if (wasAtStart) {
                body.movePosition(QTextCursor::PreviousBlock);
            }
            formats().makeBodyText(body);
        }
        cursor.endEditBlock();
    }
    m_edit.setTextCursor(cursor);
}

bool StructureKeys::leftByReturn(const QTextBlock& block) {
    if (!listsOf(block).empty()) {
        nest(Nesting::shallower);
        return true;
    }
    const auto isEndOfCode = isCodeBlock(block) && continuesCode(block.previous(), block) &&
                             !continuesCode(block.next(), block);
    if (isEndOfCode || headingOf(block)) {
        formats().makeBodyText(m_edit.textCursor());
        return true;
    }
    return false;
}

void StructureKeys::leaveCodeBlock() {
    auto cursor = m_edit.textCursor();
    if (!isCodeBlock(cursor.block()) || !m_edit.allows(u"\n")) {
        return;
    }
    auto last = cursor.block();
    while (continuesCode(last.next(), last)) {
        last = last.next();
    }
    cursor.setPosition(last.position() + last.length() - 1);
    cursor.beginEditBlock();
    cursor.insertBlock();
    formats().makeBodyText(cursor);
    cursor.endEditBlock();
    m_edit.setTextCursor(cursor);
}

bool StructureKeys::handleBackspace() {
    const auto cursor = m_edit.textCursor();
    const auto block = cursor.block();
    if (cursor.hasSelection() || !cursor.atBlockStart()) {
        return false;
    }
    if (!listsOf(block).empty()) {
        leaveLists(cursor, m_edit.look());
        return true;
    }
    if (headingOf(block) || (isCodeBlock(block) && !continuesCode(block.previous(), block))) {
        formats().makeBodyText(cursor);
        return true;
    }
    auto behind = isHiddenBehindTable(block.previous()) ? block.previous() : block;
    if (isBehindTable(behind)) {
        // A table is not taken away like a character: the caret goes into its last cell.
        QTextCursor into(behind);
        into.movePosition(QTextCursor::PreviousCharacter);
        m_edit.setTextCursor(into);
        return true;
    }
    return false;
}

void StructureKeys::handleTab() {
    const auto cursor = m_edit.textCursor();
    if (cursor.currentTable()) {
        TableEditing tables(m_edit);
        if (!tables.nextCell() && tables.perform(TableAction::insertRowBelow)) {
            auto first = m_edit.textCursor();
            const auto* const table = first.currentTable();
            first.setPosition(table->cellAt(table->rows() - 1, 0).firstPosition());
            m_edit.setTextCursor(first);
        }
        return;
    }
    if (isCodeBlock(cursor.block())) {
        indentCode();
        return;
    }
    if (nest(Nesting::deeper)) {
        return;
    }
    if (m_edit.allows(u"\t")) {
        auto typed = cursor;
        typed.insertText(QStringLiteral("\t"));
        m_edit.setTextCursor(typed);
    }
}

bool StructureKeys::handleBacktab() {
    const auto cursor = m_edit.textCursor();
    if (cursor.currentTable()) {
        TableEditing(m_edit).previousCell();
        return true;
    }
    if (isCodeBlock(cursor.block())) {
        unindentCode();
        return true;
    }
    return nest(Nesting::shallower);
}

void StructureKeys::indentCode() {
    auto cursor = m_edit.textCursor();
    if (!cursor.hasSelection()) {
        if (m_edit.allows(kCodeIndent)) {
            cursor.insertText(kCodeIndent.toString());
        }
        return;
    }
    const auto lines = codeLinesOf(cursor);
    const QString indents(static_cast<qsizetype>(lines.size()) * kCodeIndent.size(),
                          QLatin1Char(' '));
    const auto first = lines.front().position();
    if (!m_edit.allowsReplacing(first, first, indents)) {
        return;
    }
    cursor.beginEditBlock();
    for (const auto& each : lines) {
        QTextCursor(each).insertText(kCodeIndent.toString());
    }
    cursor.endEditBlock();
}

void StructureKeys::unindentCode() {
    auto cursor = m_edit.textCursor();
    cursor.beginEditBlock();
    for (const auto& each : codeLinesOf(cursor)) {
        const auto text = each.text();
        int blanks = 0;
        while (blanks < kCodeIndent.size() && blanks < text.size() &&
               text[blanks] == QLatin1Char(' ')) {
            ++blanks;
        }
        if (blanks == 0 && text.startsWith(QLatin1Char('\t'))) {
            blanks = 1;
        }
        QTextCursor line(each);
        line.movePosition(QTextCursor::NextCharacter, QTextCursor::KeepAnchor, blanks);
        line.removeSelectedText();
    }
    cursor.endEditBlock();
}

bool StructureKeys::nest(Nesting nesting) {
    return nestLists(m_edit.textCursor(), nesting, m_edit.look());
}

FormatEditing StructureKeys::formats() {
    return FormatEditing(m_edit, m_edit.look());
}

} // namespace korvex::ui
