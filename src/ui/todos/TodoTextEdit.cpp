#include "ui/todos/TodoTextEdit.h"

#include "model/EntryContentLimit.h"
#include "ui/kit/words/Text.h"
#include "ui/text/OfferedFiles.h"
#include "ui/todos/PastedLines.h"

#include <QKeyEvent>
#include <QMimeData>
#include <QTextBlock>

namespace korvex::ui {

TodoTextEdit::TodoTextEdit(QWidget* parent) : QTextEdit(parent) {
    setAcceptRichText(false);
    setTabChangesFocus(true);
    setFrameShape(NoFrame);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setWordWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    document()->setDocumentMargin(0);
    viewport()->setAutoFillBackground(false);
    setAccessibleName(tr("Todo"));
}

QString TodoTextEdit::typed() const {
    return withLineFeeds(document()->toRawText());
}

void TodoTextEdit::setCaret(int position) {
    auto cursor = textCursor();
    cursor.setPosition(std::clamp(position, 0, document()->characterCount() - 1));
    setTextCursor(cursor);
}

void TodoTextEdit::keyPressEvent(QKeyEvent* event) {
    if (handledAsCommand(event)) {
        event->accept();
        return;
    }
    const auto typed = event->text();
    if (!typed.isEmpty() && typed.front().isPrint() && !allows(typed)) {
        return;
    }
    QTextEdit::keyPressEvent(event);
}

bool TodoTextEdit::handledAsCommand(QKeyEvent* event) {
    const auto modifiers = event->modifiers() & ~Qt::KeypadModifier;
    const auto isPlain = modifiers == Qt::NoModifier;
    switch (event->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
        if (modifiers == Qt::ControlModifier) {
            Q_EMIT completionRequested();
        } else {
            Q_EMIT returnPressed();
        }
        return true;
    case Qt::Key_Escape:
        Q_EMIT escaped();
        return true;
    case Qt::Key_D:
        if (modifiers == Qt::ControlModifier) {
            Q_EMIT scheduleRequested();
            return true;
        }
        return false;
    case Qt::Key_Backspace:
        if (isPlain && document()->isEmpty()) {
            Q_EMIT backspacedAway();
            return true;
        }
        return false;
    case Qt::Key_Up:
    case Qt::Key_Down: {
        const auto direction = event->key() == Qt::Key_Up ? -1 : 1;
        if (modifiers == Qt::AltModifier) {
            Q_EMIT moveRequested(direction);
            return true;
        }
        if (isPlain && leadsOut(direction)) {
            Q_EMIT walked(direction);
            return true;
        }
        return false;
    }
    default:
        return false;
    }
}

void TodoTextEdit::inputMethodEvent(QInputMethodEvent* event) {
    if (!event->commitString().isEmpty() && !allows(event->commitString())) {
        return;
    }
    QTextEdit::inputMethodEvent(event);
}

bool TodoTextEdit::canInsertFromMimeData(const QMimeData* source) const {
    return source->hasText() || isForAttaching(*source);
}

void TodoTextEdit::insertFromMimeData(const QMimeData* source) {
    if (isForAttaching(*source)) {
        Q_EMIT attachmentsPasted(source);
        return;
    }
    const auto pasted = source->text();
    auto lines = pastedLines(pasted);
    // Spaces at the ends of a part of a line are meant.
    const auto isPart = !withLineFeeds(pasted).contains(QLatin1Char('\n'));
    const auto only = lines.size() == 1 && isPart ? pasted : lines.value(0);
    if (lines.size() <= 1) {
        if (allows(only)) {
            textCursor().insertText(only);
            ensureCursorVisible();
        }
        return;
    }
    Q_EMIT linesComing();
    const auto cursor = textCursor();
    const auto text = typed();
    const auto first = text.left(cursor.selectionStart()) + lines.takeFirst();
    lines.last() += text.mid(cursor.selectionEnd());
    Q_EMIT linesPasted(first, lines);
}

bool TodoTextEdit::allows(const QString& replacement) {
    const auto cursor = textCursor();
    const auto start = cursor.selectionStart();
    if (model::EntryContentLimit::allowsReplacing(
            toUtf8(typed()), static_cast<std::size_t>(start),
            static_cast<std::size_t>(cursor.selectionEnd() - start), toUtf8(replacement))) {
        return true;
    }
    Q_EMIT limitReached();
    return false;
}

bool TodoTextEdit::leadsOut(int direction) const {
    auto cursor = textCursor();
    return !cursor.movePosition(direction < 0 ? QTextCursor::Up : QTextCursor::Down);
}

} // namespace korvex::ui
