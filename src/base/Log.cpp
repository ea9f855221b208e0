#include "base/Log.h"

#include <cstdio>

namespace korvex::base {

void StandardErrorLog::write(LogLevel level, std::string_view category, std::string_view message) {
    if (!accepts(level)) {
        return;
    }
    // One write, so that lines of several programs on one terminal do not mix.
    std::string line;
    line.reserve(category.size() + message.size() + 16);
    line.append("korvex [").append(category).append("] ").append(message).append("\n");
    std::fwrite(line.data(), 1, line.size(), stderr);
}

} // namespace korvex::base
