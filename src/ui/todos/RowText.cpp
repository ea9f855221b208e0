#include "ui/todos/RowText.h"

#include "model/EntryContentLimit.h"
#include "ui/kit/words/Text.h"
#include "ui/todos/PastedLines.h"

#include <QGuiApplication>
#include <QTextOption>

#include <algorithm>
#include <cmath>

namespace korvex::ui {

namespace {

/// The height of the text in lines of this width.
int layOut(QTextLayout& text, int width) {
    double y = 0;
    text.beginLayout();
    for (auto line = text.createLine(); line.isValid(); line = text.createLine()) {
        line.setLineWidth(width);
        line.setPosition({0, y});
        y += line.leading() + line.height();
    }
    text.endLayout();
    return static_cast<int>(std::ceil(y));
}

int ascentOf(const QTextLayout& text) {
    return text.lineCount() == 0 ? QFontMetrics(text.font()).ascent()
                                 : static_cast<int>(std::lround(text.lineAt(0).ascent()));
}

/// The text in lines of this width, with a sign before its first line.
TextArrangement placeText(QTextLayout& text, int width, const Theme& theme) {
    const auto frame = RowFrame::of(theme);
    const auto height = layOut(text, width);
    const RowLine line(frame, ascentOf(text), theme);
    return {
        .sign = QRect(frame.side, line.topOfSign(frame.signSize), frame.signSize, frame.signSize),
        .text = QRect(frame.textLeft, line.textTop(), width, height),
        .firstLine = line,
        .bottom = std::max(line.textTop() + height, frame.top() + frame.signSize),
    };
}

} // namespace

QString shownText(const model::Entry& entry) {
    const auto& content = entry.content();
    const auto shown = model::EntryContentLimit::preview(content);
    const auto text = toQString(shown);
    return shown.size() < content.size() ? text + QStringLiteral("…") : text;
}

std::unique_ptr<QTextLayout> makeTextLayout(const QString& text, Qt::LayoutDirection direction,
                                            const Theme& theme) {
    auto lines = withLineFeeds(text);
    lines.replace(QChar::LineFeed, QChar::LineSeparator);
    auto layout = std::make_unique<QTextLayout>(lines, theme.font());
    QTextOption option;
    option.setTextDirection(direction);
    option.setAlignment(direction == Qt::RightToLeft ? Qt::AlignRight : Qt::AlignLeft);
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    layout->setTextOption(option);
    layout->setCacheEnabled(true);
    return layout;
}

TextArrangement arrangeText(QTextLayout& text, int rowWidth, int besideWidth, BesideText beside,
                            const Theme& theme) {
    const auto room = RowFrame::of(theme).room(rowWidth);
    const auto width = room - besideWidth;
    const auto stays = beside == BesideText::stays;
    // A text that needs but one line is content with less.
    if (width >= room / (stays ? 2 : 4)) {
        auto arranged = placeText(text, width, theme);
        if (stays || text.lineCount() <= 1) {
            return arranged;
        }
    }
    auto arranged = placeText(text, room, theme);
    arranged.isBeside = false;
    return arranged;
}

TodoArrangement arrangeTodo(QTextLayout& text, int rowWidth, const DueLabel& due,
                            ScheduleButton button, const Theme& theme) {
    const auto frame = RowFrame::of(theme);
    const auto hasDue = !due.isEmpty();
    const auto hasButton = !hasDue && button == ScheduleButton::offered;
    const auto beside = hasDue      ? due.width(theme) + 2 * frame.gap
                        : hasButton ? frame.scheduleSize + frame.gap
                                    : 0;
    const auto arranged = arrangeText(text, rowWidth, beside,
                                      hasDue ? BesideText::goesBelow : BesideText::stays, theme);
    TodoArrangement result{
        .sign = arranged.sign, .text = arranged.text, .schedule = {}, .bottom = arranged.bottom};
    const auto& line = arranged.firstLine;
    const auto room = frame.room(rowWidth);
    const auto end = frame.textLeft + room;
    if (hasDue) {
        // The text may begin at the other side than the row does.
        const auto isTurned =
            text.textOption().textDirection() != QGuiApplication::layoutDirection();
        const auto isAtEnd = arranged.isBeside || isTurned;
        const auto width = std::min(due.width(theme), room);
        result.schedule = QRect(isAtEnd ? end - width : frame.textLeft,
                                arranged.isBeside ? line.topOf(theme.smallFont())
                                                  : arranged.bottom + theme.space(Space::hair),
                                width, due.height(room, theme));
        result.bottom = std::max(result.bottom, result.schedule.bottom() + 1);
    } else if (hasButton) {
        const auto size = frame.scheduleSize;
        result.schedule = QRect(end - size, line.topOfSign(size), size, size);
    }
    return result;
}

} // namespace korvex::ui
