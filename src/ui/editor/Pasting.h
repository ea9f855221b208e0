#pragma once

#include "richtext/text/AttributedString.h"

#include <QTextCursor>

namespace korvex::ui {

/// What is pasted as it fits in the place of the cursor's selection, which may carry the format of
/// what is typed next. Words that become part of a line are of the line's kind: heading, body or
/// code; into code goes only what the text says, and what takes the place of more than that code is
/// no part of it. Whole paragraphs keep their own kind and list; those without a list join the one
/// that they are pasted into, and a list that looks like one around the place goes on with that
/// one. What comes without any format looks as if it were typed. In the place of a whole table it
/// begins anew, and a table that is pasted into a cell becomes paragraphs of it. Main thread.
richtext::AttributedString fitted(const richtext::AttributedString& text, const QTextCursor& place);

} // namespace korvex::ui
