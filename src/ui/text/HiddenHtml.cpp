#include "ui/text/HiddenHtml.h"

#include "ui/text/HtmlTags.h"

#include <QRegularExpression>

#include <algorithm>
#include <optional>
#include <vector>

namespace korvex::ui {

namespace {

/// What stands deeper is nothing made to be read, and would take long.
constexpr std::size_t kDeepest = 500;

/// Whether browsers show nothing of the element: where its style says how to show it, that counts.
bool isHidden(const HtmlTag& tag) {
    static const QRegularExpression kAttribute(
        QStringLiteral(R"(([^\s=/"']+)(?:\s*=\s*("[^"]*"|'[^']*'|[^\s"']\S*))?)"));
    static const QRegularExpression kDisplay(
        QStringLiteral(R"((?:^|[;\s"'])display\s*:\s*([\w-]+))"),
        QRegularExpression::CaseInsensitiveOption);
    if (!tag.attributes.contains(QLatin1String("hidden"), Qt::CaseInsensitive) &&
        !tag.attributes.contains(QLatin1String("display"), Qt::CaseInsensitive)) {
        return false;
    }
    bool hasHidden = false;
    QString display;
    auto attributes = kAttribute.globalMatch(tag.attributes.toString());
    while (attributes.hasNext()) {
        const auto attribute = attributes.next();
        const auto name = attribute.captured(1).toLower();
        hasHidden = hasHidden || name == QLatin1String("hidden");
        if (name == QLatin1String("style")) {
            auto each = kDisplay.globalMatch(attribute.captured(2));
            while (each.hasNext()) {
                display = each.next().captured(1); // the last one counts
            }
        }
    }
    return display.isEmpty() ? hasHidden
                             : display.compare(QLatin1String("none"), Qt::CaseInsensitive) == 0;
}

/// What has no words, but would nest in Qt, which knows neither these nor what a script is.
bool isLeftOut(const HtmlTag& tag) {
    static const auto kNames = namesOf(
        {"area", "base", "col", "embed", "input", "param", "script", "source", "track", "wbr"});
    return contains(kNames, tag.name) || isHidden(tag);
}

/// Cuts what is hidden out of a page, tag by tag.
class Cutting {
public:
    explicit Cutting(const QString& html) : m_html(html) {}

    void take(const HtmlTag& tag) {
        if (tag.isEnd) {
            end(tag);
        } else {
            begin(tag);
        }
    }
    std::size_t depth() const { return m_open.size(); }
    QString shown() {
        if (!m_hidden) {
            m_shown += m_html.sliced(m_kept);
        }
        return m_shown;
    }

private:
    void begin(const HtmlTag& tag) {
        for (const auto& rule : optionalEnds()) {
            if (contains(rule.enders, tag.name)) {
                endOptional(rule, tag.begin);
            }
        }
        const auto hides = !m_hidden && isLeftOut(tag);
        if (hides) {
            m_shown += m_html.sliced(m_kept, tag.begin - m_kept);
            m_kept = tag.end;
        }
        if (!isEmptyElement(tag.name)) {
            if (hides) {
                m_hidden = m_open.size();
            }
            m_open.push_back(tag.name);
        }
    }
    /// An end of what has not begun ends nothing.
    void end(const HtmlTag& tag) {
        if (const auto opened = std::find(m_open.rbegin(), m_open.rend(), tag.name);
            opened != m_open.rend()) {
            const auto depth = static_cast<std::size_t>(m_open.rend() - opened) - 1;
            close(depth, m_hidden == depth ? tag.end : tag.begin);
        }
    }
    void endOptional(const OptionalEnd& rule, qsizetype at) {
        for (auto depth = m_open.size(); depth > 0 && !contains(rule.walls, m_open[depth - 1]);
             --depth) {
            if (contains(rule.elements, m_open[depth - 1])) {
                close(depth - 1, at);
                return;
            }
        }
    }
    /// The element at this depth ends here, and with it what was left open in it.
    void close(std::size_t depth, qsizetype at) {
        m_open.resize(depth);
        if (m_hidden && depth <= *m_hidden) {
            m_hidden.reset();
            m_kept = at;
        }
    }

    QStringView m_html;
    QString m_shown;
    /// What comes from here on is not copied yet.
    qsizetype m_kept = 0;
    /// The elements around this place, from the outermost.
    std::vector<QString> m_open;
    /// The place among them of the outermost that is hidden.
    std::optional<std::size_t> m_hidden;
};

} // namespace

QString withoutHidden(const QString& html) {
    Cutting cutting(html);
    HtmlTags tags(html);
    for (auto tag = tags.next(); tag; tag = tags.next()) {
        cutting.take(*tag);
        if (cutting.depth() > kDeepest) {
            return html;
        }
    }
    return cutting.shown();
}

} // namespace korvex::ui
