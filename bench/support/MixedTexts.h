#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace korvex::bench {

/// `count` different texts of 20 to 580 bytes, 300 on average, in English, German, Japanese,
/// Russian and Arabic, some with emoji. Always the same.
std::vector<std::string> mixedTexts(std::size_t count);

/// What somebody types key by key into a search field: all the queries that come of it, each a
/// character longer than the one before or the first of another word.
std::vector<std::string> typedQueries();

} // namespace korvex::bench
