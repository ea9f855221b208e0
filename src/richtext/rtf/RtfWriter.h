#pragma once

#include "base/Bytes.h"
#include "richtext/text/AttributedString.h"

namespace korvex::richtext {

/// An RTF document in the native dialect, which `readRtf` gives back as an equivalent string, and
/// which office suites open too, with its fonts, lists and tables. Code languages and attachments
/// are not written. The same string gives the same bytes. Any thread.
base::Bytes writeRtf(const AttributedString& text);

} // namespace korvex::richtext
