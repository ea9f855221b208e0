#include "ui/widget/WidgetRowLayout.h"

#include "ui/kit/theme/Direction.h"
#include "ui/todos/RowFrame.h"
#include "ui/todos/RowText.h"

#include <QFontMetrics>

#include <algorithm>

namespace korvex::ui {

namespace {

/// More letters than a few lines of the widest widget hold.
constexpr int kMostLetters = 4000;

/// The text as far as it goes in a few lines of this width; cut with dots where there is more.
QString inFewLines(QString text, int width, const Theme& theme) {
    const auto direction = directionOf(text);
    const auto isLong = text.size() > kMostLetters;
    if (isLong) {
        text.truncate(text.at(kMostLetters - 1).isHighSurrogate() ? kMostLetters - 1
                                                                  : kMostLetters);
    }
    const auto layout = makeTextLayout(text, direction, theme);
    layout->beginLayout();
    for (int line = 0; line < WidgetRowLayout::kMostLines; ++line) {
        auto made = layout->createLine();
        if (!made.isValid()) {
            break;
        }
        made.setLineWidth(width);
    }
    layout->endLayout();
    if (layout->lineCount() < WidgetRowLayout::kMostLines) {
        return text;
    }
    const auto last = layout->lineAt(WidgetRowLayout::kMostLines - 1);
    // As the layout has them: its lines end as the text's do.
    const auto lines = layout->text();
    const auto rest = lines.mid(last.textStart());
    if (!isLong && rest.size() <= last.textLength()) {
        return text;
    }
    const auto cut = rest.left(last.textLength()).trimmed() + QStringLiteral("…");
    return lines.left(last.textStart()) +
           QFontMetrics(theme.font()).elidedText(cut, Qt::ElideRight, width);
}

} // namespace

WidgetRowLayout::WidgetRowLayout(const QString& text, const DueLabel& due, int width,
                                 const Theme& theme)
    : m_width(width), m_dueLabel(due) {
    const auto frame = RowFrame::of(theme);
    m_text = makeTextLayout(inFewLines(text, frame.room(width), theme), directionOf(text), theme);
    const auto arranged = arrangeTodo(*m_text, width, due, ScheduleButton::none, theme);
    m_circle = arranged.sign;
    m_textRect = arranged.text;
    m_due = arranged.schedule;
    m_height = frame.heightFor(arranged.bottom);
    m_box = frame.box({width, m_height});
    for (auto* const place : {&m_circle, &m_textRect, &m_due}) {
        *place = mirrored(*place, width);
    }
}

int WidgetRowLayout::lowestHeight(const Theme& theme) {
    const auto frame = RowFrame::of(theme);
    return frame.heightFor(frame.top() +
                           std::max(QFontMetrics(theme.font()).lineSpacing(), frame.signSize));
}

} // namespace korvex::ui
