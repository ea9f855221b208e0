#include "ui/text/HiddenHtml.h"

#include <QRegularExpression>
#include <QStringList>

#include <algorithm>
#include <array>
#include <optional>

namespace korvex::ui {

namespace {

template <std::size_t count>
bool isOneOf(const QString& name, const std::array<const char*, count>& names) {
    return std::any_of(names.begin(), names.end(),
                       [&](const char* each) { return name == QLatin1String(each); });
}

struct Tag {
    enum class Kind { start, end, other };
    Kind kind = Kind::other;
    /// In small letters.
    QString name;
    QStringView attributes;
    qsizetype begin = 0;
    /// Behind the ">".
    qsizetype end = 0;

    bool isEmptyElement() const {
        static constexpr std::array kEmpty{"area", "base",  "br",   "col",  "embed",  "hr",
                                           "img",  "input", "link", "meta", "source", "wbr"};
        return isOneOf(name, kEmpty);
    }
    /// Such elements end where the next of them begins.
    bool endsAtNext() const {
        static constexpr std::array kFlat{"p", "li", "td", "th", "tr", "dt", "dd", "option"};
        return isOneOf(name, kFlat);
    }
    bool endsParagraph() const {
        static constexpr std::array kBlocks{"blockquote", "div", "dl",  "h1", "h2",    "h3", "h4",
                                            "h5",         "h6",  "pre", "ol", "table", "ul", "hr"};
        return isOneOf(name, kBlocks);
    }
};

/// The tags of a page in their order; comments and the contents of scripts and style sheets have
/// none.
class Tags {
public:
    explicit Tags(const QString& html) : m_html(html) {}

    std::optional<Tag> next() {
        const auto open = m_html.indexOf(u'<', m_at);
        if (open < 0 || open + 1 >= m_html.size()) {
            return std::nullopt;
        }
        Tag tag{.name = {}, .attributes = {}, .begin = open};
        const QStringView page(m_html);
        if (page.sliced(open).startsWith(QLatin1String("<!--"))) {
            m_at = behind(QLatin1String("-->"), open + 4);
            tag.end = m_at;
            return tag;
        }
        const auto isEnd = page[open + 1] == u'/';
        const auto start = open + (isEnd ? 2 : 1);
        auto at = start;
        while (at < page.size() && page[at].isLetterOrNumber()) {
            ++at;
        }
        tag.name = page.sliced(start, at - start).toString().toLower();
        if (!tag.name.isEmpty()) {
            tag.kind = isEnd ? Tag::Kind::end : Tag::Kind::start;
            const auto attributes = at;
            at = closing(at);
            tag.attributes = page.sliced(attributes, at - attributes);
        }
        tag.end = std::min(at + 1, page.size());
        m_at = tag.end;
        if (!isEnd && (tag.name == QLatin1String("script") || tag.name == QLatin1String("style"))) {
            const auto contentEnd =
                m_html.indexOf(QLatin1String("</") + tag.name, m_at, Qt::CaseInsensitive);
            m_at = contentEnd < 0 ? m_html.size() : contentEnd;
        }
        return tag;
    }

private:
    qsizetype behind(QLatin1String text, qsizetype from) const {
        const auto found = m_html.indexOf(text, from);
        return found < 0 ? m_html.size() : found + text.size();
    }
    /// Where the tag's ">" stands, which may stand in quotes too.
    qsizetype closing(qsizetype from) const {
        QChar quote;
        for (auto at = from; at < m_html.size(); ++at) {
            const auto unit = m_html[at];
            if (!quote.isNull()) {
                quote = unit == quote ? QChar() : quote;
            } else if (unit == u'"' || unit == u'\'') {
                quote = unit;
            } else if (unit == u'>') {
                return at;
            }
        }
        return m_html.size();
    }

    const QString& m_html;
    qsizetype m_at = 0;
};

bool isHidden(const Tag& tag) {
    static const QRegularExpression kAttribute(
        QStringLiteral(R"(([^\s=/"']+)(?:\s*=\s*("[^"]*"|'[^']*'|[^\s"']+))?)"));
    static const QRegularExpression kDisplay(
        QStringLiteral(R"((?:^|[;\s"'])display\s*:\s*([\w-]+))"),
        QRegularExpression::CaseInsensitiveOption);
    if (!tag.attributes.contains(QLatin1String("hidden"), Qt::CaseInsensitive) &&
        !tag.attributes.contains(QLatin1String("display"), Qt::CaseInsensitive)) {
        return false;
    }
    auto attributes = kAttribute.globalMatch(tag.attributes.toString());
    while (attributes.hasNext()) {
        const auto attribute = attributes.next();
        const auto name = attribute.captured(1).toLower();
        if (name == QLatin1String("hidden")) {
            return true;
        }
        if (name == QLatin1String("style")) {
            QString display;
            auto each = kDisplay.globalMatch(attribute.captured(2));
            while (each.hasNext()) {
                display = each.next().captured(1); // the last one counts
            }
            return display.compare(QLatin1String("none"), Qt::CaseInsensitive) == 0;
        }
    }
    return false;
}

/// Where an element ends that has begun with this tag, of which `tags` gives what follows; up to
/// there they are taken. Its end may be the beginning of what is not in it any more: then that is
/// left in `next`.
qsizetype endOf(const Tag& element, Tags& tags, std::optional<Tag>& next) {
    QStringList inside;
    for (next = tags.next(); next; next = tags.next()) {
        if (next->kind == Tag::Kind::start && !next->isEmptyElement()) {
            const auto isEnded =
                inside.isEmpty() && ((element.endsAtNext() && next->name == element.name) ||
                                     (element.name == QLatin1String("p") && next->endsParagraph()));
            if (isEnded) {
                return next->begin;
            }
            inside.push_back(next->name);
        } else if (next->kind == Tag::Kind::end) {
            if (const auto opened = inside.lastIndexOf(next->name); opened >= 0) {
                inside.resize(opened); // with what was left open in it
            } else if (next->name == element.name) {
                const auto end = next->end;
                next = tags.next();
                return end;
            } else {
                return next->begin; // what it stands in ends
            }
        }
    }
    return -1;
}

} // namespace

QString withoutHidden(const QString& html) {
    if (!html.contains(QLatin1String("display"), Qt::CaseInsensitive) &&
        !html.contains(QLatin1String("hidden"), Qt::CaseInsensitive)) {
        return html;
    }
    QString shown;
    qsizetype kept = 0;
    Tags tags(html);
    for (auto tag = tags.next(); tag;) {
        if (tag->kind != Tag::Kind::start || !isHidden(*tag)) {
            tag = tags.next();
            continue;
        }
        const auto hidden = *tag;
        shown += QStringView(html).sliced(kept, hidden.begin - kept);
        if (hidden.isEmptyElement()) {
            kept = hidden.end;
            tag = tags.next();
            continue;
        }
        const auto end = endOf(hidden, tags, tag);
        kept = end < 0 ? html.size() : end;
    }
    shown += QStringView(html).sliced(kept);
    return shown;
}

} // namespace korvex::ui
