#pragma once

#include <QString>
#include <QStringView>

#include <initializer_list>
#include <optional>
#include <vector>

namespace korvex::ui {

/// Of elements, in small letters.
using HtmlNames = std::vector<QLatin1String>;
HtmlNames namesOf(std::initializer_list<const char*> names);
bool contains(const HtmlNames& names, const QString& name);

/// A tag as it stands in the source of an HTML page.
struct HtmlTag {
    /// In small letters.
    QString name;
    /// "</name>".
    bool isEnd = false;
    QStringView attributes;
    qsizetype begin = 0;
    /// Behind the ">".
    qsizetype end = 0;
};

/// The tags of a page in their order. Comments and scripts have none, and a "<" that no
/// letter follows begins none. In linear time; the page must outlive it.
class HtmlTags {
public:
    explicit HtmlTags(QStringView html) : m_html(html) {}

    /// Absent where no more follow.
    std::optional<HtmlTag> next();

private:
    qsizetype behind(QStringView text, qsizetype from) const;
    qsizetype closing(qsizetype from) const;

    QStringView m_html;
    qsizetype m_at = 0;
};

/// Whether nothing can stand in the element, which has no end.
bool isEmptyElement(const QString& name);

/// Elements of which the end may be left out: they end where one of others begins, too.
struct OptionalEnd {
    HtmlNames elements;
    HtmlNames enders;
    /// What begins in one of these, inside of the element, does not end it.
    HtmlNames walls;
};
/// From the inner ones to the outer.
const std::vector<OptionalEnd>& optionalEnds();

} // namespace korvex::ui
