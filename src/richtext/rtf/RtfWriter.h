#pragma once

#include "base/Bytes.h"
#include "richtext/text/AttributedString.h"

namespace korvex::richtext {

/// An RTF document that `readRtf` gives back as an equivalent string, and that the other platform's
/// text system and office suites open with its fonts, lists and tables. Code languages are not
/// written, and no attachments. The same string gives the same bytes. Any thread.
base::Bytes writeRtf(const AttributedString& text);

} // namespace korvex::richtext
