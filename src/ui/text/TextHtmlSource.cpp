#include "ui/text/TextHtmlSource.h"

#include "ui/text/HiddenHtml.h"
#include "ui/text/HtmlTags.h"

#include <QRegularExpression>

#include <algorithm>
#include <iterator>
#include <vector>

namespace korvex::ui {

namespace {

/// Begins the start of a list; no page has it before its numbers.
constexpr QChar kStartMark{0xE000};

} // namespace

bool isTooDeep(QStringView html) {
    constexpr std::size_t kDeepest = 250;
    // Qt ends only these where the next one begins; an end of what has not begun ends nothing.
    static const auto kFlat = namesOf({"p", "li", "td", "th", "tr", "dt", "dd"});
    std::vector<QString> open;
    HtmlTags tags(html);
    for (auto tag = tags.next(); tag && open.size() <= kDeepest; tag = tags.next()) {
        if (isEmptyElement(tag->name) || contains(kFlat, tag->name)) {
            continue;
        }
        if (!tag->isEnd) {
            open.push_back(tag->name);
        } else if (const auto opened = std::find(open.rbegin(), open.rend(), tag->name);
                   opened != open.rend()) {
            open.erase(std::prev(opened.base()), open.end());
        }
    }
    return open.size() > kDeepest;
}

QString sourceForQt(QString html) {
    // Qt 6.4 knows neither this element nor this attribute.
    static const QRegularExpression kDeleted(QStringLiteral("<(/?)del\\b"),
                                             QRegularExpression::CaseInsensitiveOption);
    static const QRegularExpression kStart(
        QStringLiteral("<ol\\b(?=[^<>]*\\sstart\\s*=\\s*[\"']?\\s*(-?[0-9]{1,9})\\b)"),
        QRegularExpression::CaseInsensitiveOption);
    // Qt takes every such sign for a tag, and the words behind it for its attributes.
    static const QRegularExpression kNoTag(QStringLiteral("<(?![a-z/!?])"),
                                           QRegularExpression::CaseInsensitiveOption);
    html = withoutHidden(html);
    html.remove(kStartMark);
    html.replace(kNoTag, QStringLiteral("&lt;"));
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
