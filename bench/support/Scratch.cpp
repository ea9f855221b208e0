#include "support/Scratch.h"

#include <cerrno>
#include <cstdlib>
#include <string>
#include <system_error>

namespace korvex::bench {

Scratch::Scratch() {
    auto name = (std::filesystem::current_path() / "korvex-bench-XXXXXX").string();
    if (!::mkdtemp(name.data())) {
        throw std::system_error(errno, std::generic_category(), name);
    }
    m_path = name;
}

Scratch::~Scratch() {
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
}

} // namespace korvex::bench
