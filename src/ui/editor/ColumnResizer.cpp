#include "ui/editor/ColumnResizer.h"

#include "ui/editor/RichTextEdit.h"
#include "ui/editor/TableEditing.h"
#include "ui/text/TextLook.h"

#include <QAbstractTextDocumentLayout>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QTextBlock>
#include <QTextTable>

#include <algorithm>
#include <cmath>

namespace korvex::ui {

using richtext::RichTextTable;

namespace {

/// How far from a border the pointer takes hold of it.
constexpr auto kGrip = Space::small;

} // namespace

ColumnResizer::ColumnResizer(RichTextEdit& edit, QObject* parent)
    : QObject(parent), m_edit(edit), m_viewport(edit.viewport()) {
    edit.installEventFilter(this);
    m_viewport->installEventFilter(this);
    m_viewport->setMouseTracking(true);
}

ColumnResizer::~ColumnResizer() {
    delete m_guide;
}

bool ColumnResizer::eventFilter(QObject* watched, QEvent* event) {
    if (watched == m_viewport) {
        return handlePointer(*event);
    }
    switch (event->type()) {
    case QEvent::ShortcutOverride:
    case QEvent::KeyPress:
        if (m_dragged) {
            // Nothing is typed meanwhile: what is dragged must not change.
            if (static_cast<QKeyEvent*>(event)->key() == Qt::Key_Escape) {
                cancel();
            }
            event->accept();
            return true;
        }
        break;
    case QEvent::FocusOut:
    case QEvent::Hide:
        cancel();
        break;
    default:
        break;
    }
    return QObject::eventFilter(watched, event);
}

bool ColumnResizer::handlePointer(QEvent& event) {
    switch (event.type()) {
    case QEvent::MouseMove: {
        const auto& mouse = static_cast<QMouseEvent&>(event);
        if (m_dragged) {
            follow(mouse.pos().x());
            return true;
        }
        setIsOverBorder(mouse.buttons() == Qt::NoButton && borderAt(mouse.pos()));
        return m_isOverBorder;
    }
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonDblClick: {
        const auto& mouse = static_cast<QMouseEvent&>(event);
        const auto border = mouse.button() == Qt::LeftButton ? borderAt(mouse.pos()) : std::nullopt;
        if (!border) {
            return false;
        }
        if (event.type() == QEvent::MouseButtonDblClick) {
            TableEditing(m_edit).resizeColumn(*border->table, border->column, std::nullopt);
            setIsOverBorder(false);
        } else {
            m_pressedX = mouse.pos().x();
            begin(*border);
        }
        return true;
    }
    case QEvent::MouseButtonRelease:
        if (m_dragged) {
            apply();
            return true;
        }
        return false;
    case QEvent::Leave:
        setIsOverBorder(false);
        return false;
    default:
        return false;
    }
}

std::optional<ColumnResizer::Border> ColumnResizer::borderAt(const QPoint& position) const {
    const auto scrolled = m_edit.scrolled().toPoint();
    const auto& layout = *m_edit.document()->documentLayout();
    const auto between = 2 * m_edit.look().cellPadding() + 1; // and the line
    for (auto* const frame : m_edit.document()->rootFrame()->childFrames()) {
        auto* const table = qobject_cast<QTextTable*>(frame);
        if (!table) {
            continue;
        }
        const auto area = layout.frameBoundingRect(table).toAlignedRect().translated(-scrolled);
        if (position.y() < area.top() || position.y() > area.bottom()) {
            continue;
        }
        for (int column = 0; column < table->columns(); ++column) {
            const auto cell = table->cellAt(0, column);
            if (cell.column() + cell.columnSpan() - 1 != column) {
                continue;
            }
            const auto content = layout.blockBoundingRect(cell.firstCursorPosition().block());
            const auto x = qRound(content.right() + between / 2.0) - scrolled.x();
            if (std::abs(position.x() - x) <= m_edit.look().space(kGrip)) {
                return Border{table, column, x, area, content.width()};
            }
        }
    }
    return std::nullopt;
}

void ColumnResizer::begin(const Border& border) {
    m_dragged = border;
    m_currentX = m_pressedX;
    setIsOverBorder(true);
}

void ColumnResizer::follow(int x) {
    m_currentX = x;
    const auto distance =
        qRound(m_edit.look().pixels(widthFor(x)) - m_dragged->width); // as far as the limits let it
    if (!m_guide) {
        m_guide = new QWidget(m_viewport);
        m_guide->setAttribute(Qt::WA_TransparentForMouseEvents);
        auto shown = m_guide->palette();
        shown.setColor(QPalette::Window, m_edit.look().link);
        m_guide->setPalette(shown);
        m_guide->setBackgroundRole(QPalette::Window);
        m_guide->setAutoFillBackground(true);
    }
    const auto width = m_edit.look().space(Space::hair);
    m_guide->setGeometry(m_dragged->x + distance - width / 2, m_dragged->tableRect.top(), width,
                         m_dragged->tableRect.height());
    m_guide->show();
}

void ColumnResizer::apply() {
    const auto dragged = *m_dragged;
    const auto width = widthFor(m_currentX);
    const auto isMoved = m_currentX != m_pressedX;
    cancel();
    if (isMoved && dragged.table) {
        TableEditing(m_edit).resizeColumn(*dragged.table, dragged.column, width);
    }
}

void ColumnResizer::cancel() {
    m_dragged.reset();
    delete m_guide;
    setIsOverBorder(false);
}

void ColumnResizer::setIsOverBorder(bool isOverBorder) {
    if (isOverBorder != m_isOverBorder) {
        m_isOverBorder = isOverBorder;
        m_viewport->setCursor(isOverBorder ? Qt::SplitHCursor : Qt::IBeamCursor);
    }
}

richtext::Twips ColumnResizer::widthFor(int x) const {
    const auto wanted = (m_dragged->width + x - m_pressedX) / m_edit.look().pixels(1);
    return static_cast<richtext::Twips>(std::lround(std::clamp(
        wanted, double{RichTextTable::kMinimumWidth}, double{RichTextTable::kMaximumWidth})));
}

} // namespace korvex::ui
