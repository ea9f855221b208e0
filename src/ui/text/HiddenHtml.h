#pragma once

#include <QString>

namespace korvex::ui {

/// The page without what no browser shows: elements that are `hidden`, or whose own style says
/// `display: none`, with all that stands in them. They end where browsers let them end, ends left
/// out included; in doubt, words are kept. Rules of style sheets are not looked at. Some elements
/// without words, which Qt does not know, are left out as well. In linear time.
QString withoutHidden(const QString& html);

} // namespace korvex::ui
