#include "cli/StandardInput.h"

#include "cli/CommandLineError.h"

#include <cerrno>
#include <cstring>
#include <unistd.h>

namespace korvex::cli {

std::string readAll(int descriptor) {
    constexpr std::size_t kChunkBytes = 64 * 1024;
    std::string text;
    for (;;) {
        const auto used = text.size();
        text.resize(used + kChunkBytes);
        const auto count = ::read(descriptor, text.data() + used, kChunkBytes);
        if (count < 0 && errno != EINTR) {
            const std::string reason = std::strerror(errno);
            throw refusal("Standard input could not be read: " + reason + ".");
        }
        text.resize(used + static_cast<std::size_t>(count > 0 ? count : 0));
        if (count == 0) {
            return text;
        }
        if (text.size() > kMaximumInputBytes) {
            throw refusal("Standard input may hold up to 64 MiB. Nothing was added.");
        }
    }
}

} // namespace korvex::cli
