#pragma once

#include <string>
#include <string_view>

namespace korvex::richtext::rtf {

/// Where a field's instruction leads, in UTF-8; empty for other fields than hyperlinks.
std::string linkOf(std::u16string_view instruction);

} // namespace korvex::richtext::rtf
