#include "ui/text/HtmlTags.h"

#include <algorithm>

namespace korvex::ui {

namespace {

bool isLetter(QChar unit) {
    const auto small = unit.unicode() | 0x20U;
    return small >= 'a' && small <= 'z';
}

bool endsName(QChar unit) {
    return unit.isSpace() || unit == u'/' || unit == u'>' || unit == u'<';
}

} // namespace

HtmlNames namesOf(std::initializer_list<const char*> names) {
    return {names.begin(), names.end()};
}

bool contains(const HtmlNames& names, const QString& name) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

std::optional<HtmlTag> HtmlTags::next() {
    for (auto open = m_html.indexOf(u'<', m_at); open >= 0; open = m_html.indexOf(u'<', m_at)) {
        const auto rest = m_html.sliced(open);
        if (rest.startsWith(u"<!--")) {
            m_at = behind(u"-->", open + 4);
            continue;
        }
        const auto isEnd = rest.startsWith(u"</");
        const auto start = open + (isEnd ? 2 : 1);
        if (start >= m_html.size() || !isLetter(m_html[start])) {
            m_at = open + 1;
            continue;
        }
        auto nameEnd = start;
        while (nameEnd < m_html.size() && !endsName(m_html[nameEnd])) {
            ++nameEnd;
        }
        const auto close = closing(nameEnd);
        m_at = std::min(close + 1, m_html.size());
        HtmlTag tag{
            .name = m_html.sliced(start, nameEnd - start).toString().toLower(),
            .isEnd = isEnd,
            .attributes = m_html.sliced(nameEnd, close - nameEnd),
            .begin = open,
            .end = m_at,
        };
        if (!isEnd && tag.name == QLatin1String("script")) {
            const auto end = m_html.indexOf(u"</script", m_at, Qt::CaseInsensitive);
            m_at = end < 0 ? m_html.size() : end;
        }
        return tag;
    }
    return std::nullopt;
}

qsizetype HtmlTags::behind(QStringView text, qsizetype from) const {
    const auto found = m_html.indexOf(text, from);
    return found < 0 ? m_html.size() : found + text.size();
}

/// Where the tag's ">" stands, which may stand in quoted values too.
qsizetype HtmlTags::closing(qsizetype from) const {
    QChar quote;
    bool isBeforeValue = false;
    for (auto at = from; at < m_html.size(); ++at) {
        const auto unit = m_html[at];
        if (!quote.isNull()) {
            quote = unit == quote ? QChar() : quote;
        } else if (unit == u'>') {
            return at;
        } else if (isBeforeValue && (unit == u'"' || unit == u'\'')) {
            quote = unit;
        }
        isBeforeValue = quote.isNull() && (unit == u'=' || (isBeforeValue && unit.isSpace()));
    }
    return m_html.size();
}

bool isEmptyElement(const QString& name) {
    static const auto kNames = namesOf({"area", "base", "br", "col", "embed", "hr", "img", "input",
                                        "link", "meta", "param", "source", "track", "wbr"});
    return contains(kNames, name);
}

const std::vector<OptionalEnd>& optionalEnds() {
    static const std::vector<OptionalEnd> kEnds{
        {namesOf({"p"}),
         namesOf({"p",       "address", "article", "aside",  "blockquote", "center",   "dd",
                  "details", "dialog",  "div",     "dl",     "dt",         "fieldset", "figcaption",
                  "figure",  "footer",  "form",    "h1",     "h2",         "h3",       "h4",
                  "h5",      "h6",      "header",  "hgroup", "hr",         "li",       "main",
                  "menu",    "nav",     "ol",      "pre",    "search",     "section",  "summary",
                  "table",   "ul"}),
         namesOf({"button", "object"})},
        {namesOf({"option"}), namesOf({"option", "optgroup"}), namesOf({"select"})},
        {namesOf({"li"}), namesOf({"li"}), namesOf({"ul", "ol", "menu"})},
        {namesOf({"dt", "dd"}), namesOf({"dt", "dd"}), namesOf({"dl"})},
        {namesOf({"td", "th"}), namesOf({"td", "th", "tr", "thead", "tbody", "tfoot"}),
         namesOf({"table"})},
        {namesOf({"tr"}), namesOf({"tr", "thead", "tbody", "tfoot"}), namesOf({"table"})},
        {namesOf({"thead", "tbody", "tfoot"}), namesOf({"thead", "tbody", "tfoot"}),
         namesOf({"table"})},
    };
    return kEnds;
}

} // namespace korvex::ui
