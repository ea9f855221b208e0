#include "base/ByteSize.h"

namespace korvex::base {

std::string sizeText(std::size_t bytes) {
    constexpr std::size_t kStep = 1024;
    if (bytes < kStep) {
        return std::to_string(bytes) + (bytes == 1 ? " byte" : " bytes");
    }
    if (bytes < kStep * kStep) {
        return std::to_string(bytes / kStep) + " KB";
    }
    const auto tenths = bytes * 10 / (kStep * kStep);
    const auto fraction = tenths % 10 == 0 ? "" : "." + std::to_string(tenths % 10);
    return std::to_string(tenths / 10) + fraction + " MB";
}

} // namespace korvex::base
