#include "ui/entries/EntryRowLayout.h"

#include "model/EntryContentLimit.h"
#include "ui/kit/theme/Direction.h"
#include "ui/kit/words/Text.h"
#include "ui/todos/RowFrame.h"
#include "ui/todos/RowText.h"

#include <QFontInfo>
#include <QFontMetrics>

#include <algorithm>

namespace korvex::ui {

namespace {

/// Estimates look at no more bytes of a content than these.
constexpr std::size_t kLongest = 12'000;

int lineHeight(const QFont& font) {
    return QFontMetrics(font).lineSpacing();
}

} // namespace

EntryRowLayout::EntryRowLayout(const EntryListModel& model, int row, int width, const Theme& theme,
                               const TextLook& look)
    : m_width(width) {
    const auto* const entry = model.entry(row);
    const auto isFormatted = model.kind(row) == EntryRowKind::entry && !entry->isTodo();
    int bottom =
        isFormatted ? layOutFormatted(model, row, theme, look) : layOutPlain(model, row, theme);
    if (entry) {
        if (const auto& list = model.attachments(row); !list.isEmpty()) {
            placeChips(list, bottom, theme);
            bottom = m_chipsTopLeft.y() + m_chips->height();
        }
    }
    setBox(bottom, theme);
    for (auto* const place : {&m_sign, &m_textRect, &m_due, &m_scheduleButton}) {
        *place = mirrored(*place, width);
    }
    if (m_chips) {
        m_chipsTopLeft =
            mirrored(QRect(m_chipsTopLeft, QSize(m_chips->width(), m_chips->height())), width)
                .topLeft();
    }
}

void EntryRowLayout::placeChips(const services::AttachmentList& list, int bottom,
                                const Theme& theme) {
    const auto sizes = RowFrame::of(theme);
    m_chipsTopLeft = {m_textRect.left(), bottom + AttachmentChips::kDistance};
    m_chips = std::make_unique<AttachmentChips>(
        list, std::max(40, m_width - m_textRect.left() - sizes.textRight), theme);
}

int EntryRowLayout::chipsExtent() const {
    return m_chips ? AttachmentChips::kDistance + m_chips->height() + RowFrame::kPadding : 0;
}

int EntryRowLayout::layOutFormatted(const EntryListModel& model, int row, const Theme& theme,
                                    const TextLook& look) {
    const auto& entry = *model.entry(row);
    auto text = model.richText(entry);
    if (!model::EntryContentLimit::allows(entry.content())) {
        text.append(u"…", {}, {}); // only the beginning is shown
    }
    const auto sizes = RowFrame::of(theme);
    const auto left = RowFrame::kBoxMargin + RowFrame::kGap;
    const auto room = std::max(40, m_width - left - sizes.textRight);
    m_formatted = std::make_unique<TextRow>(text, room, look);
    m_textRect =
        QRect(left, theme.rowDistance() / 2 + RowFrame::kPadding, room, m_formatted->height());
    return m_textRect.bottom() + 1;
}

int EntryRowLayout::layOutPlain(const EntryListModel& model, int row, const Theme& theme) {
    const auto width = m_width;
    const auto sizes = RowFrame::of(theme);
    const auto kind = model.kind(row);
    const auto* const entry = model.entry(row);
    const auto isOpenTodo = kind == EntryRowKind::entry && entry->isOpenTodo();
    if (isOpenTodo) {
        m_dueLabel = model.dueLabel(*entry);
    }

    // The window's own words follow the window.
    const auto text = model.text(row);
    m_text =
        makeTextLayout(text, entry ? directionOf(text) : QGuiApplication::layoutDirection(), theme);
    // The text begins at the other side than the row does.
    const auto isTurned =
        m_text->textOption().textDirection() != QGuiApplication::layoutDirection();

    const auto hasDue = !m_dueLabel.isEmpty();
    const auto dueWidth = m_dueLabel.width(theme);
    const auto dueHeight = lineHeight(theme.smallFont());
    const auto textLeft = sizes.textLeft;
    const auto room = std::max(40, width - textLeft - sizes.textRight);
    const auto besideWidth = hasDue       ? dueWidth + 2 * RowFrame::kGap
                             : isOpenTodo ? sizes.scheduleSize + RowFrame::kGap
                                          : 0;
    const auto [isBeside, textWidth, textHeight] =
        arrangeText(*m_text, room, besideWidth, hasDue ? BesideText::goesBelow : BesideText::stays);

    const auto line = lineHeight(theme.font());
    const auto firstLine = std::max(line, sizes.signSize);
    const auto top = theme.rowDistance() / 2;
    const auto textTop = top + RowFrame::kPadding + (firstLine - line) / 2;
    m_textRect = QRect(textLeft, textTop, textWidth, textHeight);
    auto bottom = std::max(m_textRect.bottom() + 1, top + RowFrame::kPadding + firstLine);
    m_sign = QRect(RowFrame::kBoxMargin + RowFrame::kGap,
                   top + RowFrame::kPadding + (firstLine - sizes.signSize) / 2, sizes.signSize,
                   sizes.signSize);
    if (hasDue && isBeside) {
        m_due = QRect(width - sizes.textRight - dueWidth,
                      top + RowFrame::kPadding + (firstLine - dueHeight) / 2, dueWidth, dueHeight);
    } else if (hasDue) {
        m_due = QRect(isTurned ? textLeft + textWidth - dueWidth : textLeft, bottom + 1, dueWidth,
                      dueHeight);
        bottom = m_due.bottom() + 1;
    } else if (isOpenTodo) {
        m_scheduleButton = QRect(width - sizes.textRight - sizes.scheduleSize,
                                 top + RowFrame::kPadding + (firstLine - sizes.scheduleSize) / 2,
                                 sizes.scheduleSize, sizes.scheduleSize);
    }
    return bottom;
}

/// `bottom` is where what the row shows ends.
void EntryRowLayout::setBox(int bottom, const Theme& theme) {
    const auto top = theme.rowDistance() / 2;
    m_height = bottom + RowFrame::kPadding + theme.rowDistance() - top;
    m_box = QRect(RowFrame::kBoxMargin, top, m_width - 2 * RowFrame::kBoxMargin,
                  m_height - theme.rowDistance());
}

int EntryRowLayout::cursorAt(const QPoint& point) const {
    const auto inText = point - m_textRect.topLeft();
    if (m_formatted) {
        return m_formatted->caretAt(inText);
    }
    for (int i = 0; i < m_text->lineCount(); ++i) {
        const auto line = m_text->lineAt(i);
        if (inText.y() < line.y() + line.height() || i == m_text->lineCount() - 1) {
            return line.xToCursor(inText.x());
        }
    }
    return 0;
}

QString EntryRowLayout::linkAt(const QPoint& point) const {
    return m_formatted ? m_formatted->linkAt(point - m_textRect.topLeft()) : QString();
}

EntryHeightEstimate::EntryHeightEstimate(int width, const Theme& theme) : m_width(width) {
    const auto sizes = RowFrame::of(theme);
    const QFontMetrics metrics(theme.font());
    m_room =
        std::max(1, width - sizes.textLeft - sizes.textRight - sizes.scheduleSize - RowFrame::kGap);
    m_textRoom = std::max(1, width - 2 * (RowFrame::kBoxMargin + RowFrame::kGap));
    m_lineHeight = metrics.lineSpacing();
    m_textLineHeight = QFontInfo(theme.font()).pixelSize() * kLineHeight;
    m_characterWidth = metrics.averageCharWidth();
    m_lowest = sizes.signSize;
    m_around = 2 * RowFrame::kPadding + theme.rowDistance();
}

int EntryHeightEstimate::height(const EntryListModel& model, int row) const {
    const auto* const entry = model.entry(row);
    if (entry && !entry->isTodo()) {
        return textHeight(entry->content()) + m_around;
    }
    int lines = 1;
    if (entry) {
        const auto length = std::min(entry->content().size(), kLongest);
        lines += static_cast<int>(length) * m_characterWidth / m_room;
    }
    return std::max(lines * m_lineHeight, m_lowest) + m_around;
}

/// Each line of the content is at least one that is shown.
int EntryHeightEstimate::textHeight(const std::string& content) const {
    const auto length = std::min(content.size(), kLongest);
    const auto feeds =
        std::count(content.begin(), content.begin() + static_cast<long>(length), '\n');
    const auto wrapped = static_cast<int>(length) * m_characterWidth / m_textRoom;
    return static_cast<int>((static_cast<int>(feeds) + 1 + wrapped) * m_textLineHeight);
}

} // namespace korvex::ui
