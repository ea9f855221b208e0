#include "ui/EntryRowLayout.h"

#include "ui/Text.h"

#include <QFontMetrics>
#include <QTextOption>

#include <algorithm>
#include <cmath>

namespace korvex::ui {

namespace {

constexpr int kSideMargin = 8;
constexpr int kPadding = 5;
constexpr int kGap = 10;

int lineHeight(const QFont& font) {
    return QFontMetrics(font).lineSpacing();
}

} // namespace

EntryRowLayout::Frame EntryRowLayout::frame(const Theme& theme) {
    const int sign = theme.scaled(18);
    const int schedule = theme.scaled(16);
    return {
        .boxMargin = kSideMargin,
        .padding = kPadding,
        .signSize = sign,
        .textLeft = kSideMargin + kGap + sign + kGap,
        .textRight = kSideMargin + kGap,
        .scheduleSize = schedule,
    };
}

EntryRowLayout::EntryRowLayout(const EntryListModel& model, int row, int width,
                               const Workspace& workspace, const Theme& theme)
    : m_width(width) {
    const auto sizes = frame(theme);
    const auto kind = model.kind(row);
    const auto* const entry = model.entry(row);
    const bool isOpenTodo =
        kind == EntryListModel::RowKind::entry && entry->isTodo() && !entry->isCompleted();
    if (isOpenTodo) {
        describeSchedule(*entry, workspace);
    }

    auto text = model.text(row);
    text.replace(QLatin1String("\r\n"), QString(QChar::LineSeparator));
    text.replace(QLatin1Char('\n'), QChar::LineSeparator);
    m_text = std::make_unique<QTextLayout>(text, theme.font());
    QTextOption option;
    const bool isRightToLeft = text.isRightToLeft();
    option.setTextDirection(isRightToLeft ? Qt::RightToLeft : Qt::LeftToRight);
    option.setAlignment(isRightToLeft ? Qt::AlignRight : Qt::AlignLeft);
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    m_text->setTextOption(option);
    m_text->setCacheEnabled(true);

    const bool hasDue = !m_dueText.isEmpty() || m_hasReminder;
    const QFontMetrics dueMetrics(theme.smallFont());
    const int bell = m_hasReminder ? theme.scaled(13) + 5 : 0;
    const int dueWidth = hasDue ? dueMetrics.horizontalAdvance(m_dueText) + bell : 0;
    const int dueHeight = dueMetrics.lineSpacing();

    const int textLeft = entry && !entry->isTodo() ? kSideMargin + kGap : sizes.textLeft;
    const int room = std::max(40, width - textLeft - sizes.textRight);
    const int besideWidth = hasDue ? dueWidth + 2 * kGap
                            : isOpenTodo ? sizes.scheduleSize + kGap
                                         : 0;
    // One line and its due label stand side by side; what wraps has the label under it.
    int textWidth = room - besideWidth;
    bool isBeside = true;
    int textHeight = textWidth >= room / 2 ? layOutText(textWidth) : 0;
    if (textHeight == 0 || (hasDue && m_text->lineCount() > 1)) {
        isBeside = !hasDue;
        textWidth = hasDue ? room : textWidth;
        textHeight = layOutText(textWidth);
    }

    const int line = lineHeight(theme.font());
    const int firstLine = std::max(line, sizes.signSize);
    const int top = theme.rowDistance() / 2;
    const int textTop = top + kPadding + (firstLine - line) / 2;
    m_textRect = QRect(textLeft, textTop, textWidth, textHeight);
    int bottom = std::max(m_textRect.bottom() + 1, top + kPadding + firstLine);
    m_sign = QRect(kSideMargin + kGap, top + kPadding + (firstLine - sizes.signSize) / 2,
                   sizes.signSize, sizes.signSize);
    if (hasDue && isBeside) {
        m_due = QRect(width - sizes.textRight - dueWidth,
                      top + kPadding + (firstLine - dueHeight) / 2, dueWidth, dueHeight);
    } else if (hasDue) {
        m_due = QRect(isRightToLeft ? textLeft + textWidth - dueWidth : textLeft, bottom + 1,
                      dueWidth, dueHeight);
        bottom = m_due.bottom() + 1;
    } else if (isOpenTodo) {
        m_scheduleButton =
            QRect(width - sizes.textRight - sizes.scheduleSize,
                  top + kPadding + (firstLine - sizes.scheduleSize) / 2, sizes.scheduleSize,
                  sizes.scheduleSize);
    }
    m_height = bottom + kPadding + theme.rowDistance() - top;
    m_box = QRect(kSideMargin, top, width - 2 * kSideMargin, m_height - theme.rowDistance());
}

int EntryRowLayout::cursorAt(const QPoint& point) const {
    const auto inText = point - m_textRect.topLeft();
    for (int i = 0; i < m_text->lineCount(); ++i) {
        const auto line = m_text->lineAt(i);
        if (inText.y() < line.y() + line.height() || i == m_text->lineCount() - 1) {
            return line.xToCursor(inText.x());
        }
    }
    return 0;
}

void EntryRowLayout::describeSchedule(const model::Entry& entry, const Workspace& workspace) {
    const auto schedule = entry.schedule();
    if (schedule.isEmpty()) {
        return;
    }
    const auto now = workspace.now();
    const auto& formats = workspace.dates.formats();
    if (const auto label = schedule.dueLabel(now, formats)) {
        m_dueText = toQString(*label);
    }
    m_isOverdue = schedule.isOverdue(now, formats.calendar());
    if (m_isOverdue) {
        m_dueText = EntryListModel::tr("Overdue") + QStringLiteral(" · ") + m_dueText;
    }
    m_hasReminder = schedule.reminderDate.has_value();
}

int EntryRowLayout::layOutText(int lineWidth) {
    double y = 0;
    m_text->beginLayout();
    for (auto line = m_text->createLine(); line.isValid(); line = m_text->createLine()) {
        line.setLineWidth(lineWidth);
        line.setPosition({0, y});
        y += line.leading() + line.height();
    }
    m_text->endLayout();
    return static_cast<int>(std::ceil(y));
}

EntryHeightEstimate::EntryHeightEstimate(int width, const Theme& theme) : m_width(width) {
    const auto sizes = EntryRowLayout::frame(theme);
    const QFontMetrics metrics(theme.font());
    m_room = std::max(1, width - sizes.textLeft - sizes.textRight - sizes.scheduleSize - kGap);
    m_lineHeight = metrics.lineSpacing();
    m_characterWidth = metrics.averageCharWidth();
    m_lowest = sizes.signSize;
    m_around = 2 * kPadding + theme.rowDistance();
}

int EntryHeightEstimate::height(const EntryListModel& model, int row) const {
    int lines = 1;
    if (const auto* const entry = model.entry(row)) {
        const auto length = std::min<std::size_t>(entry->content().size(), 12'000);
        lines += static_cast<int>(length) * m_characterWidth / m_room;
    }
    return std::max(lines * m_lineHeight, m_lowest) + m_around;
}

} // namespace korvex::ui
