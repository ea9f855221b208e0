#include "base/SmallFile.h"

#include <fstream>
#include <system_error>
#include <utility>

namespace korvex::base {

std::optional<std::string> readSmallFile(const std::filesystem::path& file, std::size_t atMost) {
    constexpr std::size_t kPiece = 65'536;
    std::error_code error;
    // A pipe could let us wait for ever.
    if (!std::filesystem::is_regular_file(file, error)) {
        return std::nullopt;
    }
    std::ifstream stream(file, std::ios::binary);
    std::string contents;
    while (stream && contents.size() <= atMost) {
        const auto before = contents.size();
        contents.resize(before + kPiece);
        stream.read(contents.data() + before, kPiece);
        contents.resize(before + static_cast<std::size_t>(stream.gcount()));
    }
    return stream.eof() && !stream.bad() && contents.size() <= atMost
               ? std::optional(std::move(contents))
               : std::nullopt;
}

} // namespace korvex::base
