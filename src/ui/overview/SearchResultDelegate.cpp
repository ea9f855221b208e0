#include "ui/overview/SearchResultDelegate.h"

#include "ui/boards/BoardColors.h"
#include "ui/boards/BoardIcons.h"
#include "ui/kit/lists/RowGround.h"
#include "ui/kit/theme/Direction.h"
#include "ui/kit/theme/IconSet.h"
#include "ui/todos/RowFrame.h"
#include "ui/todos/TodoPainting.h"

#include <QPainter>
#include <QTextLayout>

#include <algorithm>

namespace korvex::ui {

namespace {

constexpr double kMarkStrength = 0.30;
/// What is left of a board's name beside what is said behind it, in pixels at the standard font
/// size: some letters.
constexpr int kShortestName = 40;

/// The places of what a row shows, from its top left corner.
struct Places {
    QRect box;
    QRect sign;
    QRect line;
    QRect note;
    int height;
};

Places placesOf(int width, int above, const Theme& theme) {
    const QFontMetrics font(theme.font());
    const auto frame = RowFrame::of(theme);
    const RowLine first(frame, font.ascent(), theme);
    const auto room = frame.room(width);
    Places places;
    places.sign =
        QRect(frame.side, first.topOfSign(frame.signSize), frame.signSize, frame.signSize);
    places.line = QRect(frame.textLeft, first.textTop(), room, font.height());
    places.note = QRect(frame.textLeft, places.line.bottom() + 1 + theme.space(Space::hair), room,
                        QFontMetrics(theme.smallFont()).height());
    places.height = frame.heightFor(places.note.bottom() + 1);
    places.box = frame.box({width, places.height});
    for (auto* const place : {&places.sign, &places.line, &places.note}) {
        *place = mirrored(*place, width);
    }
    for (auto* const place : {&places.sign, &places.line, &places.note, &places.box}) {
        place->translate(0, above);
    }
    return places;
}

} // namespace

SearchResultDelegate::SearchResultDelegate(const SearchListModel& model, const Theme& theme,
                                           QObject* parent)
    : QStyledItemDelegate(parent), m_model(model), m_theme(theme) {}

int SearchResultDelegate::plainHeight() const {
    return placesOf(0, 0, m_theme).height;
}

int SearchResultDelegate::distanceAbove(int row) const {
    return row > 0 && m_model.beginsBoard(row) ? m_theme.space(Space::large) : 0;
}

QRect SearchResultDelegate::signRect(int row, int width) const {
    return placesOf(width, distanceAbove(row), m_theme).sign;
}

void SearchResultDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                                 const QModelIndex& index) const {
    const auto& colors = m_theme.colors();
    const auto& row = m_model.row(index.row());
    const auto above = distanceAbove(index.row());
    const auto places = placesOf(option.rect.width(), above, m_theme);
    painter->save();
    painter->translate(option.rect.topLeft());
    painter->setRenderHint(QPainter::Antialiasing);
    if (above > 0) {
        painter->fillRect(QRect(places.line.left(), above / 2, places.line.width(), 1),
                          colors.hairline);
    }
    paintRowGround(*painter, places.box, option.state, m_theme);
    const auto iconColor = row.isBoard       ? iconColorOf(m_model.board(index.row()), colors)
                           : row.isCompleted ? colors.accent
                                             : colors.secondaryText;
    IconSet::draw(*painter, row.icon, iconColor, places.sign);
    paintLine(*painter, row, places.line,
              option.state.testFlag(QStyle::State_Selected) ? colors.selection : colors.content);
    paintNote(*painter, row, index.row(), places.note);
    painter->restore();
}

void SearchResultDelegate::paintLine(QPainter& painter, const SearchRow& row, const QRect& rect,
                                     const QColor& ground) const {
    const auto& colors = m_theme.colors();
    auto font = m_theme.font();
    if (row.isBoard) {
        font = Theme::strong(font);
    }
    const auto line = row.line.fitted(QFontMetrics(font), rect.width());
    QTextLayout layout(line.text, font);
    QTextOption direction;
    direction.setWrapMode(QTextOption::NoWrap);
    direction.setTextDirection(directionOf(line.text));
    direction.setAlignment(direction.textDirection() == Qt::RightToLeft ? Qt::AlignRight
                                                                        : Qt::AlignLeft);
    layout.setTextOption(direction);
    QList<QTextLayout::FormatRange> marks;
    for (const auto& mark : line.marks) {
        QTextCharFormat format;
        format.setBackground(blended(colors.accent, ground, kMarkStrength));
        format.setForeground(colors.text);
        marks.append({static_cast<int>(mark.start), static_cast<int>(mark.length), format});
    }
    layout.setFormats(marks);
    layout.beginLayout();
    auto placed = layout.createLine();
    placed.setLineWidth(rect.width());
    layout.endLayout();
    painter.setPen(row.isCompleted ? colors.secondaryText : colors.text);
    const auto ascent = QFontMetrics(m_theme.font()).ascent();
    layout.draw(&painter, QPointF(rect.left(), rect.top() + ascent - placed.ascent()));
}

void SearchResultDelegate::paintNote(QPainter& painter, const SearchRow& row, int number,
                                     const QRect& rect) const {
    const auto& colors = m_theme.colors();
    const QFontMetrics metrics(m_theme.smallFont());
    const auto size = m_theme.extent(Extent::smallIcon);
    const auto small = m_theme.space(Space::small);
    const auto gap = m_theme.space(Space::large);
    const auto signWidth = size + small;
    const auto archived = SearchListModel::tr("Archived");
    const auto forArchived =
        row.isArchived ? gap + signWidth + metrics.horizontalAdvance(archived) : 0;
    const auto name = row.isBoard ? row.kind : row.boardName;
    const auto forName = rect.width() - (row.isBoard ? 0 : signWidth) - forArchived;
    const auto dueWidth = row.due.width(m_theme);
    // A part of a date says another date: it is there as a whole or not at all.
    const auto hasDue =
        !row.due.isEmpty() && forName - gap - dueWidth >= std::min(metrics.horizontalAdvance(name),
                                                                   m_theme.scaled(kShortestName));
    auto left = rect.left();
    const auto icon = [&](const QString& sign, const QColor& color) {
        if (left + size <= rect.right()) {
            const auto top = rect.top() + topOfSign(metrics, size);
            IconSet::draw(painter, sign, color, mirrored(QRect(left, top, size, size), rect));
        }
        left += signWidth;
    };
    const auto text = [&](const QString& words, int most) {
        const auto room = std::min(rect.right() + 1 - left, most);
        if (room > 0) {
            const auto shown = metrics.elidedText(words, Qt::ElideRight, room);
            painter.setPen(colors.secondaryText);
            painter.drawText(mirrored(QRect(left, rect.top(), room, rect.height()), rect),
                             Qt::AlignLeft | Qt::AlignTop, shown);
            left += metrics.horizontalAdvance(shown) + gap;
        }
    };
    painter.setFont(m_theme.smallFont());
    if (!row.isBoard) {
        const auto& board = m_model.board(number);
        icon(boardIconName(board.iconSystemName()), iconColorOf(board, colors));
    }
    text(name, hasDue ? forName - gap - dueWidth : forName);
    if (row.isArchived) {
        icon(QStringLiteral("archive"), colors.secondaryText);
        text(archived, rect.width());
    }
    if (hasDue) {
        TodoPainting::drawDueLabel(
            painter, mirrored(QRect(left, rect.top(), dueWidth, rect.height()), rect), row.due,
            row.due.isOverdue ? colors.danger : colors.secondaryText, m_theme);
    }
}

} // namespace korvex::ui
