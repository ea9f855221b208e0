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

/// The text of an RTF document: of one in the native dialect with all that an AttributedString
/// holds, of what `writeRtf` wrote exactly; of an office suite's as well as it can be shown. What
/// is damaged gives the text that can be made out. Time and memory are linear in the size. Throws
/// RtfError when the data does not begin as an RTF document. Free of shared state: any thread.
AttributedString readRtf(std::span<const std::uint8_t> data);

} // namespace korvex::richtext
