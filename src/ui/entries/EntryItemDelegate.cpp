#include "ui/entries/EntryItemDelegate.h"

#include "ui/kit/lists/RowGround.h"
#include "ui/kit/theme/Direction.h"
#include "ui/kit/theme/IconSet.h"
#include "ui/todos/TodoPainting.h"

#include <QPainter>

#include <array>

namespace korvex::ui {

EntryItemDelegate::EntryItemDelegate(const EntryListModel& model, richtext::CodeHighlighter& code,
                                     const Theme& theme, QObject* parent)
    : QStyledItemDelegate(parent), m_model(model), m_code(code), m_theme(theme) {}

void EntryItemDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                              const QModelIndex& index) const {
    const auto row = index.row();
    const auto& laidOut = layout(row);
    painter->save();
    painter->setClipRect(option.rect);
    painter->translate(option.rect.topLeft());
    painter->setRenderHint(QPainter::Antialiasing);
    if (m_model.kind(row) == EntryRowKind::draft || row == m_editedRow) {
        // The editor stands here; under it are the attachments.
        const auto editor = option.rect.height() - laidOut.height();
        paintChips(*painter, laidOut, laidOut.chipsTopLeft() + QPoint(0, editor), option.state);
        painter->restore();
        return;
    }
    const auto shown = quietWithoutKeyboard(option.state);
    if (auto* const formatted = laidOut.formatted()) {
        paintRowOutline(*painter, laidOut.box(), shown, m_theme);
        paintChips(*painter, laidOut, laidOut.chipsTopLeft(), option.state);
        painter->translate(laidOut.text().topLeft());
        formatted->color(m_code, look());
        formatted->paint(*painter, look());
    } else {
        paintRowGround(*painter, laidOut.box(), shown, m_theme);
        paintChips(*painter, laidOut, laidOut.chipsTopLeft(), option.state);
        paintPlain(*painter, laidOut, row, option.state);
    }
    painter->restore();
}

QPixmap EntryItemDelegate::picture(QStyleOptionViewItem option, const QModelIndex& index,
                                   qreal scale) const {
    constexpr double kOpacity = 0.85;
    const auto box = layout(index.row()).box();
    QPixmap picture(box.size() * scale);
    picture.setDevicePixelRatio(scale);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    painter.setOpacity(kOpacity);
    option.rect.moveTopLeft(-box.topLeft());
    paint(&painter, option, index);
    painter.end();
    return picture;
}

void EntryItemDelegate::paintPlain(QPainter& painter, const EntryRowLayout& laidOut, int row,
                                   QStyle::State state) const {
    const auto& colors = m_theme.colors();
    paintSign(painter, laidOut.sign(), row, state);
    const auto* const entry = m_model.entry(row);
    const auto isQuiet = !entry || entry->isCompleted();
    painter.setPen(isQuiet ? colors.secondaryText : colors.text);
    laidOut.textLayout().draw(&painter, laidOut.text().topLeft());

    const bool isMarked =
        state.testFlag(QStyle::State_MouseOver) || state.testFlag(QStyle::State_Selected);
    if (!laidOut.due().isEmpty()) {
        const auto& color = laidOut.dueLabel().isOverdue ? colors.danger : colors.secondaryText;
        TodoPainting::drawDueLabel(painter, laidOut.due(), laidOut.dueLabel(), color, m_theme);
    } else if (!laidOut.scheduleButton().isEmpty() && isMarked && !m_model.isReadOnly()) {
        IconSet::draw(painter, QStringLiteral("calendar-plus"), colors.secondaryText,
                      laidOut.scheduleButton());
    }
}

void EntryItemDelegate::paintChips(QPainter& painter, const EntryRowLayout& laidOut,
                                   const QPoint& topLeft, QStyle::State state) const {
    if (!laidOut.chips()) {
        return;
    }
    auto marks = m_marks;
    marks.isActive = state.testFlag(QStyle::State_Active);
    painter.save();
    painter.translate(topLeft);
    laidOut.chips()->paint(painter, m_theme, marks);
    painter.restore();
}

void EntryItemDelegate::paintSign(QPainter& painter, const QRect& rect, int row,
                                  QStyle::State state) const {
    const auto& colors = m_theme.colors();
    switch (m_model.kind(row)) {
    case EntryRowKind::entry:
    case EntryRowKind::completed: {
        const auto& entry = *m_model.entry(row);
        state.setFlag(QStyle::State_MouseOver,
                      state.testFlag(QStyle::State_MouseOver) && !m_model.isReadOnly());
        if (entry.isTodo()) {
            Shapes::paintCheckCircle(painter, rect, TodoPainting::circleOf(entry, state), colors);
        }
        return;
    }
    case EntryRowKind::newTodo:
        IconSet::draw(painter, QStringLiteral("plus"), colors.secondaryText, rect);
        return;
    case EntryRowKind::completedHeading:
        IconSet::draw(painter,
                      m_model.isCompletedExpanded()      ? QStringLiteral("caret-down")
                      : QGuiApplication::isRightToLeft() ? QStringLiteral("caret-left")
                                                         : QStringLiteral("caret-right"),
                      colors.secondaryText, rect);
        return;
    case EntryRowKind::draft:
        return;
    }
}

QSize EntryItemDelegate::sizeHint(const QStyleOptionViewItem& option,
                                  const QModelIndex& index) const {
    return {option.rect.width(), layout(index.row()).height()};
}

const EntryRowLayout& EntryItemDelegate::layout(int row) const {
    const auto make = [&](std::unique_ptr<EntryRowLayout> former) {
        auto made = std::make_unique<EntryRowLayout>(m_model, row, m_room.width, m_theme, look(),
                                                     std::move(former));
        const auto kept = m_tableOffsets.find(subjectOf(row));
        if (made->formatted() && kept != m_tableOffsets.end()) {
            made->formatted()->setTableOffsets(kept->second);
        }
        return made;
    };
    const auto& laidOut = m_layouts.at(subjectOf(row), m_room.width, make);
    laidOut.reachTo(m_room.most);
    return laidOut;
}

const TextLook& EntryItemDelegate::look() const {
    if (!m_look) {
        m_look.emplace(m_theme);
    }
    return *m_look;
}

void EntryItemDelegate::forgetAll() const {
    m_layouts.forgetAll();
    m_look.reset();
}

bool EntryItemDelegate::scrollTables(int row, int by, std::optional<QPointF> under) const {
    const auto& laidOut = layout(row);
    auto* const formatted = laidOut.formatted();
    const auto local = under ? std::optional(*under - laidOut.text().topLeft()) : std::nullopt;
    if (!formatted || !formatted->scrollTables(by, local)) {
        return false;
    }
    m_tableOffsets.insert_or_assign(subjectOf(row), formatted->tableOffsets());
    return true;
}

/// An entry is one object as long as it lives; the few other rows are told apart by their kind.
const void* EntryItemDelegate::subjectOf(int row) const {
    static constexpr std::array<char, 8> kKinds{};
    const auto* const entry = m_model.entry(row);
    return entry ? static_cast<const void*>(entry)
                 : &kKinds[static_cast<std::size_t>(m_model.kind(row))];
}

} // namespace korvex::ui
