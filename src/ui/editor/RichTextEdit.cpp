#include "ui/editor/RichTextEdit.h"

#include "ui/editor/FormatEditing.h"
#include "ui/editor/Pasting.h"
#include "ui/editor/RichTextRuns.h"
#include "ui/editor/StructureKeys.h"
#include "ui/editor/TableEditing.h"
#include "ui/text/Links.h"
#include "ui/text/OfferedFiles.h"
#include "ui/text/RichTextClipboard.h"
#include "ui/text/TextDocument.h"
#include "ui/text/TextDocumentConversion.h"
#include "ui/text/TextLines.h"
#include "ui/text/TextLook.h"
#include "ui/text/TextPainting.h"
#include "ui/text/TextSelection.h"
#include "ui/text/TextSpacing.h"

#include <QApplication>
#include <QClipboard>
#include <QKeyEvent>
#include <QMimeData>
#include <QPainter>
#include <QScrollBar>
#include <QShortcut>
#include <QTextFrame>
#include <QTextList>

#include <algorithm>
#include <optional>

namespace korvex::ui {

namespace {

using richtext::RichTextAction;
using Kind = RichTextAction::Kind;

bool isControl(QChar unit) {
    return unit < QChar(u' ') || unit == QChar(0x7f);
}

bool leadsOut(QTextCursor caret, int direction) {
    return !caret.movePosition(direction < 0 ? QTextCursor::Up : QTextCursor::Down);
}

const QTextDocument& withOwnDocument(QTextEdit& edit) {
    edit.setDocument(new TextDocument(&edit));
    return *edit.document();
}

/// The formats of all paragraphs and their lists, and whether there is a placeholder: the same as
/// long as nothing but text is typed.
std::vector<int> paragraphFormats(const QTextDocument& document) {
    std::vector<int> formats;
    formats.reserve(static_cast<std::size_t>(document.blockCount()) * 3 + 1);
    formats.push_back(document.isEmpty() ? 1 : 0);
    for (auto block = document.begin(); block.isValid(); block = block.next()) {
        const auto* const list = block.textList();
        formats.insert(formats.end(), {block.blockFormatIndex(), block.charFormatIndex(),
                                       list ? list->formatIndex() : -1});
    }
    return formats;
}

/// Lets an event be handled as if it were on the nearest line.
template <typename Handle>
void handleOnLine(QMouseEvent& event, const RichTextEdit& edit, Handle handle) {
    const auto place = onLine(*edit.document(), event.position() + edit.scrolled());
    QMouseEvent moved(event.type(), place - edit.scrolled(), event.scenePosition(),
                      event.globalPosition(), event.button(), event.buttons(), event.modifiers(),
                      event.source(), event.pointingDevice());
    moved.setTimestamp(event.timestamp());
    handle(moved);
    event.setAccepted(moved.isAccepted());
}

} // namespace

RichTextEdit::RichTextEdit(QWidget* parent)
    : QTextEdit(parent),
      m_limit(withOwnDocument(*this)),
      m_spacing(new TextSpacing(*document(), this)) {
    setFrameShape(NoFrame);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setWordWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    document()->setDocumentMargin(0);
    viewport()->setAutoFillBackground(false);
    setAccessibleName(tr("Text"));
    setPlaceholderText(tr("Text"));
    connect(document(), &QTextDocument::contentsChanged, this,
            &RichTextEdit::repaintWhereParagraphsChanged);
    connect(this, &QTextEdit::cursorPositionChanged, this, &RichTextEdit::updateState);
    connect(this, &QTextEdit::selectionChanged, this, &RichTextEdit::updateState);
    addShortcuts();
}

RichTextEdit::~RichTextEdit() = default;

void RichTextEdit::setLook(const TextLook& look) {
    const auto text = m_look ? std::optional(content()) : std::nullopt;
    const auto position = textCursor().position();
    m_look = std::make_unique<TextLook>(look);
    m_spacing->setLook(look);
    setFont(look.font);
    document()->setDefaultFont(look.font);
    auto own = palette();
    own.setColor(QPalette::Base, Qt::transparent);
    own.setColor(QPalette::Text, look.text);
    setPalette(own);
    if (text) {
        const auto wasModified = document()->isModified();
        setContent(*text);
        document()->setModified(wasModified);
        auto cursor = textCursor();
        cursor.setPosition(std::min(position, document()->characterCount() - 1));
        setTextCursor(cursor);
    }
}

void RichTextEdit::setContent(const richtext::AttributedString& text) {
    // The name is full since QTextEdit has a function of that name.
    ui::setText(*document(), text, look());
    document()->clearUndoRedoStacks();
    document()->setModified(false);
    setTextCursor(QTextCursor(document()));
    stepOutOfRuns();
    updateState();
}

richtext::AttributedString RichTextEdit::content() const {
    return textOf(*document());
}

QPointF RichTextEdit::scrolled() const {
    const auto& across = *horizontalScrollBar();
    // Mirrored, the bar counts from the other side.
    return QPointF(isRightToLeft() ? across.maximum() - across.value() : across.value(),
                   verticalScrollBar()->value());
}

void RichTextEdit::addShortcuts() {
    const auto add = [this](const QKeySequence& keys, auto&& action) {
        auto* const shortcut = new QShortcut(keys, this, nullptr, nullptr, Qt::WidgetShortcut);
        connect(shortcut, &QShortcut::activated, this, action);
    };
    const auto addCommand = [&](const QKeySequence& keys, const RichTextAction& action) {
        add(keys, [this, action] { perform({action}); });
    };
    addCommand(Qt::CTRL | Qt::Key_B, {Kind::bold});
    addCommand(Qt::CTRL | Qt::Key_I, {Kind::italic});
    addCommand(Qt::CTRL | Qt::Key_U, {Kind::underline});
    addCommand(Qt::CTRL | Qt::SHIFT | Qt::Key_X, {Kind::strikethrough});
    addCommand(Qt::CTRL | Qt::Key_E, {Kind::code});
    addCommand(Qt::CTRL | Qt::SHIFT | Qt::Key_K, {Kind::link});
    addCommand(Qt::CTRL | Qt::ALT | Qt::Key_0, RichTextAction::heading(std::nullopt));
    for (const auto level : richtext::kHeadingLevels) {
        addCommand(Qt::CTRL | Qt::ALT | static_cast<Qt::Key>(Qt::Key_0 + static_cast<int>(level)),
                   RichTextAction::heading(level));
    }
    add(Qt::CTRL | Qt::SHIFT | Qt::Key_7, [this] { toggleList(QStringLiteral("{decimal}.")); });
    add(Qt::CTRL | Qt::SHIFT | Qt::Key_8, [this] { toggleList(QStringLiteral("{disc}")); });
    add(Qt::CTRL | Qt::SHIFT | Qt::Key_V, [this] { pastePlainText(); });
    add(Qt::CTRL | Qt::SHIFT | Qt::Key_Return, [this] { Q_EMIT splitRequested(); });
    add(Qt::CTRL | Qt::Key_S, [this] { Q_EMIT storeRequested(); });
}

void RichTextEdit::perform(const richtext::RichTextCommand& command) {
    FormatEditing formats(*this, look());
    const auto& action = command.action;
    switch (action.kind) {
    case Kind::heading:
        formats.setHeading(action.headingLevel());
        break;
    case Kind::codeLanguage:
        formats.setCodeLanguage(action.languageId());
        break;
    case Kind::codeBlock:
        formats.toggleCodeBlock();
        break;
    case Kind::table:
        Q_EMIT tableRequested();
        break;
    case Kind::link:
        Q_EMIT linkRequested();
        break;
    case Kind::normalText:
        formats.clear();
        break;
    case Kind::bold:
        formats.toggle(Emphasis::bold);
        break;
    case Kind::italic:
        formats.toggle(Emphasis::italic);
        break;
    case Kind::underline:
        formats.toggle(Emphasis::underline);
        break;
    case Kind::strikethrough:
        formats.toggle(Emphasis::strikethrough);
        break;
    case Kind::code:
        formats.toggleInlineCode();
        break;
    case Kind::lists:
        Q_EMIT listsRequested();
        break;
    case Kind::tableRow:
        TableEditing(*this).perform(TableAction::insertRowBelow);
        break;
    case Kind::tableColumn:
        TableEditing(*this).perform(TableAction::insertColumnRight);
        break;
    case Kind::deleteTable:
        TableEditing(*this).perform(TableAction::deleteTable);
        break;
    }
    updateState();
}

void RichTextEdit::setLink(const QString& target) {
    const auto caret = textCursor();
    const auto isNew = !caret.hasSelection() && typedAttributes(caret).link.empty();
    if (isNew && (target.isEmpty() || !allows(target))) {
        return;
    }
    FormatEditing(*this, look()).setLink(target);
    stepOutOfRuns();
    updateState();
}

void RichTextEdit::toggleList(const QString& marker) {
    // The name is full since this function has the same.
    ui::toggleList(textCursor(), marker, look());
    updateState();
}

bool RichTextEdit::insert(const richtext::AttributedString& text) {
    const auto& units = text.text();
    auto cursor = textCursor();
    if (!allowsReplacing(startOf(cursor), cursor.selectionEnd(),
                         {units.data(), static_cast<qsizetype>(units.size())})) {
        return false;
    }
    insertText(cursor, text, look());
    setTextCursor(cursor);
    stepOutOfRuns();
    updateState();
    ensureCursorVisible();
    return true;
}

/// What is typed takes the place of what Qt calls the selection, though that begins in the line
/// above a table that it leaves.
bool RichTextEdit::allows(QStringView replacement) {
    const auto cursor = textCursor();
    return allowsReplacing(cursor.selectionStart(), cursor.selectionEnd(), replacement);
}

bool RichTextEdit::allowsReplacing(int from, int to, QStringView replacement) {
    if (m_limit.allowsReplacing(from, to, replacement)) {
        return true;
    }
    Q_EMIT limitReached();
    return false;
}

void RichTextEdit::pastePlainText() {
    if (const auto* const offered = QApplication::clipboard()->mimeData()) {
        insertPasted(plainTextFrom(*offered));
    }
}

void RichTextEdit::insertPasted(const richtext::AttributedString& text) {
    insert(fitted(text, textCursor()));
}

bool RichTextEdit::canInsertFromMimeData(const QMimeData* source) const {
    return hasText(*source) || isForAttaching(*source);
}

void RichTextEdit::insertFromMimeData(const QMimeData* source) {
    if (isForAttaching(*source)) {
        Q_EMIT attachmentsPasted(source);
        return;
    }
    insertPasted(textFrom(*source));
}

QMimeData* RichTextEdit::createMimeDataFromSelection() const {
    return mimeDataOf(textOf(textCursor())).release();
}

void RichTextEdit::paintEvent(QPaintEvent* event) {
    QPainter painter(viewport());
    painter.translate(-scrolled());
    const auto exposed = QRectF(event->rect()).translated(scrolled());
    paintUnderText(painter, *document(), look(), exposed);
    paintSelection(painter, textCursor(), look(), exposed);
    painter.end();
    QTextEdit::paintEvent(event);
    paintEndsOfTables();
}

void RichTextEdit::repaintWhereParagraphsChanged() {
    auto paragraphs = paragraphFormats(*document());
    if (paragraphs != m_paragraphs) {
        m_paragraphs = std::move(paragraphs);
        viewport()->update();
    }
}

void RichTextEdit::paintEndsOfTables() {
    QPainter painter(viewport());
    const QRectF seen(viewport()->rect());
    for (auto* const table : document()->rootFrame()->childFrames()) {
        const auto whole = placeOf(*document(), *table).translated(-scrolled());
        paintWhereItGoesOn(painter, whole, seen, look());
    }
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

bool RichTextEdit::handledAsStructure(const QKeyEvent& event) {
    if (StructureKeys(*this).handle(event)) {
        stepOutOfRuns();
        updateState();
        return true;
    }
    // Outside of tables, lists and code the keyboard goes back to the controls, as it would from a
    // field.
    const auto isBacktab = event.key() == Qt::Key_Backtab ||
                           (event.key() == Qt::Key_Tab &&
                            (event.modifiers() & ~Qt::KeypadModifier) == Qt::ShiftModifier);
    return isBacktab && focusNextPrevChild(false);
}

bool RichTextEdit::handledAsMovement(const QKeyEvent& event) {
    const auto modifiers = event.modifiers() & ~Qt::KeypadModifier;
    switch (event.key()) {
    case Qt::Key_Escape:
        Q_EMIT escaped();
        return true;
    case Qt::Key_Up:
    case Qt::Key_Down: {
        const auto direction = event.key() == Qt::Key_Up ? -1 : 1;
        if (modifiers == Qt::AltModifier) {
            Q_EMIT moveRequested(direction);
            return true;
        }
        if (modifiers == Qt::NoModifier && leadsOut(textCursor(), direction)) {
            Q_EMIT walked(direction);
            return true;
        }
        return false;
    }
    default:
        return false;
    }
}

void RichTextEdit::passHiddenParagraph(const QKeyEvent& event) {
    if (!isHiddenBehindTable(textCursor().block()) || event.key() == Qt::Key_Home ||
        event.key() == Qt::Key_End) {
        return;
    }
    const auto isOn = event.key() == Qt::Key_Down || event.key() == Qt::Key_Right ||
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

void RichTextEdit::mousePressEvent(QMouseEvent* event) {
    handleOnLine(*event, *this, [this](QMouseEvent& pressed) {
        QTextEdit::mousePressEvent(&pressed);
        if (pressed.button() == Qt::RightButton) {
            // The menu is about the place that was pressed, unless that is selected.
            const auto place = cursorForPosition(pressed.position().toPoint());
            const auto current = textCursor();
            if (place.position() < current.selectionStart() ||
                place.position() > current.selectionEnd()) {
                setTextCursor(place);
            }
        }
    });
    stepOutOfRuns();
}

void RichTextEdit::mouseMoveEvent(QMouseEvent* event) {
    handleOnLine(*event, *this,
                 [this](QMouseEvent& followed) { QTextEdit::mouseMoveEvent(&followed); });
    const auto opens = event->modifiers().testFlag(Qt::ControlModifier) &&
                       !openableLinkAt(*document(), event->position() + scrolled()).isEmpty();
    viewport()->setCursor(opens ? Qt::PointingHandCursor : Qt::IBeamCursor);
}

void RichTextEdit::mouseDoubleClickEvent(QMouseEvent* event) {
    handleOnLine(*event, *this,
                 [this](QMouseEvent& pressed) { QTextEdit::mouseDoubleClickEvent(&pressed); });
}

void RichTextEdit::mouseReleaseEvent(QMouseEvent* event) {
    handleOnLine(*event, *this,
                 [this](QMouseEvent& released) { QTextEdit::mouseReleaseEvent(&released); });
    if (event->button() == Qt::LeftButton && event->modifiers() == Qt::ControlModifier &&
        !textCursor().hasSelection()) {
        openLink(anchorAt(event->position().toPoint()));
    }
}

void RichTextEdit::stepOutOfRuns() {
    const auto caret = textCursor();
    const auto wanted = typedBesideRuns(caret);
    if (wanted != typedAttributes(caret)) {
        setCurrentCharFormat(charFormatOf(wanted, look()));
    }
}

void RichTextEdit::updateState() {
    auto state = formatStateOf(textCursor());
    if (state != m_state) {
        m_state = std::move(state);
        Q_EMIT formatStateChanged();
    }
}

} // namespace korvex::ui
