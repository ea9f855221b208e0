#include "ui/todos/RowText.h"

#include "model/EntryContentLimit.h"
#include "ui/kit/words/Text.h"

#include <QFontMetrics>
#include <QTextOption>

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

} // namespace

QString shownText(const model::Entry& entry) {
    const auto& content = entry.content();
    const auto shown = model::EntryContentLimit::preview(content);
    const auto text = toQString(shown);
    return shown.size() < content.size() ? text + QStringLiteral("…") : text;
}

std::unique_ptr<QTextLayout> makeTextLayout(QString text, Qt::LayoutDirection direction,
                                            const Theme& theme) {
    text.replace(QLatin1String("\r\n"), QString(QChar::LineSeparator));
    for (const QChar each :
         {QChar(QChar::LineFeed), QChar(QChar::CarriageReturn), QChar(QChar::ParagraphSeparator)}) {
        text.replace(each, QChar::LineSeparator);
    }
    auto layout = std::make_unique<QTextLayout>(text, theme.font());
    QTextOption option;
    option.setTextDirection(direction);
    option.setAlignment(direction == Qt::RightToLeft ? Qt::AlignRight : Qt::AlignLeft);
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    layout->setTextOption(option);
    layout->setCacheEnabled(true);
    return layout;
}

TextArrangement arrangeText(QTextLayout& text, int room, int besideWidth, BesideText beside) {
    const auto width = room - besideWidth;
    const auto stays = beside == BesideText::stays;
    // A text that needs but one line is content with less.
    if (width >= room / (stays ? 2 : 4)) {
        const auto height = layOut(text, width);
        if (stays || text.lineCount() <= 1) {
            return {.isBeside = true,
                    .textWidth = width,
                    .textHeight = height,
                    .ascent = ascentOf(text)};
        }
    }
    const auto height = layOut(text, room);
    return {.isBeside = false, .textWidth = room, .textHeight = height, .ascent = ascentOf(text)};
}

} // namespace korvex::ui
