#include "ui/todos/PastedLines.h"

#include "base/Text.h"
#include "ui/kit/words/Text.h"

namespace korvex::ui {

QStringList pastedLines(const QString& text) {
    QStringList lines;
    base::forEachLine(toUtf8(text), [&](std::string_view line) {
        if (const auto trimmed = base::trimmed(line); !trimmed.empty()) {
            lines.append(toQString(trimmed));
        }
    });
    return lines;
}

} // namespace korvex::ui
