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
    const auto fed = withLineFeeds(text);
    for (const auto& line : fed.split(QLatin1Char('\n'))) {
        const auto bytes = toUtf8(line);
        if (const auto trimmed = base::trimmed(bytes); !trimmed.empty()) {
            lines.append(toQString(trimmed));
        }
    }
    return lines;
}

} // namespace korvex::ui
