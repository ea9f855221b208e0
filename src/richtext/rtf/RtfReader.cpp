#include "richtext/rtf/RtfReader.h"

#include "richtext/rtf/RtfReaderDocument.h"

#include <algorithm>
#include <string_view>

namespace korvex::richtext {

std::string descriptionOf(RtfErrorCase which) {
    switch (which) {
    case RtfErrorCase::notRtf:
        return "The formatted text could not be read.";
    }
    return {};
}

std::string domainOf(RtfErrorCase) {
    return "Korvex.Rtf";
}

AttributedString readRtf(std::span<const std::uint8_t> data) {
    std::string_view document(reinterpret_cast<const char*>(data.data()), data.size());
    constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
    constexpr std::string_view kStart = "{\\rtf";
    if (document.starts_with(kByteOrderMark)) {
        document.remove_prefix(kByteOrderMark.size());
    }
    document.remove_prefix(std::min(document.find_first_not_of(" \t\r\n"), document.size()));
    if (!document.starts_with(kStart)) {
        throw RtfError(RtfErrorCase::notRtf);
    }
    return rtf::DocumentReader(document).read();
}

} // namespace korvex::richtext
