#include "ui/entries/EntryRowLayout.h"

#include "model/EntryContentLimit.h"
#include "ui/kit/theme/Direction.h"
#include "ui/kit/words/Text.h"
#include "ui/todos/RowText.h"

#include <QFontMetrics>

#include <algorithm>

namespace korvex::ui {

namespace {

/// Estimates look at no more bytes of a content than these.
constexpr std::size_t kLongest = 12'000;

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
    m_chips = std::make_unique<AttachmentChips>(list, frame.room(m_width), theme);
    m_chipsExtent = AttachmentChips::distance(theme) + m_chips->height() + frame.padding;
}

int EntryRowLayout::layOutFormatted(const EntryListModel& model, int row, const Theme& theme,
                                    const TextLook& look, EntryRowLayout* former) {
    const auto frame = RowFrame::ofText(theme);
    m_side = frame.side;
    const auto room = frame.room(m_width);
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
    m_textRect = QRect(frame.textLeft, frame.top(), room, m_formatted->height());
    return m_textRect.bottom() + 1;
}

int EntryRowLayout::layOutPlain(const EntryListModel& model, int row, const Theme& theme) {
    const auto* const entry = model.entry(row);
    const auto isOpenTodo = model.kind(row) == EntryRowKind::entry && entry->isOpenTodo();
    if (isOpenTodo) {
        m_dueLabel = model.dueLabel(*entry);
    }
    // The window's own words follow the window.
    const auto text = model.text(row);
    m_text =
        makeTextLayout(text, entry ? directionOf(text) : QGuiApplication::layoutDirection(), theme);
    const auto arranged =
        arrangeTodo(*m_text, m_width, m_dueLabel,
                    isOpenTodo ? ScheduleButton::offered : ScheduleButton::none, theme);
    m_sign = arranged.sign;
    m_textRect = arranged.text;
    (m_dueLabel.isEmpty() ? m_scheduleButton : m_due) = arranged.schedule;
    return arranged.bottom;
}

/// `bottom` is where what the row shows ends.
void EntryRowLayout::setBox(int bottom, const RowFrame& frame) {
    m_height = frame.heightFor(bottom);
    m_box = frame.box({m_width, m_height});
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

EntryHeightEstimate::EntryHeightEstimate(int width, const Theme& theme, const TextLook& look)
    : m_width(width) {
    const auto frame = RowFrame::of(theme);
    const auto ofText = RowFrame::ofText(theme);
    const QFontMetrics metrics(theme.font());
    m_room = std::max(1, frame.room(width) - frame.scheduleSize - frame.gap);
    m_textRoom = ofText.room(width);
    m_lineHeight = metrics.lineSpacing();
    m_textLineHeight = look.lineHeight(BlockKind::body);
    m_characterWidth = metrics.averageCharWidth();
    m_lowest = frame.signSize;
    m_around = frame.heightFor(frame.top());
    m_textAround = ofText.heightFor(ofText.top());
}

int EntryHeightEstimate::height(const EntryListModel& model, int row) const {
    const auto* const entry = model.entry(row);
    if (entry && !entry->isTodo()) {
        return textHeight(entry->content()) + m_textAround;
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
    return (static_cast<int>(feeds) + 1 + wrapped) * m_textLineHeight;
}

} // namespace korvex::ui
