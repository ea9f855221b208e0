#pragma once

#include "base/Bytes.h"
#include "richtext/text/AttributedString.h"

#include <cstdint>
#include <span>
#include <string_view>

namespace korvex::richtext {

/// Begins the group of a stored text that carries what RTF cannot say: which runs are code, and in
/// which language. See docs/formats/rich-text.md.
inline constexpr std::string_view kCodeMetadataMarker = "{\\*\\korvexcode ";

/// The document with the group as its last member; unchanged when the text has no code.
base::Bytes storingMetadata(base::Bytes rtf, const AttributedString& text);
/// The text with the code runs of the document's group. A group that is damaged, or was made for
/// another text, is ignored as a whole.
AttributedString restoringMetadata(std::span<const std::uint8_t> rtf, AttributedString text);

} // namespace korvex::richtext
