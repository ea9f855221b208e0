#include "ui/todos/PastedLines.h"

#include "base/Text.h"
#include "ui/kit/words/Text.h"

#include <string_view>

namespace korvex::ui {

QString withLineFeeds(QString text) {
    // Vertical tab, form feed, carriage return, next line, the separators of lines and paragraphs.
    constexpr std::u16string_view kOthers = u"\v\f\r\u0085\u2028\u2029";
    text.replace(QLatin1String("\r\n"), QLatin1String("\n"));
    for (const QChar each : kOthers) {
        text.replace(each, QLatin1Char('\n'));
    }
    return text;
}

QStringList pastedLines(const QString& text) {
    QStringList lines;
    const auto bytes = toUtf8(text);
    for (const auto line : base::filledLines(bytes)) {
        lines.append(toQString(line));
    }
    return lines;
}

} // namespace korvex::ui
