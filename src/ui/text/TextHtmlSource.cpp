#include "ui/text/TextHtmlSource.h"

#include "ui/text/HiddenHtml.h"

#include <QRegularExpression>

#include <algorithm>
#include <array>

namespace korvex::ui {

namespace {

/// Begins the start of a list; no page has it before its numbers.
constexpr QChar kStartMark{0xE000};

} // namespace

bool isTooDeep(QStringView html) {
    constexpr int kDeepest = 250;
    // Nothing can stand in these, or they end where the next one begins.
    static constexpr std::array kFlat{"br", "img", "hr",    "meta", "link", "col", "wbr", "area",
                                      "p",  "li",  "input", "td",   "th",   "tr",  "dt",  "dd"};
    int depth = 0;
    for (auto open = html.indexOf(QLatin1Char('<')); open >= 0 && open + 1 < html.size();
         open = html.indexOf(QLatin1Char('<'), open + 1)) {
        const auto isEnd = html[open + 1] == QLatin1Char('/');
        const auto start = open + (isEnd ? 2 : 1);
        auto end = start;
        while (end < html.size() && html[end].isLetterOrNumber()) {
            ++end;
        }
        const auto name = html.sliced(start, end - start);
        const auto isFlat = std::any_of(kFlat.begin(), kFlat.end(), [&](const char* each) {
            return name.compare(QLatin1String(each), Qt::CaseInsensitive) == 0;
        });
        if (!name.isEmpty() && !isFlat) {
            depth = std::max(depth + (isEnd ? -1 : 1), 0);
        }
        if (depth > kDeepest) {
            return true;
        }
    }
    return false;
}

QString sourceForQt(QString html) {
    // Qt 6.4 knows neither this element nor this attribute.
    static const QRegularExpression kDeleted(QStringLiteral("<(/?)del\\b"),
                                             QRegularExpression::CaseInsensitiveOption);
    static const QRegularExpression kStart(
        QStringLiteral("<ol\\b(?=[^<>]*\\sstart\\s*=\\s*[\"']?\\s*(-?[0-9]{1,9})\\b)"),
        QRegularExpression::CaseInsensitiveOption);
    html = withoutHidden(html);
    html.remove(kStartMark);
    html.replace(kDeleted, QStringLiteral("<\\1s"));
    return html.replace(kStart, QStringLiteral("<ol style=\"-qt-list-number-prefix:'") +
                                    kStartMark + QStringLiteral("\\1'\""));
}

std::int32_t takeListStart(QTextListFormat& format) {
    const auto prefix = format.numberPrefix();
    if (!prefix.startsWith(kStartMark)) {
        return 1;
    }
    format.setNumberPrefix(QString());
    return prefix.sliced(1).toInt();
}

} // namespace korvex::ui
