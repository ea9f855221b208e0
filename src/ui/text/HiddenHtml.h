#pragma once

#include <QString>

namespace korvex::ui {

/// The page without what no browser shows: elements that are `hidden`, or whose own style says
/// `display: none`, with all that stands in them. Rules of style sheets are not looked at. In
/// linear time for a page that is not too deep.
QString withoutHidden(const QString& html);

} // namespace korvex::ui
