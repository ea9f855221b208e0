#pragma once

#include "base/Error.h"
#include "richtext/text/AttributedString.h"

#include <cstdint>
#include <span>
#include <string>

namespace korvex::richtext {

enum class RtfErrorCase { notRtf };
std::string descriptionOf(RtfErrorCase which);
std::string domainOf(RtfErrorCase which);
using RtfError = base::TypedError<RtfErrorCase>;

/// The text of an RTF document: what `writeRtf` wrote, exactly; files of the other platform's text
/// system, with all that an AttributedString holds; files of office suites, sensibly. Whatever is
/// damaged gives the text that can be made out. Time and memory are linear in the size. Throws
/// RtfError when the data does not begin as an RTF document. Free of shared state: any thread.
AttributedString readRtf(std::span<const std::uint8_t> data);

} // namespace korvex::richtext
