#pragma once

#include "cli/output/Json.h"
#include "richtext/text/AttributedString.h"

namespace korvex::cli {

/// Writes the members of a JSON object that say all about a formatted text: its characters, runs
/// and paragraphs. See docs/formats/show-json.md.
void writeRichText(Json& json, const richtext::AttributedString& text);

} // namespace korvex::cli
