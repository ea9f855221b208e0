#pragma once

#include "richtext/text/AttributedString.h"

#include <QString>

namespace korvex::ui {

/// Formatted text as HTML that says what things are and leaves their look to the reader: headings,
/// lists, links, code, tables. No colours.
QString htmlOf(const richtext::AttributedString& text);

/// What of an HTML page a text can hold. Nothing is loaded: neither images nor styles from
/// elsewhere. Empty for a page whose elements stand in each other so deep that reading it would
/// take minutes. Else some milliseconds for 100 KB: the caller bounds the size.
richtext::AttributedString textOfHtml(const QString& html);

} // namespace korvex::ui
