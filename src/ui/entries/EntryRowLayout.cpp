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

/// A row in a window that is hardly wider than its signs still has so much room for its text.
constexpr int kLeastRoom = 40;

} // namespace

EntryRowLayout::EntryRowLayout(const EntryListModel& model, int row, int width, const Theme& theme,
                               const TextLook& look, std::unique_ptr<EntryRowLayout> former)
    : m_width(width) {
    const auto* const entry = model.entry(row);
    const auto isFormatted = model.kind(row) == EntryRowKind::entry && !entry->isTodo();
    int bottom = isFormatted ? layOutFormatted(model, row, theme, look, former.get())
                             : layOutPlain(model, row, theme);
    if (entry) {
        if (const auto& list = model.attachments(row); !list.isEmpty()) {
            placeChips(list, bottom, theme);
            bottom = m_chipsTopLeft.y() + m_chips->height();
        }
    }
    setBox(bottom, isFormatted ? RowFrame::ofText(theme) : RowFrame::of(theme));
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
    const auto frame = m_formatted ? RowFrame::ofText(theme) : RowFrame::of(theme);
    m_chipsTopLeft = {m_textRect.left(), bottom + AttachmentChips::distance(theme)};
    m_chips = std::make_unique<AttachmentChips>(
        list, std::max(kLeastRoom, m_width - m_textRect.left() - frame.side), theme);
    m_chipsExtent = AttachmentChips::distance(theme) + m_chips->height() + frame.padding;
}

int EntryRowLayout::layOutFormatted(const EntryListModel& model, int row, const Theme& theme,
                                    const TextLook& look, EntryRowLayout* former) {
    const auto frame = RowFrame::ofText(theme);
    m_side = frame.side;
    const auto room = std::max(kLeastRoom, m_width - 2 * frame.side);
    if (former && former->m_formatted) {
        m_formatted = std::move(former->m_formatted);
        m_formatted->setWidth(room);
    } else {
        const auto& entry = *model.entry(row);
        auto text = model.richText(entry);
        if (!model::EntryContentLimit::allows(entry.content())) {
            text.append(u"…", {}, {}); // only the beginning is shown
        }
        m_formatted = std::make_unique<TextRow>(text, room, look);
    }
    m_textRect = QRect(frame.side, frame.top(), room, m_formatted->height());
    return m_textRect.bottom() + 1;
}

int EntryRowLayout::layOutPlain(const EntryListModel& model, int row, const Theme& theme) {
    const auto width = m_width;
    const auto frame = RowFrame::of(theme);
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
    const auto room = std::max(kLeastRoom, width - frame.textLeft - frame.side);
    const auto besideWidth = hasDue       ? m_dueLabel.width(theme) + 2 * frame.gap
                             : isOpenTodo ? frame.scheduleSize + frame.gap
                                          : 0;
    const auto arranged =
        arrangeText(*m_text, room, besideWidth, hasDue ? BesideText::goesBelow : BesideText::stays);
    const RowLine line(frame, arranged.ascent, theme);
    m_textRect = QRect(frame.textLeft, line.textTop(), arranged.textWidth, arranged.textHeight);
    m_sign = QRect(frame.side, line.topOfSign(frame.signSize), frame.signSize, frame.signSize);
    auto bottom = std::max(m_textRect.bottom() + 1, frame.top() + frame.signSize);
    if (hasDue) {
        const auto dueWidth = std::min(m_dueLabel.width(theme), room);
        const auto dueHeight = m_dueLabel.height(room, theme);
        const auto dueLeft = arranged.isBeside ? width - frame.side - dueWidth
                             : isTurned        ? frame.textLeft + room - dueWidth
                                               : frame.textLeft;
        const auto dueTop =
            arranged.isBeside ? line.topOf(theme.smallFont()) : bottom + theme.space(Space::hair);
        m_due = QRect(dueLeft, dueTop, dueWidth, dueHeight);
        bottom = std::max(bottom, m_due.bottom() + 1);
    } else if (isOpenTodo) {
        const auto size = frame.scheduleSize;
        m_scheduleButton = QRect(width - frame.side - size, line.topOfSign(size), size, size);
    }
    return bottom;
}

/// `bottom` is where what the row shows ends.
void EntryRowLayout::setBox(int bottom, const RowFrame& frame) {
    m_height = frame.heightFor(bottom);
    m_box = QRect(frame.boxMargin, frame.boxTop, m_width - 2 * frame.boxMargin,
                  m_height - frame.rowDistance);
}

void EntryRowLayout::reachTo(int most) const {
    if (m_formatted) {
        m_formatted->reachTo(most - 2 * m_side);
    }
}

int EntryRowLayout::wholeWidth() const {
    return m_formatted ? std::max(m_width, m_formatted->wholeWidth() + 2 * m_side) : m_width;
}

QRect EntryRowLayout::box() const {
    return m_formatted ? m_box.adjusted(0, 0, m_formatted->reach() - m_textRect.width(), 0) : m_box;
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
    const auto frame = RowFrame::of(theme);
    const QFontMetrics metrics(theme.font());
    m_room = std::max(1, width - frame.textLeft - frame.side - frame.scheduleSize - frame.gap);
    m_textRoom = std::max(1, width - 2 * frame.side);
    m_lineHeight = metrics.lineSpacing();
    m_textLineHeight = QFontInfo(theme.font()).pixelSize() * kLineHeight;
    m_characterWidth = metrics.averageCharWidth();
    m_lowest = frame.signSize;
    m_around = 2 * frame.padding + frame.rowDistance;
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
